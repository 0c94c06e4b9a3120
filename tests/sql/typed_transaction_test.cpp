// What transactions keep and undo.
#include <atomic>
#include <chrono>
#include <thread>

#include "sql/object_client.h"
#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

class TypedTransaction : public Database {
  protected:
    TypedTransaction() {
        execute("create table T (A integer not null primary key, B varchar(10))");
        execute("insert into T values (1, 'one')");
        execute("insert into T values (2, 'two')");
    }

    [[nodiscard]] std::string stored() const {
        std::string all;
        for (const Row& row : rows("select A || B from T order by A")) all += row[0] + " ";
        return all;
    }
};

TEST_F(TypedTransaction, IsRolledBackUnlessCommitted) {
    {
        Transaction work(connection());
        EXPECT_EQ(work.execute("insert into T values (3, 'three')"), 1);
        EXPECT_EQ(work.one<int>("select count(*) from T"), 3);
    }
    EXPECT_EQ(stored(), "1one 2two ");
}

TEST_F(TypedTransaction, RefusesAStatementThatAZeroByteWouldCut) {
    Transaction work(connection());
    const std::string_view statement("delete from T \0 where A = 1", 27);
    EXPECT_EQ(error_of([&] { work.execute(statement); }).message(), "A statement has a zero byte");
    work.commit();
    EXPECT_EQ(stored(), "1one 2two ");
}

TEST_F(TypedTransaction, IsRolledBackByAnException) {
    EXPECT_THROW(
        {
            Transaction work(connection());
            work.execute("delete from T");
            throw std::runtime_error("something else");
        },
        std::runtime_error);
    EXPECT_EQ(stored(), "1one 2two ");
}

TEST_F(TypedTransaction, KeepsWhatIsCommitted) {
    Transaction work(connection());
    work.execute("insert into T values (?, ?)", 3, "three");
    EXPECT_TRUE(work.active());
    EXPECT_EQ(stored(), "1one 2two ");
    work.commit();
    EXPECT_FALSE(work.active());
    EXPECT_EQ(stored(), "1one 2two 3three ");
}

TEST_F(TypedTransaction, UndoesWhatIsRolledBack) {
    Transaction work(connection());
    work.execute("delete from T");
    work.roll_back();
    EXPECT_FALSE(work.active());
    EXPECT_EQ(stored(), "1one 2two ");
}

TEST_F(TypedTransaction, TellsHowManyRowsWereChanged) {
    Transaction work(connection());
    EXPECT_EQ(work.execute("update T set B = 'x'"), 2);
    EXPECT_EQ(work.execute("update T set B = 'x' where A > 100"), 0);
    EXPECT_EQ(work.execute("insert into T select A + 10, B from T"), 2);
    EXPECT_EQ(work.execute("delete from T where A = ?", 11), 1);
    EXPECT_EQ(work.execute("create table U (A integer)"), 0);
    EXPECT_EQ(work.execute("execute block as begin update T set B = 'y'; end"), 3);
}

TEST_F(TypedTransaction, AsksForTheNumberOfRowsOnlyWhenItIsWanted) {
    Transaction work(connection());
    const FaultyClient client;
    Statement update = work.prepare("execute block (A integer = ?) as begin update T set B = :A; end");
    EXPECT_EQ(update.execute(1), 2);
    EXPECT_EQ(client.count(ClientCall::affected_records), 1);
    update.execute_uncounted(2);
    EXPECT_EQ(client.count(ClientCall::affected_records), 1);
    EXPECT_EQ(work.one<std::string>("select max(B) from T"), "2");
}

TEST_F(TypedTransaction, CountsTheRowsOfAStatementOnlyAndNotThoseOfItsTriggers) {
    execute("create table LOG_ (A integer)");
    execute(
        "create trigger NOTED for T after insert or update as begin insert into LOG_ values (new.A); "
        "insert into LOG_ values (new.A); end");
    Transaction work(connection());
    EXPECT_EQ(work.execute("update T set B = 'x'"), 2);
    EXPECT_EQ(work.execute("update or insert into T values (?, ?) matching (A)", 2, "y"), 1);
    EXPECT_EQ(work.execute("update or insert into T values (?, ?) matching (A)", 3, "y"), 1);
    EXPECT_EQ(work.execute("merge into T using T as S on T.A = S.A + 1 when matched then update set B = 'm' "
                           "when not matched then insert values (S.A + 1, 'n')"),
              3);
    EXPECT_EQ(work.one<int>("select count(*) from LOG_"), 2 * (2 + 1 + 1 + 3));
}

