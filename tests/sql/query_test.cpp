// Dynamic queries: headers, empty results, failures, log lines.
#include "sql/client.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::Value;
using namespace std::string_view_literals;
using Entries = std::vector<LogEntry>;

class Query : public Database {
  protected:
    std::string select(const Value& stmt) { return show(call("internalselect", stmt)); }
};

TEST_F(Query, CountIsOneHeaderAndOneRow) {
    EXPECT_EQ(select("select count(*) from rdb$database"), R"({{{"COUNT", "N", 8, 0}}, {"1"}})");
}

TEST_F(Query, NoRowsIsTheHeaderAlone) {
    execute("create table T (A integer)");
    EXPECT_EQ(select("select A from T"), R"({{{"A", "N", 4, 0}}})");
}

TEST_F(Query, HeaderDescribesEveryColumnType) {
    execute(
        "create table T (A char(3), B varchar(10), C smallint, D integer, E bigint, F numeric(15,2), "
        "G numeric(4,1), H float, I double precision, J timestamp, K date, L time, M blob, N numeric(9,9))");
    EXPECT_EQ(
        show(call("internalselect", "select * from T")[1]),
        R"({{"A", "C", 3, 0}, {"B", "C", 10, 0}, {"C", "N", 2, 0}, {"D", "N", 4, 0}, {"E", "N", 8, 0}, )"
        R"({"F", "N", 8, 2}, {"G", "N", 2, 1}, {"H", "N", 4, 0}, {"I", "N", 8, 0}, {"J", "D", 8, 0}, )"
        R"({"K", " ", 4, 0}, {"L", " ", 4, 0}, {"M", " ", 8, 0}, {"N", "N", 4, 9}})");
}

// The engine names an expression by its kind: its alias is asked for only when there is no name at all.
TEST_F(Query, ColumnIsNamedByItsFieldAndNotItsAlias) {
    execute("create table T (A integer)");
    EXPECT_EQ(show(call("internalselect", "select A as OTHER, A + 1 as NEXT from T")[1]),
              R"({{"A", "N", 4, 0}, {"ADD", "N", 8, 0}})");
}

class NamelessColumns : public sql::Client {
  public:
    NamelessColumns() : before_(sql::set_client(this)) {}
    ~NamelessColumns() override { sql::set_client(before_); }
    ISC_STATUS describe(ISC_STATUS* status, const char* statement, XSQLDA* output) override {
        const ISC_STATUS code = Client::describe(status, statement, output);
        for (short i = 0; i < output->sqld && i < output->sqln; ++i) output->sqlvar[i].sqlname_length = 0;
        return code;
    }

  private:
    sql::Client* before_;
};

TEST_F(Query, ColumnWithoutAFieldNameIsNamedByItsAlias) {
    connection();
    const NamelessColumns client;
    log_at(10);
    EXPECT_EQ(select("select 1 as NEXT from rdb$database"), R"({{{"NEXT", "N", 4, 0}}, {"1"}})");
    EXPECT_EQ(log_lines().back(), (LogEntry{10, "[INFO] Column:  Type: 496 Length: 4 Alias: NEXT"}));
}

TEST_F(Query, ManyColumnsAreDescribedAgain) {
    std::string columns;
    for (int i = 1; i <= 300; ++i)
        columns += (i > 1 ? ", " : "") + std::to_string(i) + " as C" + std::to_string(i);
    const Value result = call("internalselect", "select " + columns + " from rdb$database");
    ASSERT_EQ(result.size(), 2u);
    ASSERT_EQ(result[1].size(), 300u);
    EXPECT_EQ(show(result[1][300]), R"({"CONSTANT", "N", 4, 0})");
    EXPECT_EQ(show(result[2][1]), "\"1\"");
    EXPECT_EQ(show(result[2][300]), "\"300\"");
}

TEST_F(Query, RowsComeInTheirOrder) {
    execute("create table T (A integer)");
    for (const char* a : {"3", "1", "2"}) execute(std::string("insert into T values (") + a + ")");
    EXPECT_EQ(row_texts(call("internalselect", "select A from T order by A desc")),
              (Rows{{"3"}, {"2"}, {"1"}}));
}

