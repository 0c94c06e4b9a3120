#include "tests/support/database.h"

namespace zmfb::test {
namespace {

using host::Value;
using Names = std::vector<std::string>;

class Structure : public Database {
  protected:
    std::string structure(std::string_view table) { return show(call("gettablestruct", table)); }
};

TEST_F(Structure, EachColumnTypeMapsToAFieldType) {
    execute(
        "create table ALL_TYPES (A_DOUBLE double precision, A_FLOAT float, AN_INTEGER integer, A_SMALLINT "
        "smallint, "
        "A_BIGINT bigint, A_NUMERIC4 numeric(4,1), A_NUMERIC9 numeric(9,2), A_NUMERIC15 numeric(15,3), "
        "A_DECIMAL18 decimal(18,4), A_TIMESTAMP timestamp, A_CHAR char(7), A_VARCHAR varchar(12), A_DATE "
        "date, "
        "A_TIME time, A_BLOB blob)");
    EXPECT_EQ(structure("all_types"),
              R"({{"A_DOUBLE", "N", 15, 0}, {"A_FLOAT", "N", 15, 0}, {"AN_INTEGER", "N", 0, 0}, )"
              R"({"A_SMALLINT", "N", 0, 0}, {"A_BIGINT", "N", 0, 0}, {"A_NUMERIC4", "N", 4, 1}, )"
              R"({"A_NUMERIC9", "N", 9, 2}, {"A_NUMERIC15", "N", 15, 3}, {"A_DECIMAL18", "N", 18, 4}, )"
              R"({"A_TIMESTAMP", "D", 8, 0}, {"A_CHAR", "C", 7, 0}, {"A_VARCHAR", "C", 12, 0}, )"
              R"({"A_DATE", "U", 4, 0}, {"A_TIME", "U", 4, 0}, {"A_BLOB", "U", 8, 0}})");
}

TEST_F(Structure, ADescriptionOfNumericGivesTheLength) {
    execute(
        "create table T (A numeric(10,2), B numeric(9,2), C double precision, D integer, E char(5), F "
        "numeric(4,1))");
    execute("comment on column T.A is 'NUMERIC(10,2)'");
    execute("comment on column T.B is ' NUMERIC(10,2) '");
    execute("comment on column T.C is 'price, NUMERIC(12,3)'");
    execute("comment on column T.D is 'NUMERIC(7)'");
    execute("comment on column T.E is 'NUMERIC(3,1)'");
    execute("comment on column T.F is 'numeric(9,1)'");
    EXPECT_EQ(
        structure("T"),
        R"({{"A", "N", 10, 2}, {"B", "N", 10, 2}, {"C", "N", 12, 0}, {"D", "N", 0, 0}, {"E", "C", 5, 0}, )"
        R"({"F", "N", 4, 1}})");
}

TEST_F(Structure, ADescriptionWithLogicalInItMakesATextALogical) {
    execute("create table T (A char(1), B char(1), C varchar(3), D char(1), E integer)");
    execute("comment on column T.A is 'LOGICAL'");
    execute("comment on column T.C is 'a LOGICAL one'");
    execute("comment on column T.D is 'logical'");
    execute("comment on column T.E is 'LOGICAL'");
    EXPECT_EQ(
        structure("T"),
        R"({{"A", "L", 1, 0}, {"B", "C", 1, 0}, {"C", "L", 3, 0}, {"D", "C", 1, 0}, {"E", "N", 0, 0}})");
}

TEST_F(Structure, ADriverTableComesBackWithTheDriversColumnsBehindItsOwn) {
    using host::array_of;
    const Value fields = array_of(array_of("NAME", "C", 30, 0), array_of("PRICE", "N", 10, 2),
                                  array_of("BORN", "D", 8, 0), array_of("OK", "L", 1, 0));
    ASSERT_TRUE(call("createtable", "client", fields).logical());
    EXPECT_EQ(structure("Client"),
              R"({{"NAME", "C", 30, 0}, {"PRICE", "N", 10, 2}, {"BORN", "D", 8, 0}, {"OK", "L", 1, 0}, )"
              R"({"RDD_AREAID", "C", 50, 0}, {"RECNO", "N", 15, 0}})");
}

TEST_F(Structure, ColumnsComeInTheOrderOfTheirPositions) {
    execute("create table T (A char(1), B char(1), C char(1))");
    execute("alter table T alter C position 1");
    EXPECT_EQ(structure("T"), R"({{"C", "C", 1, 0}, {"A", "C", 1, 0}, {"B", "C", 1, 0}})");
}

constexpr std::string_view catalog_query =
    "select rf.rdb$field_name, fd.rdb$field_type, fd.rdb$field_sub_type, fd.rdb$field_length, "
    "fd.rdb$field_scale, "
    "rf.rdb$null_flag, fd.rdb$field_precision, rf.rdb$field_position from rdb$relation_fields rf, rdb$fields "
    "fd where "
    "fd.rdb$field_name = rf.rdb$field_source and rf.rdb$relation_name = 'T' order by rf.rdb$field_position";

TEST_F(Structure, OneQueryForTheColumnsAndOneForEachDescription) {
    execute("create table T (A char(1), B integer)");
    connection();
    log_at(8);
    EXPECT_EQ(call("gettablestruct", "t").size(), 2U);
    const std::string description =
        "select zmBlobSubstr(rdb$description,1,255) from rdb$relation_fields where rdb$field_name = '";
    EXPECT_EQ(sql_log(), (Names{std::string(catalog_query), description + "A' and rdb$relation_name = 'T' ",
                                description + "B' and rdb$relation_name = 'T' "}));
}

TEST_F(Structure, GetinternaltablestructGivesTheCatalogRowsAsTexts) {
    execute("create table T (A char(3) not null, B numeric(15,3), C double precision)");
    const Value rows = call("getinternaltablestruct", "t");
    ASSERT_EQ(rows.size(), 3U);
    std::vector<Names> trimmed;
    for (const Value& row : rows.items()) {
        Names& values = trimmed.emplace_back();
        for (const Value& value : row.items()) {
            const std::string_view text = value.text();
            values.emplace_back(text.substr(0, text.find_last_not_of(' ') + 1));
        }
    }
    EXPECT_EQ(trimmed[0], (Names{"A", "14", "0", "3", "0", "1", "NULL", "0"}));
    EXPECT_EQ(trimmed[1], (Names{"B", "16", "1", "8", "-3", "NULL", "15", "1"}));
    EXPECT_EQ(trimmed[2], (Names{"C", "27", "NULL", "8", "0", "NULL", "NULL", "2"}));
}

TEST_F(Structure, AnUnknownTableHasAnEmptyStructure) {
    log_at(1);
    EXPECT_EQ(structure("NONE"), "{}");
    EXPECT_EQ(show(call("getinternaltablestruct", "NONE")), "{}");
    EXPECT_TRUE(log_lines().empty());
    EXPECT_EQ(structure("O'BRIEN"), "{}");
}

TEST_F(Structure, IszmrddtableTellsTheDriversTablesByTheirDescription) {
    for (const char* table : {"OURS", "PADDED", "THEIRS", "PLAIN"}) {
        execute(std::string("create table ") + table + " (A char(1))");
    }
    execute("comment on table OURS is 'Created by ZMRDDFIRE'");
    execute("comment on table PADDED is '  Created by ZMRDDFIRE  '");
    execute("comment on table THEIRS is 'Created by ZMRDDFIRE too'");
    EXPECT_TRUE(call("iszmrddtable", "ours").logical());
    EXPECT_TRUE(call("iszmrddtable", "PADDED").logical());
    EXPECT_FALSE(call("iszmrddtable", "THEIRS").logical());
    EXPECT_FALSE(call("iszmrddtable", "PLAIN").logical());
    EXPECT_FALSE(call("iszmrddtable", "NONE").logical());
    EXPECT_TRUE(call("iszmrddtable", "RDDSYS_OPN").logical());
}

}  // namespace
}  // namespace zmfb::test
