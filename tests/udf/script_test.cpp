#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include "udf_script.h"
#include "zmrddudfs.h"

namespace zmfb::test {
namespace {

const std::string script(udf::declaration_script);

/** Every group 1 that a pattern finds in the script, in order. */
std::vector<std::string> found(const char* pattern) {
    const std::regex expression(pattern);
    std::vector<std::string> all;
    for (std::sregex_iterator at(script.begin(), script.end(), expression), end; at != end; ++at) {
        all.push_back((*at)[1]);
    }
    return all;
}

TEST(UdfScript, DeclaresTheElevenFunctionsInTheOrderTheyAreAskedFor) {
    const std::vector<std::string> names{"ZMBLOBSUBSTR", "ZMTRIM", "ZMLOWER", "ZMUPPER",
                                         "ZMSUBSTR",     "ZMDTOS", "SKIPPAD", "ZMSTR",
                                         "ZMSTRZERO",    "ZMPADR", "ZMPADL"};
    EXPECT_EQ(found("DECLARE EXTERNAL FUNCTION (\\w+)"), names);
    EXPECT_EQ(found("MODULE_NAME '(\\w+)';\n").size(), names.size());
    EXPECT_TRUE(std::ranges::all_of(found("MODULE_NAME '([^']*)'"),
                                    [](const auto& module) { return module == "zmrddudfs"; }));
}

TEST(UdfScript, HasSemicolonsOnlyAtTheEndOfStatements) {
    EXPECT_EQ(std::ranges::count(script, ';'), 11);
    EXPECT_EQ(found("(;)\n").size(), 11U);
    EXPECT_TRUE(script.ends_with(";\n"));
}

TEST(UdfScript, DeclaresTheLengthsTheModuleKeepsTo) {
    for (const auto& length : found("CSTRING\\((\\d+)\\)")) {
        const int declared = std::stoi(length);
        EXPECT_TRUE(declared == ZMRDDUDFS_TEXT_MAX || declared == ZMRDDUDFS_NUMBER_MAX ||
                    declared == ZMRDDUDFS_DATE_LENGTH)
            << length;
    }
    EXPECT_EQ(found("CSTRING\\((\\d+)\\)").size(), 18U);
}

TEST(UdfScript, LeavesEveryResultToTheEngineToFree) {
    EXPECT_EQ(found("RETURNS CSTRING\\(\\d+\\) CHARACTER SET NONE (FREE_IT)\n").size(), 11U);
}

TEST(StoredFunctionsScript, MakesTheElevenOfTheOther) {
    const std::string stored(udf::stored_functions_script);
    for (const std::string& name : found("DECLARE EXTERNAL FUNCTION (\\w+)"))
        EXPECT_NE(stored.find("CREATE OR ALTER FUNCTION " + name + " ("), std::string::npos) << name;
    std::size_t made = 0;
    for (std::size_t at = 0; (at = stored.find("CREATE OR ALTER FUNCTION ", at)) != std::string::npos; ++at)
        ++made;
    EXPECT_EQ(made, 11U);
}

}  // namespace
}  // namespace zmfb::test
