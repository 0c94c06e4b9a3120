// Statements and batches.
#include "tests/support/database.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::Value;
using namespace std::string_view_literals;
using Entries = std::vector<LogEntry>;

class Statement : public Database {
  protected:
    Statement() { execute("create table T (A integer not null primary key, B varchar(10))"); }
    std::string update(const Value& stmt) { return call("executeupdate", stmt).string(); }
    std::string cached(const Value& stmt) { return call("cachedupdate", stmt).string(); }
    Rows contents() const { return rows("select A, B from T order by A"); }
};

constexpr const char* unique_violation =
    "[ERROR] SQLCODE=-803 (Invalid insert or update value(s): object columns are constrained - no 2 table "
    "rows can "
    "have duplicate column values)";

TEST_F(Statement, SuccessIsTheEmptyTextAndCommitted) {
    EXPECT_EQ(update("insert into T values (1, 'one')"), "");
    EXPECT_EQ(update("update T set B = 'two' where A = 1"), "");
    EXPECT_EQ(contents(), (Rows{{"1", "two"}}));
}

TEST_F(Statement, StatementThatMeetsNoRowIsASuccess) { EXPECT_EQ(update("delete from T where A = 99"), ""); }

TEST_F(Statement, DefinitionsAreStatementsToo) {
    EXPECT_EQ(update("create table U (A integer)"), "");
    EXPECT_EQ(update("drop table U"), "");
    EXPECT_EQ(rows("select count(*) from rdb$relations where rdb$relation_name = 'U'"), (Rows{{"0"}}));
}

TEST_F(Statement, DeleteOnAMissingTableGivesTheErrorTextAndLogsIt) {
    connection();
    log_at(1);
    EXPECT_EQ(update("delete from NOWHERE"), "[ERROR] SQLCODE=-204 (Undefined name)");
    EXPECT_EQ(log_lines(), (Entries{{1, "[ERROR] SQLCODE=-204 (Undefined name)"}}));
    EXPECT_EQ(last_engine_message(),
              "Dynamic SQL Error\nSQL error code = -204\nTable unknown\nNOWHERE\nAt line 1, column 13");
}

TEST_F(Statement, FailureChangesNothing) {
    execute("insert into T values (1, 'one')");
    EXPECT_EQ(update("insert into T select A - 1, B from T union all select A, 'again' from T"),
              unique_violation);
    EXPECT_EQ(contents(), (Rows{{"1", "one"}}));
}

TEST_F(Statement, FailureAtTheCommitIsReported) {
    execute("insert into T values (1, 'same')");
    execute("insert into T values (2, 'same')");
    EXPECT_EQ(update("create unique index I_B on T (B)").substr(0, 24), "[ERROR] SQLCODE=-803 (In");
    EXPECT_EQ(rows("select count(*) from rdb$indices where rdb$index_name = 'I_B'"), (Rows{{"0"}}));
    EXPECT_EQ(update("insert into T values (3, 'next')"), "");
}

TEST_F(Statement, QueryReportsThatItIsNoStatement) {
    EXPECT_TRUE(update("select A from T").starts_with("[ERROR] SQLCODE=-")) << update("select A from T");
    EXPECT_EQ(update("insert into T values (1, 'next')"), "");
}

TEST_F(Statement, EmptyStatementIsAnError) { EXPECT_EQ(update(""), "[ERROR] SQLCODE=-104 (Invalid token)"); }

TEST_F(Statement, LevelSevenLogsTheStatement) {
    connection();
    log_at(7);
    update("insert into T values (1, 'a  ') ");
    EXPECT_EQ(log_lines(), (Entries{{7, "[UPDT] Statement: insert into T values (1, 'a  ') "}}));
}

TEST_F(Statement, LevelSixLogsNoStatement) {
    connection();
    log_at(6);
    update("insert into T values (1, 'a')");
    EXPECT_EQ(log_text(), "");
}

TEST_F(Statement, StatementIsLoggedBeforeItsError) {
    connection();
    log_at(7);
    update("delete from NOWHERE");
    EXPECT_EQ(log_lines(), (Entries{{7, "[UPDT] Statement: delete from NOWHERE"},
                                    {1, "[ERROR] SQLCODE=-204 (Undefined name)"}}));
}

TEST_F(Statement, LongStatementIsLoggedCutAndSentWhole) {
    connection();
    log_at(7);
    const std::string statement = "insert into T values (1, " + std::string(50000, ' ') + "'whole')";
    EXPECT_EQ(update(statement), "");
    EXPECT_EQ(contents(), (Rows{{"1", "whole"}}));
    EXPECT_EQ(log_lines(), (Entries{{7, ("[UPDT] Statement: " + statement).substr(0, 9999)}}));
}

