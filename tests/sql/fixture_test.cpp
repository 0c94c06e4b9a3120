// The fixture itself: what every test that needs a database relies on.
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using Fixture = Database;

TEST_F(Fixture, DatabaseIsWhereTheRunSays) {
    EXPECT_EQ(names_a_server(database()), on_server()) << database();
    const std::string protocol =
        rows("select rdb$get_context('SYSTEM', 'NETWORK_PROTOCOL') from rdb$database")[0][0];
    EXPECT_EQ(protocol.starts_with("TCP"), on_server()) << protocol;
}

TEST_F(Fixture, EachTestHasADatabaseOfItsOwn) {
    execute("create table FRUIT (NAME varchar(10), PRICE numeric(9,2))");
    execute("insert into FRUIT values ('apple', -1.50)");
    execute("insert into FRUIT values (null, 2)");
    EXPECT_EQ(rows("select * from FRUIT"), (Rows{{"apple", "-1.50"}, {"NULL", "2.00"}}));
}

TEST_F(Fixture, ATestDoesNotSeeTheTablesOfAnother) {
    EXPECT_EQ(rows("select count(*) from rdb$relations where rdb$relation_name = 'FRUIT'"), (Rows{{"0"}}));
}

TEST_F(Fixture, FunctionsOfTheModuleRun) {
    EXPECT_EQ(rows("select zmupper('abc') from rdb$database"), (Rows{{"ABC"}}));
}

TEST_F(Fixture, AttachingRaisesNothingAndLogsOneLine) {
    zmFBConn object = connect();
    EXPECT_TRUE(object.isconnected());
    EXPECT_EQ(raised(), std::vector<std::string>{});
    ASSERT_EQ(log_lines().size(), 1u) << log_text();
    EXPECT_EQ(log_lines()[0].level, 0);
    EXPECT_TRUE(log_lines()[0].text.starts_with("[CONN] Connected to: " + database())) << log_text();
}

TEST_F(Fixture, SystemTablesAreThereBeforeATestAttaches) {
    EXPECT_EQ(rows("select count(*) from rdb$relations where rdb$relation_name starting with 'RDDSYS_'"),
              (Rows{{"3"}}));
}

TEST_F(Fixture, StatementsAreReadFromTheLog) {
    connection();
    log_at(8);
    call("executeupdate", "create table A (B integer)");
    call("executequery", "select B from A");
    EXPECT_EQ(sql_log(), (std::vector<std::string>{"create table A (B integer)", "select B from A"}));
}

TEST_F(Fixture, RaisedErrorsAreNoted) {
    call("looptest", "CUSTOMER");
    EXPECT_EQ(raised(), std::vector<std::string>{"[FBCONN Error];CUSTOMER"});
}

}  // namespace
}  // namespace zmfb::test
