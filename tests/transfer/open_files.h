/// Open files, locks and limits of the operating system.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace zmfb::test {

/// The number of file descriptors that this process has open.
std::size_t open_files();
/// How many of them are open on `path`.
std::size_t open_files(const std::string& path);

/// Whether another process could lock the file for writing now.
bool another_process_can_lock(const std::string& path);

/// Another process that has the file locked for writing from the end of the constructor on, for some time.
class LockHolder {
  public:
    LockHolder(const std::string& path, std::chrono::milliseconds time);
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;
    ~LockHolder();

  private:
    pid_t process_;
};

/// Lets the files of this process grow to a size and no further while it lives, as a full disk does.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(std::uintmax_t size);
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit();

  private:
    rlimit before_{};
    void (*handler_before_)(int);
};

/// Makes a folder the current one while it lives.
class CurrentFolder {
  public:
    explicit CurrentFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;
    ~CurrentFolder() { std::filesystem::current_path(before_); }

  private:
    std::filesystem::path before_;
};

}  // namespace zmfb::test
