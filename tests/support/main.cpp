#include <gtest/gtest.h>

#include <cstdio>
#include <exception>

#include "tests/support/environment.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
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
