#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdio>
#include <exception>

#include "tests/support/environment.h"
#include "tests/support/server_setup.h"

namespace {

constexpr int skipped = 77;  // as tests/CMakeLists.txt has it

// Reading a matrix leaves its file open, on purpose; a test program that reads a thousand of them needs more
// than an ordinary user is given at first.
void allow_all_files() {
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0) return;
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
}

}  // namespace

int main(int argc, char** argv) {
    allow_all_files();
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    if (const std::string reason = zmfb::test::why_no_server(); !reason.empty()) {
        std::printf("%s\n", reason.c_str());
        return skipped;
    }
    try {
        zmfb::test::set_up_environment();
        const int status = RUN_ALL_TESTS();
        zmfb::test::tear_down_environment(status != 0);
        return status;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