TEST_F(Statement, ZeroByteInTheStatementIsRefused) {
    execute("insert into T values (1, 'kept')");
    EXPECT_EQ(update("delete from T\0 where A = 2"sv), "[ERROR] SQLCODE=-104 (Invalid token)");
    call("starttransaction");
    EXPECT_EQ(cached("delete from T\0 where A = 2"sv), "[ERROR] SQLCODE=-104 (Invalid token)");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "kept"}}));
}

TEST_F(Statement, StatementOfAnotherKindIsRaisedAndRefused) {
    EXPECT_EQ(update(7), "[ERROR] SQLCODE=-104 (Invalid token)");
    EXPECT_EQ(raised().size(), 1u);
    EXPECT_EQ(last_engine_message(), "SQL error code = -104\nThe statement is no text");
}

TEST_F(Statement, StatementOfAnotherKindIsRefusedInABatch) {
    call("starttransaction");
    EXPECT_EQ(cached(Value()), "[ERROR] SQLCODE=-104 (Invalid token)");
    EXPECT_EQ(last_engine_message(), "SQL error code = -104\nThe statement is no text");
    call("commitchanges");
}

TEST_F(Statement, StatementsThatEndTheirTransactionDoNoHarm) {
    connection();
    log_at(1);
    update("commit");
    update("rollback");
    update("set transaction");
    EXPECT_EQ(update("insert into T values (1, 'next')"), "");
    EXPECT_EQ(contents(), (Rows{{"1", "next"}}));
}

TEST_F(Statement, TransactionParametersAreThePrescribedOnes) {
    connection();
    FaultyClient client;
    update("insert into T values (1, 'a')");
    call("starttransaction");
    call("commitchanges");
    call("executequery", "select A from T");
    EXPECT_EQ(client.transaction_blocks(),
              (std::vector<std::string>{"\x01\x09\x0f\x06\x12", "\x01\x09\x02\x06", "\x01\x08\x02\x06"}));
}

using Batch = Statement;

TEST_F(Batch, IsCommittedAtItsEnd) {
    EXPECT_EQ(show(call("starttransaction")), "NIL");
    EXPECT_EQ(cached("insert into T values (1, 'one')"), "");
    EXPECT_EQ(cached("insert into T values (2, 'two')"), "");
    EXPECT_EQ(contents(), Rows{});
    EXPECT_EQ(show(call("commitchanges")), "NIL");
    EXPECT_EQ(contents(), (Rows{{"1", "one"}, {"2", "two"}}));
}

TEST_F(Batch, FailingStatementBetweenTwoGoodOnesLosesNeither) {
    call("starttransaction");
    EXPECT_EQ(cached("insert into T values (1, 'one')"), "");
    EXPECT_EQ(cached("insert into T values (1, 'again')"), unique_violation);
    EXPECT_EQ(cached("insert into T values (2, 'two')"), "");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "one"}, {"2", "two"}}));
}

TEST_F(Batch, LogLinesPerLevel) {
    connection();
    log_at(7);
    call("starttransaction");
    cached("insert into T values (1, 'one')");
    cached("insert into T values (1, 'again')");
    call("commitchanges");
    EXPECT_EQ(log_lines(), (Entries{{7, "[TRANS] Starting Transaction"},
                                    {7, "[CACHE] Statement: insert into T values (1, 'one')"},
                                    {7, "[CACHE] Statement: insert into T values (1, 'again')"},
                                    {1, unique_violation},
                                    {7, "[COMMIT] Commit"}}));
}

TEST_F(Batch, LongStatementIsLoggedCutAndSentWhole) {
    connection();
    log_at(7);
    const std::string statement = "insert into T values (1, " + std::string(50000, ' ') + "'whole')";
    call("starttransaction");
    EXPECT_EQ(cached(statement), "");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "whole"}}));
    EXPECT_EQ(log_lines()[1], (LogEntry{7, ("[CACHE] Statement: " + statement).substr(0, 9999)}));
}

TEST_F(Batch, StatementWithoutABatchIsAnError) {
    EXPECT_TRUE(cached("insert into T values (1, 'one')").starts_with("[ERROR] SQLCODE=-901 ("));
    call("commitchanges");
    EXPECT_EQ(contents(), Rows{});
    EXPECT_EQ(update("insert into T values (1, 'next')"), "");
}

