// Input without an end, or a very long one: read with little memory, refused by its size, looked at once.
#include <filesystem>
#include <fstream>

#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr std::size_t limit = std::size_t{10} * 1024 * 1024;

class LongInput : public Tool {
  protected:
    LongInput() : path(database()) {}
    // A shell that reads this file, with at most a minute of a processor.
    [[nodiscard]] Finished shell(const std::string& name) const {
        std::string limits = "ulimit -t 60; exec < '" + name + "'";
#if !defined(__SANITIZE_ADDRESS__)
        limits += "; ulimit -v 1500000";
#endif
        return zmfb_after(limits, {"--db", path, "shell"});
    }
    std::string path;
};

TEST_F(LongInput, ALineWithoutAnEndIsRefusedByItsSize) {
    const Finished run = shell("/dev/zero");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: standard input has a line of more than " + std::to_string(limit) + " bytes\n");
}

TEST_F(LongInput, AFileOfAScriptWithoutAnEndFailsAndTheScriptGoesOn) {
    const Finished run = shell(write_file("script", ".read /dev/zero\nisconnected()\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: line 1: /dev/zero has a line of more than " + std::to_string(limit) + " bytes\n");
    EXPECT_EQ(run.out, ".T.\n");
}

TEST_F(LongInput, CallsOnALineWithoutAnEndAreRefused) {
    const Finished run = zmfb_after("ulimit -t 60; exec < /dev/zero", {"--db", path, "call", "-"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("standard input has a line of more than"), std::string::npos) << run.err;
}

TEST_F(LongInput, AMethodNameOfMegabytesIsNoMethod) {
    const Finished run = shell(write_file("script", std::string(limit - 100, 'x') + "(1)\nisconnected()\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: line 1: there is no method xxx")) << run.err.substr(0, 200);
    EXPECT_LT(run.err.size(), 200U);
    EXPECT_EQ(run.out, ".T.\n");
}

TEST_F(LongInput, AStatementOfFiveMillionLinesIsRun) {
    for (const std::string& line : {std::string("\n"), std::string(";")}) {
        std::string script = "select /*\n";
        for (int i = 0; i < 5'000'000; ++i) script += line;
        const Finished run = shell(write_file("script", script + "\n*/ 7 as n from rdb$database;\n"));
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "N\n-\n7\n(1 row)\n");
    }
}

TEST_F(LongInput, MillionsOfStatementsOnOneLineAreEachRunOnce) {
    const Finished run =
        shell(write_file("script", "select 7 as n from rdb$database;" + std::string(5'000'000, ';') + "\n"));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "N\n-\n7\n(1 row)\n");
}

TEST_F(LongInput, AStatementThatTheEngineWouldNotTakeIsRefusedAndEndsTheScript) {
    std::string script = "select 1\n";
    for (std::size_t size = 0; size < limit; size += 1024) script += std::string(1023, ' ') + "\n";
    const Finished run = shell(write_file("script", script + "from rdb$database;\nisconnected()\n"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: line 1: a statement of more than " + std::to_string(limit) + " bytes\n");
    EXPECT_EQ(run.out, "");
}

TEST_F(LongInput, AnExportOfANameWithQuotesIsNoTable) {
    const Finished run =
        zmfb_after("ulimit -t 60", {"--db", path, "export", "x' or 'x' = 'x", "-o", file("")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: there is no table x' or 'x' = 'x\n");
}

}  // namespace
}  // namespace zmfb::test
