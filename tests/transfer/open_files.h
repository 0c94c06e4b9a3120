/// Open files and locks as the operating system sees them.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
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

}  // namespace zmfb::test
