/// A folder of a test's own, and processes beside it.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>

namespace zmfb::host_test {

/// A fixture with a new, empty folder, which is removed at the end.
class FolderTest : public ::testing::Test {
  protected:
    FolderTest() {
        std::string shape = (std::filesystem::temp_directory_path() / "zmfb_host_XXXXXX").string();
        if (::mkdtemp(shape.data()) == nullptr) throw std::filesystem::filesystem_error("no folder", {});
        folder_ = shape;
    }
    ~FolderTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    [[nodiscard]] std::string path(std::string_view name) const { return folder_ + "/" + std::string(name); }
    std::string write_file(std::string_view name, std::string_view content) const {
        // A new file: one cut off and written anew may be forced onto the disk by the file system, which
        // takes long.
        std::filesystem::remove(path(name));
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }
    static std::string content(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

  private:
    std::string folder_;
};

/// Lets no file of this process grow beyond `size` bytes: to the program that is a full disk.
inline void limit_files_to(rlim_t size) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(size, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

/// Runs `body` in a child process, whose files may grow again behind it, and returns what it returned, 0 to
/// 255; 128 + the signal when one ended it.
inline int in_child(const std::function<int()>& body) {
    std::fflush(nullptr);  // or the child could write what this process has not written yet
    const pid_t child = ::fork();
    if (child == 0) {
        const int outcome = body();
        limit_files_to(RLIM_INFINITY);
        ::_exit(outcome);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace zmfb::host_test