TEST_F(TypedTransaction, GoesOnAfterAStatementThatTheDatabaseRefuses) {
    Transaction work(connection());
    work.execute("insert into T values (3, 'three')");
    EXPECT_EQ(state_of([&] { work.execute("insert into T values (?, ?)", 3, "again"); }), "23000");
    const auto error = error_of([&] { work.execute("insert into T values (?, 'none')", std::nullopt); });
    EXPECT_EQ(error.sqlstate(), "23000");
    EXPECT_NE(error.message().find("\"T\".\"A\""), std::string::npos) << error.message();
    EXPECT_EQ(error.statement(), "insert into T values (?, 'none')");
    work.commit();
    EXPECT_EQ(stored(), "1one 2two 3three ");
}

TEST_F(TypedTransaction, RunsAStatementOften) {
    Transaction work(connection());
    auto add = work.prepare("insert into T values (?, ?)");
    EXPECT_EQ(add.parameter_count(), 2u);
    EXPECT_TRUE(add.columns().empty());
    for (int i = 10; i < 110; ++i) EXPECT_EQ(add.execute(i, "row " + std::to_string(i)), 1);
    EXPECT_EQ(work.one<int>("select count(*) from T where B = 'row ' || A"), 100);
}

TEST_F(TypedTransaction, GivesWhatAStatementReturns) {
    Transaction work(connection());
    EXPECT_EQ(work.one<int>("insert into T values (3, 'x') returning A"), 3);
    const auto changed =
        work.maybe_one<int, std::string>("update T set B = 'z' where A = ? returning A, B", 3);
    ASSERT_TRUE(changed);
    EXPECT_EQ(std::get<1>(*changed), "z");
    const auto none = work.maybe_one<int, std::string>("update T set B = 'z' where A = 7 returning A, B");
    EXPECT_FALSE(none);
    EXPECT_EQ(state_of([&] { (void)work.one<int>("delete from T where A = 7 returning A"); }), "02000");
}

TEST_F(TypedTransaction, GivesTheRowOfAProcedureThatReturnsNull) {
    execute("create procedure P returns (X integer) as begin X = null; end");
    Transaction work(connection(), Access::read_only);
    EXPECT_EQ(work.one<std::optional<int>>(" /* a comment */ execute procedure P"), std::nullopt);
    EXPECT_EQ(work.one<int>("execute block returns (X integer) as begin X = 5; suspend; end"), 5);
}

TEST_F(TypedTransaction, SeesWhatWasCommittedWhenItBegan) {
    Transaction work(connection(), Access::read_only);
    EXPECT_EQ(work.one<int>("select count(*) from T"), 2);
    execute("insert into T values (3, 'three')");
    EXPECT_EQ(work.one<int>("select count(*) from T"), 2);
    EXPECT_EQ(Transaction(connection(), Access::read_only).one<int>("select count(*) from T"), 3);
}

TEST_F(TypedTransaction, ThatReadsWhatIsCommittedSeesItAtItsNextStatement) {
    for (const Access access : {Access::read_only, Access::read_write}) {
        Transaction work(connection(), access, Isolation::read_committed);
        auto count = work.prepare("select count(*) from T");
        const int before = count.one<int>();
        execute("insert into T select max(A) + 1, 'more' from T");
        EXPECT_EQ(count.one<int>(), before + 1);
    }
}

TEST_F(TypedTransaction, ThatReadsWhatIsCommittedChangesWhatAnotherHasChangedAndCommitted) {
    Transaction work(connection(), Access::read_write, Isolation::read_committed);
    EXPECT_EQ(work.one<int>("select count(*) from T"), 2);
    execute("update T set B = 'other' where A = 1");
    EXPECT_EQ(work.execute("update T set B = B || '!' where A = 1"), 1);
    work.commit();
    EXPECT_EQ(stored(), "1other! 2two ");
}

