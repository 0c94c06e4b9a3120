// Runs case files: our own, and one that the environment variable ZMFB_HOST_CASES names.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "case_file.h"

namespace zmfb::host_test {
namespace {

namespace fs = std::filesystem;

const fs::path own_cases = fs::path(ZMFB_TEST_DATA) / "own_cases.tsv";

void run(const fs::path& file) {
    const std::vector<Case> cases = read_cases(file);
    ASSERT_FALSE(cases.empty()) << file << " holds no case";
    std::size_t differing = 0;
    for (const Case& the_case : cases) {
        const std::string got = difference(the_case);
        if (got.empty()) continue;
        ++differing;
        ADD_FAILURE() << file.filename().string() << ":" << the_case.line << ": " << the_case.function << ": "
                      << the_case.expression << " gave " << got << ", expected " << the_case.expected;
    }
    std::cout << file.filename().string() << ": " << cases.size() << " cases run, " << differing
              << " differ\n";
}

TEST(OwnCases, AllHold) { run(own_cases); }

TEST(GivenCases, AllHold) {
    const char* named = std::getenv("ZMFB_HOST_CASES");
    if (named == nullptr || *named == '\0') GTEST_SKIP() << "ZMFB_HOST_CASES names no case file";
    ASSERT_TRUE(fs::exists(named)) << "ZMFB_HOST_CASES names no file: " << named;
    run(named);
}

TEST(CaseRun, TellsWhatDiffers) {
    const auto gave = [](const char* function, const char* expression, const char* expected) {
        return difference({.line = 1, .function = function, .expression = expression, .expected = expected});
    };
    EXPECT_EQ(gave("LEN", "LEN(\"AB\")", "2"), "");
    EXPECT_EQ(gave("LEN", "LEN(\"AB\")", "3"), "2");
    EXPECT_EQ(gave("LEN", "LEN(\"AB\")", "ERROR"), "2");
    EXPECT_EQ(gave("LEN", "LEN(1)", "1"), "ERROR");
    EXPECT_EQ(gave("LEN", "LEN(1)", "ERROR"), "");
    EXPECT_EQ(gave("LEN", "LEN(\"AB\")", "\"2\""), "2");
    EXPECT_EQ(gave("=:EXACT_ON", "\"AB\" = \"A\"", ".F."), "");
    EXPECT_EQ(gave("=:EXACT_OFF", "\"AB\" = \"A\"", ".F."), ".T.");
    EXPECT_EQ(gave("=:FIXED_ON", "1", "1"), "unknown mark of the function");
    EXPECT_EQ(gave("LEN", "LEN(", "1"), "not understood: expected an operand");
    EXPECT_EQ(gave("LEN", "NOSUCH(1)", "ERROR"), "not understood: unknown function NOSUCH");
}

TEST(CaseRun, RefusesALineWithoutThreeColumns) {
    const fs::path file = fs::temp_directory_path() / ("zmfb_cases_" + std::to_string(getpid()) + ".tsv");
    std::ofstream(file) << "LEN\tLEN(\"A\")\t1\r\n\nLEN\tLEN(\"A\")\n";
    EXPECT_THROW(read_cases(file), std::runtime_error);
    std::ofstream(file) << "LEN\tLEN(\"A\")\t1\r\n\nLEN\tLEN(\"AB\")\t2";
    const std::vector<Case> cases = read_cases(file);
    fs::remove(file);
    ASSERT_EQ(cases.size(), 2U);
    EXPECT_EQ(cases[0].expected, "1");
    EXPECT_EQ(cases[1].line, 3U);
    EXPECT_THROW(read_cases(file), std::runtime_error);
}

}  // namespace
}  // namespace zmfb::host_test