TEST_F(Query, ExecutequeryGivesTheSame) {
    EXPECT_EQ(show(call("executequery", "select 1 from rdb$database")),
              R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, SeesCommittedDataOnly) {
    execute("create table T (A integer)");
    call("starttransaction");
    EXPECT_EQ(show(call("cachedupdate", "insert into T values (1)")), "\"\"");
    EXPECT_EQ(select("select A from T"), R"({{{"A", "N", 4, 0}}})");
    call("commitchanges");
    EXPECT_EQ(select("select A from T"), R"({{{"A", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, HoldsNoLockAfterItReturns) {
    execute("create table T (A integer)");
    EXPECT_EQ(select("select A from T"), R"({{{"A", "N", 4, 0}}})");
    EXPECT_EQ(
        rows("select count(*) from mon$transactions t join mon$attachments a on a.mon$attachment_id = "
             "t.mon$attachment_id where a.mon$attachment_id <> current_connection and a.mon$system_flag = 0"),
        (Rows{{"0"}}))
        << "of others than the engine itself";
}

TEST_F(Query, SyntaxErrorGivesAnEmptyArrayAndOneLine) {
    connection();
    log_at(1);
    EXPECT_EQ(select("selec 1 from rdb$database"), "{}");
    EXPECT_EQ(log_lines(), (Entries{{1, "[ERROR] SQLCODE=-104 (Invalid token)"}}));
    EXPECT_EQ(last_engine_message(),
              "Dynamic SQL Error\nSQL error code = -104\nToken unknown - line 1, column 1\nselec");
}

TEST_F(Query, MissingTableGivesAnEmptyArray) {
    connection();
    log_at(1);
    EXPECT_EQ(select("select A from NOWHERE"), "{}");
    EXPECT_EQ(log_lines(), (Entries{{1, "[ERROR] SQLCODE=-204 (Undefined name)"}}));
}

TEST_F(Query, EmptyStatementGivesAnEmptyArray) {
    connection();
    log_at(1);
    EXPECT_EQ(select(""), "{}");
    EXPECT_EQ(log_lines(), (Entries{{1, "[ERROR] SQLCODE=-104 (Invalid token)"}}));
}

TEST_F(Query, FailureDuringTheFetchKeepsTheRowsBeforeIt) {
    execute("create table T (A integer)");
    for (const char* a : {"4", "2", "0", "1"}) execute(std::string("insert into T values (") + a + ")");
    connection();
    log_at(1);
    EXPECT_EQ(select("select 8 / A from T"), R"({{{"DIVIDE", "N", 8, 0}}, {"2"}, {"4"}})");
    ASSERT_EQ(log_lines().size(), 1u);
    EXPECT_EQ(log_lines()[0].level, 1);
    EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-802 (")) << log_text();
    EXPECT_EQ(select("select 1 from rdb$database"), R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, StatementThatIsNoQueryChangesNothing) {
    execute("create table T (A integer)");
    connection();
    log_at(1);
    EXPECT_EQ(select("insert into T values (1)"), "{{}}");
    EXPECT_EQ(log_lines().size(), 1u) << log_text();
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
    EXPECT_EQ(select("select 1 from rdb$database"), R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, ZeroByteInTheStatementIsRefused) {
    execute("create table T (A integer)");
    execute("insert into T values (1)");
    connection();
    log_at(8);
    EXPECT_EQ(select("select A from T\0 where A = 2"sv), "{}");
    EXPECT_EQ(log_lines(), (Entries{{8, "[QURY] Statement: select A from T"},
                                    {1, "[ERROR] SQLCODE=-104 (Invalid token)"}}));
    EXPECT_EQ(last_engine_message(), "SQL error code = -104\nThe statement holds a zero byte");
}

TEST_F(Query, LongStatementIsSentWhole) {
    const std::string blanks(200000, ' ');
    EXPECT_EQ(select("select 1 " + blanks + "from rdb$database"), R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, NothingIsLoggedBelowLevelEight) {
    connection();
    log_at(7);
    select("select 1 from rdb$database");
    EXPECT_EQ(log_text(), "");
}

TEST_F(Query, LevelEightLogsTheStatement) {
    connection();
    log_at(8);
    select("select 1 from rdb$database ");
    EXPECT_EQ(log_lines(), (Entries{{8, "[QURY] Statement: select 1 from rdb$database "}}));
}

TEST_F(Query, LevelNineLogsNoColumns) {
    connection();
    log_at(9);
    select("select 1 from rdb$database");
    EXPECT_EQ(log_lines(), (Entries{{8, "[QURY] Statement: select 1 from rdb$database"}}));
}

TEST_F(Query, LevelTenLogsEveryColumn) {
    execute("create table T (A integer not null, B varchar(10))");
    connection();
    log_at(10);
    select("select A, B as OTHER, count(*) from T group by 1, 2");
    EXPECT_EQ(log_lines(),
              (Entries{{8, "[QURY] Statement: select A, B as OTHER, count(*) from T group by 1, 2"},
                       {10, "[INFO] Column: A Type: 496 Length: 4 Alias: A"},
                       {10, "[INFO] Column: B Type: 449 Length: 10 Alias: OTHER"},
                       {10, "[INFO] Column: COUNT Type: 580 Length: 8 Alias: COUNT"}}));
}

TEST_F(Query, ErrorIsNotLoggedAtLevelZero) {
    connection();
    select("selec");
    EXPECT_EQ(log_text(), "");
}

TEST_F(Query, LogFileThatCannotBeWrittenChangesNothing) {
    connection();
    setenv("ZMFB_TEST_LOG", "/nowhere/zmrddfire.log", 1);
    log_at(10);
    EXPECT_EQ(select("select 1 from rdb$database"), R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
    EXPECT_EQ(select("selec"), "{}");
}

TEST_F(Query, TwoDatabasesSideBySide) {
    zmFBConn& first = connection();
    const std::string other = (folder() / "other.fdb").string();
    const std::string name = on_server() ? database().substr(0, database().find(':') + 1) + other : other;
    ASSERT_EQ(create_database(name, sysdba, sysdba_password).message(), "");
    ASSERT_EQ(run_script(name, sysdba, sysdba_password, "create table ONLY_HERE (A integer);").message(), "");
    zmFBConn second(name, sysdba, sysdba_password);
    ASSERT_TRUE(second.isconnected());
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(
            show(first.call("executeupdate", "create table T" + std::to_string(round) + " (A integer)")),
            "\"\"");
        EXPECT_EQ(show(second.call("executequery", "select count(*) from ONLY_HERE")[2]), R"({"0"})");
        EXPECT_EQ(show(first.call("executequery", "select A from ONLY_HERE")), "{}");
        EXPECT_EQ(show(second.call("executequery", "select A from T0")), "{}");
        EXPECT_EQ(show(first.call("executequery", "select count(*) from T0")[2]), R"({"0"})");
    }
    second.call("disconnect");
    EXPECT_EQ(show(second.call("executequery", "select count(*) from ONLY_HERE")), "{}");
    EXPECT_EQ(show(first.call("executequery", "select count(*) from T0")[2]), R"({"0"})");
}

TEST_F(Query, HandleOfAClosedDatabaseGivesAnErrorAndTheNextAttachWorks) {
    zmFBConn gone = connect();
    gone.call("disconnect");
    log_at(1);
    clear_log();
    EXPECT_EQ(show(gone.call("internalselect", "select 1 from rdb$database")), "{}");
    ASSERT_EQ(log_lines().size(), 1u);
    EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-904 (")) << log_text();
    zmFBConn next = connect();
    EXPECT_EQ(show(next.call("internalselect", "select 1 from rdb$database")),
              R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, HandleThatNeverWasGivesAnError) {
    connection();
    for (const double handle : {77777.0, -1.0, 0.5, 4294967295.0, 1e300, -1e300}) {
        zmFBConn object;
        object.set("dbhndl", handle);
        EXPECT_EQ(show(object.call("internalselect", "select 1 from rdb$database")), "{}") << handle;
        EXPECT_TRUE(object.call("executeupdate", "delete from T").string().starts_with("[ERROR] SQLCODE=-"))
            << handle;
    }
    EXPECT_EQ(select("select 1 from rdb$database"), R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
}

TEST_F(Query, HandleMayBeHandedToAnotherObject) {
    zmFBConn borrower;
    borrower.set("dbhndl", connection().get("dbhndl"));
    EXPECT_EQ(show(borrower.call("internalselect", "select 1 from rdb$database")),
              R"({{{"CONSTANT", "N", 4, 0}}, {"1"}})");
    borrower.set("dbhndl", 0);
}

TEST_F(Query, TableQueriedLastIsNotKeptInUse) {
    for (const char* query : {"select a from t", "select 1 / a from t", "select * from t where a = 0"}) {
        ASSERT_EQ(call("executeupdate", "create table t (a integer)").string(), "");
        ASSERT_EQ(call("executeupdate", "insert into t values (0)").string(), "");
        call("internalselect", query);
        EXPECT_EQ(call("executeupdate", "drop table t").string(), "") << query;
    }
}

}  // namespace
}  // namespace zmfb::test