// In one process what would be waited for is thrown. From Firebird 4 on a statement reads what was committed
// when it began, and only its change waits.
TEST_F(TypedTransaction, ThatReadsTheNewestWaitsForWhatAnotherHasChangedBeforeItReadsThat) {
    Transaction other(connection());
    other.execute("update T set B = 'other' where A = 1");
    Transaction work(connection(), Access::read_write, Isolation::newest);
    const std::string version =
        rows("select rdb$get_context('SYSTEM', 'ENGINE_VERSION') from rdb$database")[0][0];
    if (version.starts_with("3.")) {
        EXPECT_EQ(error_of([&] { work.one<int>("select count(*) from T"); }).sqlstate(), "40001");
    }
    EXPECT_EQ(error_of([&] { work.execute("update T set B = B || '!' where A = 1"); }).sqlstate(), "40001");
    other.commit();
    EXPECT_EQ(work.execute("update T set B = B || '!' where A = 1"), 1);
    work.commit();
    EXPECT_EQ(stored(), "1other! 2two ");
}

TEST_F(TypedTransaction, ThatOnlyReadsWhatIsCommittedHoldsNoOldVersionsOfRows) {
    const auto oldest = [this] {
        return std::stoll(rows("select mon$oldest_active from mon$database")[0][0]);
    };
    const auto moves_on = [&] {
        const auto before = oldest();
        for (int i = 0; i < 3; ++i) execute("update T set B = 'x'");
        return oldest() > before;
    };
    Transaction work(connection(), Access::read_only, Isolation::read_committed);
    EXPECT_EQ(work.one<int>("select count(*) from T"), 2);
    EXPECT_TRUE(moves_on());
    Transaction holding(connection(), Access::read_only);
    EXPECT_EQ(holding.one<int>("select count(*) from T"), 2);
    (void)moves_on();
    EXPECT_FALSE(moves_on());
}

TEST_F(TypedTransaction, ThatOnlyReadsRefusesToChange) {
    Transaction work(connection(), Access::read_only);
    EXPECT_EQ(error_of([&] { work.execute("delete from T"); }).sqlcode(), -817);
}

TEST_F(TypedTransaction, DoesNotWaitForAnotherOfTheSameProcess) {
    Transaction first(connection());
    first.execute("update T set B = 'a' where A = 1");
    Transaction second(connection());
    EXPECT_EQ(state_of([&] { second.execute("update T set B = 'b' where A = 1"); }), "40001");
    EXPECT_EQ(second.execute("update T set B = 'b' where A = 2"), 1);
    first.commit();
    second.commit();
    EXPECT_EQ(stored(), "1a 2b ");
}

TEST_F(TypedTransaction, IsNotWaitedForByTheMethodsOfTheObject) {
    Transaction work(connection());
    work.execute("update T set B = 'a' where A = 1");
    EXPECT_NE(show(call("executeupdate", "update T set B = 'b' where A = 1")), "\"\"");
    EXPECT_EQ(show(call("executeupdate", "update T set B = 'b' where A = 2")), "\"\"");
    work.commit();
    EXPECT_EQ(stored(), "1a 2b ");
}

TEST_F(TypedTransaction, HoldsItsCommitBackFromStatements) {
    Transaction work(connection());
    for (const char* statement : {"commit", "rollback", "set transaction"}) {
        EXPECT_EQ(state_of([&] { work.execute(statement); }), "0A000") << statement;
    }
    EXPECT_TRUE(work.active());
}

TEST_F(TypedTransaction, NeedsAnObjectThatIsAttached) {
    zmFBConn object;
    const auto error = error_of([&] { Transaction work(object); });
    EXPECT_EQ(error.sqlstate(), "08003");
    EXPECT_EQ(error.message(), "The object is not attached to a database");
    object.set("bconn", true);
    object.set("dbhndl", 12345);
    EXPECT_EQ(state_of([&] { Transaction work(object); }), "08003");
    object.set("bconn", false);
}

TEST_F(TypedTransaction, MayBeTheBatchOfTheObject) {
    EXPECT_EQ(state_of([&] { (void)Transaction::batch(connection()); }), "25000");
    call("starttransaction");
    call("cachedupdate", "insert into T values (3, 'three')");
    {
        Transaction batch = Transaction::batch(connection());
        EXPECT_EQ(batch.one<int>("select count(*) from T"), 3);
        batch.execute("insert into T values (?, ?)", 4, "four");
    }
    EXPECT_EQ(show(call("cachedupdate", "update T set B = 'new' where A = 4")), "\"\"");
    EXPECT_EQ(stored(), "1one 2two ");
    call("commitchanges");
    EXPECT_EQ(stored(), "1one 2two 3three 4new ");
    EXPECT_EQ(state_of([&] { (void)Transaction::batch(connection()); }), "25000");
}

