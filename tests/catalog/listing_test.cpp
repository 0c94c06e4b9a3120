#include "sql/database.h"
#include "sql/state.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::Value;

class Listing : public Database {
  protected:
    // The first elements of rows of one element, without their padding.
    static std::vector<std::string> names(const Value& list) {
        std::vector<std::string> trimmed;
        for (const Value& row : list.items()) {
            EXPECT_EQ(row.size(), 1U);
            const std::string_view text = row[1].text();
            EXPECT_GE(text.size(), 31U) << "not padded";
            trimmed.emplace_back(text.substr(0, text.find_last_not_of(' ') + 1));
        }
        return trimmed;
    }
};

using Names = std::vector<std::string>;

TEST_F(Listing, GettablesnameGivesTrimmedNamesOfTablesAndViewsInOrder) {
    execute("create table ZEBRA (A char(1))");
    execute("create table ANT (A char(1))");
    execute("create view MOLE (A) as select A from ANT");
    connection();
    log_at(8);
    EXPECT_EQ(show(call("gettablesname")),
              R"({"ANT", "MOLE", "RDDSYS_FLK", "RDDSYS_OPN", "RDDSYS_RLK", "ZEBRA"})");
    EXPECT_EQ(sql_log(),
              Names{"select rdb$relation_name from rdb$relations where rdb$system_flag = 0 order by "
                    "rdb$relation_name"});
}

TEST_F(Listing, GettablesnameOfADatabaseWithoutUserTablesIsEmpty) {
    const std::string path = file("empty.fdb");
    const std::string empty_database = on_server() ? Server::shared().name_of(path) : path;
    ASSERT_EQ(sql::create_database(empty_database, sysdba, sysdba_password).message(), "");
    BareClient client(empty_database);
    zmFBConn object;
    object.set("dbhndl", sql::number_of(*client.handle()));
    EXPECT_EQ(show(object.call("gettablesname")), "{}");
}

TEST_F(Listing, GetindexfieldsGivesTheSegmentsAsRowsInTheirOrder) {
    execute("create table CLIENT (NAME char(10), CITY char(10))");
    execute("create index I_TWO on CLIENT (NAME, CITY)");
    execute("create index I_TURNED on CLIENT (CITY, NAME)");
    connection();
    log_at(8);
    EXPECT_EQ(names(call("getindexfields", "i_two")), (Names{"NAME", "CITY"}));
    EXPECT_EQ(names(call("getindexfields", "I_TURNED")), (Names{"CITY", "NAME"}));
    EXPECT_EQ(
        sql_log(),
        (Names{"select rdb$field_name from rdb$index_segments where rdb$index_name = 'I_TWO' order by "
               "rdb$field_position",
               "select rdb$field_name from rdb$index_segments where rdb$index_name = 'I_TURNED' order by "
               "rdb$field_position"}));
}

TEST_F(Listing, GetindexfieldsOfAnUnknownIndexIsEmpty) {
    EXPECT_EQ(show(call("getindexfields", "NONE")), "{}");
    EXPECT_EQ(show(call("getindexfields", "O'BRIEN")), "{}");
}

TEST_F(Listing, GetfieldsontriggerGivesTheColumnsThatATriggerDependsOn) {
    execute("create table CLIENT (NAME char(10), CITY char(10), COPY char(10))");
    execute(
        "create trigger T_CLIENT for CLIENT active before insert position 9 as begin new.COPY = new.NAME; "
        "end");
    connection();
    log_at(8);
    Names fields = names(call("getfieldsontrigger", " t_client "));
    std::sort(fields.begin(), fields.end());
    EXPECT_EQ(fields, (Names{"COPY", "NAME"}));
    EXPECT_EQ(sql_log(),
              Names{"SELECT RDB$FIELD_NAME FROM RDB$DEPENDENCIES WHERE RDB$DEPENDENT_NAME = 'T_CLIENT' "
                    "AND RDB$FIELD_NAME IS NOT NULL"});
    EXPECT_EQ(show(call("getfieldsontrigger", "NONE")), "{}");
}

}  // namespace
}  // namespace zmfb::test
