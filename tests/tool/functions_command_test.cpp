#include <nlohmann/json.hpp>

#include "tests/support/server_setup.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class FunctionsCommand : public Tool {
  protected:
    void SetUp() override {
        if (const std::string reason = why_no_module(); !reason.empty()) GTEST_SKIP() << reason;
    }
    const std::string stored =
        "stored: the eleven functions are stored ones, which need nothing on the server\n";
    const std::string module =
        "module: the eleven functions are those of zmrddudfs, which the server has to run\n";
};

TEST_F(FunctionsCommand, TellsWhichADatabaseHas) {
    const std::string path = database();
    EXPECT_EQ(on(path, {"functions"}).out, stored);
    EXPECT_EQ(on(path, {"--json", "functions"}).out, "{\"functions\":\"stored\"}\n");
    EXPECT_EQ(on(as_database("b.fdb"), {"create", "--functions", "module"}).err, "");
    EXPECT_EQ(on(as_database("b.fdb"), {"functions"}).out, module);
}

TEST_F(FunctionsCommand, ChangesFromTheOneToTheOther) {
    const std::string path = database();
    for (const auto& [kind, said] : {std::pair("module", module), std::pair("module", module),
                                     std::pair("stored", stored), std::pair("stored", stored)}) {
        const Finished run = on(path, {"functions", kind});
        EXPECT_EQ(run.out, said);
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(on(path, {"functions"}).out, said);
        EXPECT_EQ(on(path, {"call", "isallneededudfsinstalled()"}).out, ".T.\n");
    }
}

TEST_F(FunctionsCommand, CompletesWhatIsMissing) {
    const std::string path = database();
    exec(path, "drop function zmpadl");
    const Finished incomplete = on(path, {"functions"});
    EXPECT_EQ(incomplete.status, 1);
    EXPECT_EQ(
        incomplete.err,
        "error: the functions are not complete\n  missing: ZMPADL\nhint: \"zmfb functions stored\" makes "
        "them\n");
    EXPECT_EQ(on(path, {"functions", "stored"}).out, stored);
    EXPECT_EQ(on(path, {"tables"}).status, 0);
}

TEST_F(FunctionsCommand, NamesWhatKeepsStoredOnes) {
    const std::string path = database();
    exec(path, "create table T (V varchar(9), U computed by (zmupper(V)))");
    exec(path, "create view W as select zmtrim(V) L from T");
    exec(path, "create index I_T on T computed by (cast(zmupper(V) as char(9)))");
    exec(path, "create domain D as varchar(9) check (zmtrim(value) <> '')");
    const Finished kept = on(path, {"functions", "module"});
    EXPECT_EQ(kept.status, 1);
    EXPECT_EQ(kept.err,
              "error: the functions stay stored ones\n"
              "  view W, computed field U, domain D, index on an expression I_T would lose them\n"
              "hint: where the module has to be: drop these, change the functions, make these anew\n");
    EXPECT_EQ(on(path, {"functions"}).out, stored);
}

TEST_F(FunctionsCommand, AWordThatIsNeitherIsRefused) {
    EXPECT_EQ(on(database(), {"functions", "both"}).status, 2);
    EXPECT_EQ(on(as_database("c.fdb"), {"create", "--functions", "both"}).status, 2);
    EXPECT_EQ(zmfb({"functions"}).status, 2);
}

}  // namespace
}  // namespace zmfb::test