TEST_F(TypedTransaction, EndsTheBatchOfTheObjectInBothWays) {
    for (const bool commits : {true, false}) {
        call("starttransaction");
        Transaction batch = Transaction::batch(connection());
        call("cachedupdate", "update T set B = 'x' where A = 1");
        commits ? batch.commit() : batch.roll_back();
        EXPECT_EQ(stored(), "1x 2two ");
        EXPECT_TRUE(show(call("cachedupdate", "update T set B = 'y'")).starts_with("\"[ERROR]"));
        call("commitchanges");
        EXPECT_EQ(stored(), "1x 2two ");
        execute("update T set B = 'x' where A = 1");
    }
}

TEST_F(TypedTransaction, OfTheBatchIsThatOfItsObjectOnly) {
    zmFBConn other = connect();
    call("starttransaction");
    EXPECT_EQ(state_of([&] { (void)Transaction::batch(other); }), "25000");
    call("starttransaction");
    EXPECT_TRUE(Transaction::batch(connection()).active());
    call("commitchanges");
}

TEST_F(TypedTransaction, IsNotBegunNorGoneOnWithWhileTheProcessIsCancelled) {
    Transaction work(connection());
    auto statement = work.prepare("select A from T order by A");
    auto rows = statement.query<int>();
    auto at = rows.begin();
    cancel();
    EXPECT_EQ(error_of([&] { Transaction another(connection()); }).message(), "the operation was cancelled");
    EXPECT_EQ(state_of([&] { ++at; }), "HY008");
    EXPECT_EQ(state_of([&] { (void)statement.rows(); }), "HY008");
    EXPECT_EQ(state_of([&] { work.prepare("select 1 from T"); }), "HY008");
    EXPECT_EQ(state_of([&] { work.commit(); }), "HY008");
    resume();
    EXPECT_EQ(statement.query<int>().begin() == std::default_sentinel, false);
    work.roll_back();
}

TEST_F(TypedTransaction, GoesOnWhenAStatementOfItIsCancelled) {
    Transaction work(connection());
    work.execute("insert into T values (3, 'three')");
    std::atomic<bool> ended = false;
    std::thread other([&] {
        for (std::this_thread::sleep_for(100ms); !ended; std::this_thread::sleep_for(50ms)) cancel();
    });
    constexpr const char* endless = "select count(*) from rdb$fields, rdb$fields, rdb$fields, rdb$fields";
    const auto error = error_of([&] { (void)work.one<int>(endless); });
    ended = true;
    other.join();
    resume();
    EXPECT_EQ(error.sqlstate(), "HY008");
    EXPECT_EQ(error.message(), "operation was cancelled");
    work.commit();
    EXPECT_EQ(stored(), "1one 2two 3three ");
}

TEST_F(TypedTransaction, IsNotAskedAgainAfterAnErrorOfTheDatabaseFile) {
    Transaction work(connection());
    FaultyClient client;
    const std::string& name = database();
    client.fail_on_file(ClientCall::execute, names_a_server(name) ? name.substr(name.find(':') + 1) : name);
    EXPECT_EQ(error_of([&] { work.execute("delete from T"); }).sqlcode(), -902);
    EXPECT_EQ(state_of([&] { work.execute("delete from T"); }), "08006");
    EXPECT_EQ(state_of([&] { Transaction another(connection()); }), "08006");
    EXPECT_EQ(client.count(ClientCall::execute), 1);
}

// A client library that has calls by handle only.
class OldClient : public sql::ObjectClient {
  public:
    OldClient() : before_(sql::set_object_client(this)) {}
    ~OldClient() override { sql::set_object_client(before_); }
    bool available() override { return false; }

  private:
    sql::ObjectClient* before_;
};

TEST_F(TypedTransaction, SaysThatItNeedsANewerClientLibraryAndTheMethodsGoOn) {
    const OldClient client;
    zmFBConn object = connect();
    EXPECT_TRUE(object.isconnected());
    EXPECT_EQ(show(object.call("executequery", "select A from T where A = 1")[2]), R"({"1"})");
    EXPECT_EQ(show(object.call("executeupdate", "update T set B = 'x' where A = 1")), "\"\"");
    const auto error = error_of([&] { Transaction work(object); });
    EXPECT_EQ(error.sqlstate(), "0A000");
    EXPECT_NE(error.message().find(" has no object interface"), std::string::npos) << error.message();
}

}  // namespace
}  // namespace zmfb::test
