// zmfb prepare: databases that other programs made.
#include <nlohmann/json.hpp>

#include "sql/database.h"
#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Prepare : public Tool {
  protected:
    Prepare() {
        must_succeed(sql::create_database(path, sysdba, sysdba_password));
        execute("create table ORDERS (NUMBER integer not null primary key, BUYER varchar(20))");
        execute("insert into ORDERS values (1, 'Ana')");
    }
    void execute(const std::string& statement) const { BareClient(path).execute(statement); }
    // What of the driver's is in it.
    [[nodiscard]] Rows made() const {
        return BareClient(path).rows(
            "select (select count(*) from rdb$functions where rdb$function_name starting with 'ZM' or "
            "rdb$function_name = 'SKIPPAD'), (select count(*) from rdb$relations where rdb$relation_name "
            "starting with 'RDDSYS_') from rdb$database");
    }
    const std::string path = new_database();
    const Rows nothing{{"0", "0"}};
    const Rows all{{"11", "3"}};
};

TEST_F(Prepare, ItSaysWhatItMakesAsksAndMakesIt) {
    const Finished run = on(path, {"prepare"}, "y\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "This is made in " + path +
                           ":\n  the eleven functions ZM* and SKIPPAD\n  RDDSYS_OPN, RDDSYS_FLK, RDDSYS_RLK, "
                           "the tables of opens and locks, with what belongs to them\n" +
                           path + " is ready\n");
    EXPECT_EQ(made(), all);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select * from orders"}).out, "NUMBER,BUYER\r\n1,Ana\r\n");
    EXPECT_EQ(on(path, {"call", "settableaslocked('ORDERS', 'ORDERS:A:1:here')"}).out, ".T.\n");
}

TEST_F(Prepare, ADryRunAndANoMakeNothing) {
    const Finished dry = on(path, {"prepare", "--dry-run"});
    EXPECT_EQ(dry.status, 0) << dry.err;
    EXPECT_TRUE(dry.out.starts_with("To be made in " + path + ":\n  the eleven functions")) << dry.out;
    EXPECT_EQ(made(), nothing);
    const Finished declined = on(path, {"prepare"}, "n\n");
    EXPECT_EQ(declined.status, 1);
    EXPECT_NE(declined.err.find("error: nothing was made\n"), std::string::npos) << declined.err;
    EXPECT_EQ(made(), nothing);
}

TEST_F(Prepare, NothingIsMadeTwice) {
    ASSERT_EQ(on(path, {"prepare", "--yes"}).status, 0);
    const Finished again = on(path, {"prepare"});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.out, path + " is ready; it lacked nothing\n");
}

TEST_F(Prepare, WhatIsMissingAloneIsMade) {
    ASSERT_EQ(on(path, {"prepare", "--yes"}).status, 0);
    ASSERT_EQ(on(path, {"call", "droptable('RDDSYS_FLK')"}).out, ".T.\n");
    const auto dry = nlohmann::json::parse(on(path, {"--json", "prepare", "--dry-run"}).out);
    EXPECT_EQ(dry, nlohmann::json::parse(R"({"functions": false, "tables": ["RDDSYS_FLK"], "made": false})"));
    const auto json = nlohmann::json::parse(on(path, {"--json", "prepare", "--yes"}).out);
    EXPECT_TRUE(json["made"].get<bool>());
    EXPECT_EQ(made(), all);
}

TEST_F(Prepare, WhatOthersHaveUnderTheNamesOfTheDriverStays) {
    execute("create function ZMTRIM (A integer) returns integer as begin return A + 1; end");
    const Finished function = on(path, {"prepare", "--yes"});
    EXPECT_EQ(function.status, 1);
    EXPECT_EQ(function.err,
              "error: nothing was made: ZMTRIM is there, and not the driver's\n"
              "hint: the driver needs these names; rename or drop what is called so\n");
    EXPECT_EQ(BareClient(path).rows("select ZMTRIM(1) from rdb$database"), (Rows{{"2"}}));
    execute("drop function ZMTRIM");
    execute("create table RDDSYS_RLK (A integer)");
    EXPECT_TRUE(
        on(path, {"prepare", "--yes"}).err.starts_with("error: nothing was made: RDDSYS_RLK is there, "));
    EXPECT_EQ(made(), (Rows{{"0", "1"}}));
}

TEST_F(Prepare, LookingDoesNotMakeTables) {
    for (const char* command : {"doctor", "functions"}) on(path, {command});
    EXPECT_EQ(made(), nothing);
}

}  // namespace
}  // namespace zmfb::test
