// Rows by position.
#include "tests/support/database.h"

namespace zmfb::test {
namespace {

using host::Value;

class Position : public Database {
  protected:
    Position() {
        execute(
            "create table CLIENT (NAME varchar(8), BORN timestamp, RDD_AREAID varchar(5), "
            "RECNO double precision not null primary key)");
    }
    void fill(int count) {
        execute("execute block as declare i integer = 1; begin while (i <= " + std::to_string(count) +
                ") do begin insert into CLIENT values ('n' || :i, null, 'area', :i); i = i + 1; end end");
    }
    std::string getrow(const Value& skip, const Value& plan = "", std::string_view condition = "RECNO > 0") {
        return show(call("getrow", "CLIENT", condition, "RECNO", plan, skip));
    }
    Value getfirstrows(int count, int skip, const Value& plan = "") {
        return call("getfirstrows", "CLIENT", "RECNO > 0", "RECNO", plan, count, skip);
    }
};

TEST_F(Position, GetrowOfAnEmptyTableIsAnEmptyArray) {
    EXPECT_EQ(getrow(0), "{}");
    EXPECT_EQ(getrow(5), "{}");
}

TEST_F(Position, GetrowOfTheOnlyRow) {
    fill(1);
    EXPECT_EQ(getrow(0), R"({"n1      ", "NULL", "area ", "1.000000"})");
    EXPECT_EQ(getrow(1), "{}");
}

TEST_F(Position, GetrowGivesTheRowAtTheOffset) {
    fill(100000);
    EXPECT_EQ(getrow(0), R"({"n1      ", "NULL", "area ", "1.000000"})");
    EXPECT_EQ(getrow(10), R"({"n11     ", "NULL", "area ", "11.000000"})");
    EXPECT_EQ(getrow(99999), R"({"n100000 ", "NULL", "area ", "100000.000000"})");
}

TEST_F(Position, SkipBeyondTheLastRowIsAnEmptyArray) {
    fill(100000);
    EXPECT_EQ(getrow(100000), "{}");
    EXPECT_EQ(getrow(2000000000), "{}");
    EXPECT_EQ(show(getfirstrows(5, 100000)), "{}");
    EXPECT_EQ(show(getfirstrows(5, 2000000000)), "{}");
}

TEST_F(Position, ConditionFilters) {
    fill(10);
    EXPECT_EQ(getrow(0, "", "RECNO > 7"), R"({"n8      ", "NULL", "area ", "8.000000"})");
    EXPECT_EQ(getrow(0, "", "RECNO > 10"), "{}");
}

TEST_F(Position, PlanClauseIsUsed) {
    fill(10);
    EXPECT_EQ(getrow(3, " plan sort (CLIENT natural)"), R"({"n4      ", "NULL", "area ", "4.000000"})");
    EXPECT_EQ(getfirstrows(2, 3, " plan sort (CLIENT natural)").size(), 3u);
}

TEST_F(Position, PlanWithoutALeadingBlankIsGluedToTheCondition) {
    fill(1);
    EXPECT_EQ(getrow(0, "plan (CLIENT natural)", "A"), "{}");
    EXPECT_EQ(getrow(0, " and RECNO < 5"), R"({"n1      ", "NULL", "area ", "1.000000"})");
}

TEST_F(Position, GetfirstrowsGivesHeaderAndRows) {
    fill(10);
    EXPECT_EQ(
        show(getfirstrows(2, 4)),
        R"({{{"NAME", "C", 8, 0}, {"BORN", "D", 8, 0}, {"RDD_AREAID", "C", 5, 0}, {"RECNO", "N", 8, 0}}, )"
        R"({"n5      ", "NULL", "area ", "5.000000"}, {"n6      ", "NULL", "area ", "6.000000"}})");
}

TEST_F(Position, FewerRowsThanAskedFor) {
    fill(10);
    EXPECT_EQ(getfirstrows(5, 7).size(), 4u);
}

TEST_F(Position, GetfirstrowsOfNoRowIsAnEmptyArray) {
    EXPECT_EQ(show(getfirstrows(5, 0)), "{}");
    fill(3);
    EXPECT_EQ(show(getfirstrows(0, 0)), "{}");
}

TEST_F(Position, GetfirstrowsOfAHundredThousand) {
    fill(100000);
    const Value all = getfirstrows(200000, 0);
    ASSERT_EQ(all.size(), 100001u);
    EXPECT_EQ(show(all[100001][1]), "\"n100000 \"");
    EXPECT_EQ(getfirstrows(50000, 99990).size(), 11u);
}

TEST_F(Position, StatementThatFailsIsAnEmptyArrayWithoutAnError) {
    EXPECT_EQ(show(call("getrow", "NOWHERE", "1 = 1", "1", "", 0)), "{}");
    EXPECT_EQ(show(call("getfirstrows", "CLIENT", "", "RECNO", "", 1, 0)), "{}");
    EXPECT_EQ(show(call("executeudfskippad", "NOCOLUMN", "CLIENT", "1")), "{}");
}

TEST_F(Position, SkippadOfADate) {
    execute("insert into CLIENT values ('n1', '2007-03-01 14:05', 'area', 1)");
    const Value row = call("executeudfskippad", "'{{D}}' || BORN", "CLIENT", "1");
    ASSERT_EQ(row.size(), 1u);
    EXPECT_TRUE(row[1].text().starts_with("20070301 ")) << show(row);
}

TEST_F(Position, SkippadOfAText) {
    fill(2);
    const Value row = call("executeudfskippad", "NAME", "CLIENT", "2");
    ASSERT_EQ(row.size(), 1u);
    EXPECT_TRUE(row[1].text().starts_with("n2 ")) << show(row);
}

TEST_F(Position, SkippadOfAMissingRecordIsAnEmptyArray) {
    EXPECT_EQ(show(call("executeudfskippad", "NAME", "CLIENT", "7")), "{}");
}

}  // namespace
}  // namespace zmfb::test
