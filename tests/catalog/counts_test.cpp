#include "tests/support/database.h"

namespace zmfb::test {
namespace {

class Counts : public Database {
  protected:
    double number(std::string_view method, std::string_view table) { return call(method, table).number(); }
};

using Names = std::vector<std::string>;

TEST_F(Counts, ADriverTableIsCountedByItsGenerators) {
    ASSERT_TRUE(call("createtable", "CLIENT", host::array_of(host::array_of("NAME", "C", 10, 0))).logical());
    for (const char* name : {"A", "B", "C"})
        execute(std::string("insert into CLIENT (NAME) values ('") + name + "')");
    execute("delete from CLIENT where NAME = 'B'");
    log_at(8);
    clear_log();
    EXPECT_EQ(number("gettablereccount", "client"), 2);
    EXPECT_EQ(number("gettablenumberofinserts", "client"), 3);
    EXPECT_EQ(number("counttablerecords", "client"), 2);
    EXPECT_EQ(sql_log(),
              (Names{"SELECT GEN_ID(G_CLIENT_I, 0) - GEN_ID(G_CLIENT_D, 0) FROM RDB$DATABASE ",
                     "SELECT GEN_ID(G_CLIENT_I, 0) FROM RDB$DATABASE ", "SELECT COUNT(*) FROM CLIENT"}));
    EXPECT_EQ(log_lines().size(), 3U) << "a count by the generators is not forced";
}

TEST_F(Counts, ATableFromOutsideTheDriverIsCountedHardWhichIsLoggedBehindIt) {
    execute("create table PLAIN (A char(1))");
    execute("insert into PLAIN values ('x')");
    execute("insert into PLAIN values ('y')");
    connection();
    log_at(8);
    EXPECT_EQ(number("gettablereccount", "plain"), 2);
    const auto lines = log_lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].text,
              "[QURY] Statement: SELECT GEN_ID(G_PLAIN_I, 0) - GEN_ID(G_PLAIN_D, 0) FROM RDB$DATABASE ");
    EXPECT_TRUE(lines[1].text.starts_with("[ERROR] SQLCODE="));
    EXPECT_EQ(lines[2].text, "[QURY] Statement: SELECT COUNT(*) FROM PLAIN");
    EXPECT_EQ(lines[3], (LogEntry{5, "[FORCED] Hard Count. Table: plain"}));
}

TEST_F(Counts, AnEmptyDriverTableIsNotCountedHard) {
    ASSERT_TRUE(call("createtable", "CLIENT", host::array_of(host::array_of("NAME", "C", 10, 0))).logical());
    log_at(5);
    EXPECT_EQ(number("gettablereccount", "CLIENT"), 0);
    EXPECT_TRUE(log_lines().empty());
}

TEST_F(Counts, AQueryThatFailsCountsAsNothing) {
    EXPECT_EQ(number("counttablerecords", "NONE"), 0);
    EXPECT_EQ(number("gettablenumberofinserts", "NONE"), 0);
    EXPECT_EQ(number("gettablereccount", "NONE"), 0);
    EXPECT_EQ(number("gettablereccount", "not a name"), 0);
}

TEST_F(Counts, ATableWithOneGeneratorOnlyIsCountedHard) {
    execute("create table HALF (A char(1))");
    execute("create generator G_HALF_I");
    execute("insert into HALF values ('x')");
    EXPECT_EQ(number("gettablereccount", "HALF"), 1);
    EXPECT_EQ(number("gettablenumberofinserts", "HALF"), 0);
}

}  // namespace
}  // namespace zmfb::test