TEST_F(Batch, CommitWithoutABatchIsSilent) {
    connection();
    log_at(6);
    EXPECT_EQ(show(call("commitchanges")), "NIL");
    EXPECT_EQ(log_text(), "");
}

TEST_F(Batch, EmptyOneIsCommitted) {
    call("starttransaction");
    call("commitchanges");
    EXPECT_EQ(update("insert into T values (1, 'next')"), "");
}

TEST_F(Batch, SecondStartGoesOnWithTheOpenOne) {
    call("starttransaction");
    cached("insert into T values (1, 'one')");
    call("starttransaction");
    cached("insert into T values (2, 'two')");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "one"}, {"2", "two"}}));
    call("starttransaction");
    cached("insert into T values (3, 'three')");
    call("commitchanges");
    EXPECT_EQ(contents().size(), 3u);
}

TEST_F(Batch, LeftOpenLosesNothingWhenAnotherStatementRuns) {
    call("starttransaction");
    cached("insert into T values (1, 'one')");
    EXPECT_EQ(update("insert into T values (2, 'beside')"), "");
    EXPECT_EQ(show(call("executequery", "select A from T")[2]), R"({"2"})");
    cached("insert into T values (3, 'three')");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "one"}, {"2", "beside"}, {"3", "three"}}));
}

TEST_F(Batch, StatementThatWouldWaitForTheOpenBatchFailsInsteadOfWaiting) {
    execute("insert into T values (1, 'one')");
    call("starttransaction");
    EXPECT_EQ(cached("update T set B = 'batch'"), "");
    EXPECT_TRUE(update("update T set B = 'beside'").starts_with("[ERROR] SQLCODE=-")) << "did not fail";
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "batch"}}));
    EXPECT_EQ(update("update T set B = 'after'"), "");
    EXPECT_EQ(contents(), (Rows{{"1", "after"}}));
}

TEST_F(Batch, StatementOfAnotherObjectThatWouldWaitForTheOpenBatchFailsInsteadOfWaiting) {
    execute("insert into T values (1, 'one')");
    zmFBConn other = connect();
    call("starttransaction");
    EXPECT_EQ(cached("update T set B = 'batch'"), "");
    const std::string text = other.call("executeupdate", "update T set B = 'beside'").string();
    EXPECT_TRUE(text.starts_with("[ERROR] SQLCODE=-")) << text;
    EXPECT_EQ(show(other.call("executequery", "select B from T")[2]), R"({"one       "})");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "batch"}}));
}

TEST_F(Batch, IsLostWhenItsDatabaseIsDetached) {
    zmFBConn other = connect();
    other.call("starttransaction");
    other.call("cachedupdate", "insert into T values (1, 'lost')");
    other.call("disconnect");
    EXPECT_EQ(contents(), Rows{});
    EXPECT_EQ(rows("select count(*) from mon$attachments where mon$system_flag = 0"), (Rows{{"1"}}));
    EXPECT_EQ(update("insert into T values (1, 'next')"), "");
    call("starttransaction");
    EXPECT_EQ(cached("insert into T values (2, 'batch')"), "");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "next"}, {"2", "batch"}}));
}

TEST_F(Batch, OutlivesTheDetachOfAnotherObject) {
    zmFBConn other = connect();
    call("starttransaction");
    EXPECT_EQ(cached("insert into T values (1, 'before')"), "");
    other.call("disconnect");
    EXPECT_EQ(cached("insert into T values (2, 'behind')"), "");
    call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "before"}, {"2", "behind"}}));
}

TEST_F(Batch, WhoseCommitFailsIsDroppedAndTheNextOneWorks) {
    execute("insert into T values (1, 'same')");
    execute("insert into T values (2, 'same')");
    call("starttransaction");
    EXPECT_EQ(cached("create unique index I_B on T (B)"), "");
    call("commitchanges");
    EXPECT_EQ(rows("select count(*) from rdb$indices where rdb$index_name = 'I_B'"), (Rows{{"0"}}));
    call("starttransaction");
    EXPECT_EQ(cached("insert into T values (3, 'next')"), "");
    call("commitchanges");
    EXPECT_EQ(contents().size(), 3u);
}

TEST_F(Batch, OfOneObjectIsCommittedThroughAnother) {
    zmFBConn other = connect();
    call("starttransaction");
    cached("insert into T values (1, 'one')");
    other.call("commitchanges");
    EXPECT_EQ(contents(), (Rows{{"1", "one"}}));
}

}  // namespace
}  // namespace zmfb::test
