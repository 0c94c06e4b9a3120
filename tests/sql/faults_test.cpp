// Every call of the client library made to fail once, in every method that makes it: the described outcome,
// no transaction left open, and the next call works.
#include "host/error.h"
#include "sql/attach.h"
#include "sql/state.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using enum ClientCall;
using host::Value;
using Entries = std::vector<LogEntry>;

std::string error_text() { return "[ERROR] SQLCODE=-902 (" + FaultyClient::io_error_text() + ")"; }

class Faults : public Database {
  protected:
    Faults() {
        execute("create table T (A integer)");
        for (const char* a : {"1", "2", "3"}) execute(std::string("insert into T values (") + a + ")");
        connection();
        log_at(1);
        client_.emplace();
    }
    ~Faults() override { client_.reset(); }

    FaultyClient& client() { return *client_; }

    void expect_nothing_left_and_the_next_call_works() {
        EXPECT_TRUE(client().all_failed());
        EXPECT_EQ(client().open_transactions(), 0);
        EXPECT_EQ(sql::state().batch, isc_tr_handle());
        client_.emplace();
        EXPECT_EQ(show(call("executequery", "select A from T where A = 1")),
                  R"({{{"A", "N", 4, 0}}, {"1"}})");
        EXPECT_EQ(show(call("executeupdate", "update T set A = 1 where A = 1")), "\"\"");
        EXPECT_EQ(client().open_transactions(), 0);
    }

  private:
    std::optional<FaultyClient> client_;
};

struct Fault {
    ClientCall call;
    int nth;
    std::string_view result;
};

std::string name_of_fault(const ::testing::TestParamInfo<Fault>& info) {
    return name_of(info.param.call) + "_" + std::to_string(info.param.nth);
}

class QueryFaults : public Faults, public ::testing::WithParamInterface<Fault> {};

TEST_P(QueryFaults, GiveWhatThereWasAndOneLine) {
    client().fail(GetParam().call, GetParam().nth);
    EXPECT_EQ(show(call("internalselect", "select A, A from T order by 1")), GetParam().result);
    EXPECT_EQ(log_lines(), (Entries{{1, error_text()}}));
    EXPECT_EQ(last_engine_message().substr(0, 9), "I/O error") << last_engine_message();
    EXPECT_EQ(client().count(rollback_transaction), GetParam().call == start_transaction ? 0 : 1);
    expect_nothing_left_and_the_next_call_works();
}

constexpr std::string_view header = R"({{{"A", "N", 4, 0}, {"A", "N", 4, 0}}})";
constexpr std::string_view header_and_two =
    R"({{{"A", "N", 4, 0}, {"A", "N", 4, 0}}, {"1", "1"}, {"2", "2"}})";
constexpr std::string_view header_and_three =
    R"({{{"A", "N", 4, 0}, {"A", "N", 4, 0}}, {"1", "1"}, {"2", "2"}, {"3", "3"}})";

INSTANTIATE_TEST_SUITE_P(Calls, QueryFaults,
                         ::testing::Values(Fault{start_transaction, 1, "{}"}, Fault{prepare, 1, "{}"},
                                           Fault{describe, 1, "{}"}, Fault{describe, 2, "{}"},
                                           Fault{declare, 1, header}, Fault{open, 1, header},
                                           Fault{fetch, 1, header}, Fault{fetch, 3, header_and_two},
                                           Fault{fetch, 4, header_and_three},
                                           Fault{close, 1, header_and_three},
                                           Fault{commit_transaction, 1, header_and_three}),
                         name_of_fault);

class UpdateFaults : public Faults, public ::testing::WithParamInterface<Fault> {};

TEST_P(UpdateFaults, GiveTheErrorTextAndChangeNothing) {
    client().fail(GetParam().call, GetParam().nth);
    EXPECT_EQ(call("executeupdate", "delete from T").string(), error_text());
    EXPECT_EQ(log_lines(), (Entries{{1, error_text()}}));
    EXPECT_EQ(client().count(rollback_transaction), GetParam().call == start_transaction ? 0 : 1);
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"3"}}));
    expect_nothing_left_and_the_next_call_works();
}

INSTANTIATE_TEST_SUITE_P(Calls, UpdateFaults,
                         ::testing::Values(Fault{start_transaction, 1, ""}, Fault{execute_immediate, 1, ""},
                                           Fault{commit_transaction, 1, ""}),
                         name_of_fault);

TEST_F(Faults, RollbackThatFailsTooLeavesTheFirstFailureReported) {
    client().fail(execute_immediate, 1, isc_table_name);
    client().fail(rollback_transaction);
    const std::string text = call("executeupdate", "delete from T").string();
    EXPECT_TRUE(text.starts_with("[ERROR] SQLCODE=-")) << text;
    EXPECT_EQ(log_lines(), (Entries{{1, text}}));
    EXPECT_TRUE(client().all_failed());
    EXPECT_EQ(show(call("executequery", "select A from T where A = 1")), R"({{{"A", "N", 4, 0}}, {"1"}})");
}

TEST_F(Faults, RollbackOfAQueryThatFailsTooLeavesTheNextOneWorking) {
    client().fail(fetch, 2);
    client().fail(rollback_transaction);
    EXPECT_EQ(show(call("executequery", "select A from T order by 1")), R"({{{"A", "N", 4, 0}}, {"1"}})");
    EXPECT_EQ(log_lines(), (Entries{{1, error_text()}}));
    EXPECT_EQ(show(call("executequery", "select A from T where A = 1")), R"({{{"A", "N", 4, 0}}, {"1"}})");
}

TEST_F(Faults, BatchThatCannotStartIsSilentAndItsStatementsFail) {
    client().fail(start_transaction);
    EXPECT_EQ(show(call("starttransaction")), "NIL");
    EXPECT_EQ(log_text(), "");
    EXPECT_TRUE(call("cachedupdate", "delete from T").string().starts_with("[ERROR] SQLCODE=-901 ("));
    EXPECT_EQ(show(call("commitchanges")), "NIL");
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"3"}}));
    expect_nothing_left_and_the_next_call_works();
}

TEST_F(Faults, StatementOfABatchThatFailsLeavesTheBatchOpen) {
    call("starttransaction");
    client().fail(execute_immediate);
    EXPECT_EQ(call("cachedupdate", "delete from T where A = 1").string(), error_text());
    EXPECT_EQ(log_lines(), (Entries{{1, error_text()}}));
    EXPECT_EQ(client().count(rollback_transaction), 0);
    EXPECT_EQ(show(call("cachedupdate", "delete from T where A = 2")), "\"\"");
    call("commitchanges");
    EXPECT_EQ(rows("select A from T order by A"), (Rows{{"1"}, {"3"}}));
    expect_nothing_left_and_the_next_call_works();
}

TEST_F(Faults, BatchWhoseCommitFailsIsSilentAndGone) {
    call("starttransaction");
    call("cachedupdate", "delete from T");
    client().fail(commit_transaction);
    EXPECT_EQ(show(call("commitchanges")), "NIL");
    EXPECT_EQ(log_text(), "");
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"3"}}));
    expect_nothing_left_and_the_next_call_works();
    call("starttransaction");
    EXPECT_EQ(show(call("cachedupdate", "delete from T")), "\"\"");
    call("commitchanges");
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
}

TEST_F(Faults, PositiveCodeOfTheCommitCountsAsAFailureOfAStatement) {
    class Warning : public sql::Client {
      public:
        Warning() : before_(sql::set_client(this)) {}
        ~Warning() override { sql::set_client(before_); }
        ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override {
            committed_ = true;
            return Client::commit_transaction(status, transaction);
        }
        int sqlcode(const ISC_STATUS* status) override { return committed_ ? 100 : Client::sqlcode(status); }

      private:
        sql::Client* before_;
        bool committed_ = false;
    };
    const std::string text =
        "[ERROR] SQLCODE=100 (Row not found for fetch, update or delete, or the result of a query is an "
        "empty table.)";
    {
        const Warning client;
        EXPECT_EQ(call("executeupdate", "delete from T where A = 1").string(), text);
    }
    EXPECT_EQ(log_lines(), (Entries{{1, text}}));
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"2"}}));
}

TEST_F(Faults, AttachThatFailsGivesCodeAndTextAndNoHandle) {
    client().fail(attach_database);
    const sql::Attachment made = sql::attach(database(), sysdba, sysdba_password, "");
    EXPECT_EQ(made.status.sqlcode(), -902);
    EXPECT_EQ(made.message, FaultyClient::io_error_text());
    EXPECT_EQ(made.handle, 0);
    EXPECT_EQ(made.slot_address, &sql::state().slot);
    EXPECT_EQ(sql::state().slot, isc_db_handle());
    EXPECT_EQ(client().open_blocks(), 0);
    expect_nothing_left_and_the_next_call_works();
}

TEST_F(Faults, AttachGivesItsBlockBackAndLeavesTheSlotAtZero) {
    const sql::Attachment made = sql::attach(database(), sysdba, sysdba_password, "");
    EXPECT_EQ(made.status.sqlcode(), 0);
    EXPECT_EQ(made.message, "");
    EXPECT_GT(made.handle, 0);
    EXPECT_EQ(sql::state().slot, isc_db_handle());
    EXPECT_EQ(client().open_blocks(), 0);
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), 0);
}

TEST_F(Faults, DetachThatFailsGivesItsCode) {
    const sql::Attachment made = sql::attach(database(), sysdba, sysdba_password, "");
    client().fail(detach_database);
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), -902);
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), 0);
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), -904);
    expect_nothing_left_and_the_next_call_works();
}

TEST_F(Faults, DetachThatFailsIsNotRaisedAndTheObjectIsDisconnected) {
    zmFBConn object = connect();
    clear_log();
    client().fail(detach_database);
    object.call("disconnect");
    EXPECT_FALSE(object.isconnected());
    EXPECT_EQ(log_lines(), (Entries{{0, "[EXIT] Disconnected from: " + database()}}));
    EXPECT_EQ(sql::detach(object.get("dbhndl").number()).sqlcode(), 0);
}

TEST_F(Faults, ObjectWhoseAttachFailsIsUnattached) {
    client().fail(attach_database);
    zmFBConn object(database(), sysdba, sysdba_password);
    EXPECT_FALSE(object.isconnected());
    EXPECT_EQ(show(object.get("dbhndl")), "0");
    EXPECT_EQ(log_lines(), (Entries{{0, error_text()}}));
    EXPECT_EQ(show(object.call("executequery", "select A from T")), "{}");
    expect_nothing_left_and_the_next_call_works();
}

TEST_F(Faults, ExceptionOutOfAnErrorBlockLeavesNoTransactionOpen) {
    {
        const host::ThrowingErrors thrown;
        EXPECT_THROW(call("internalselect", 7), host::RaisedError);
        EXPECT_THROW(call("executeupdate", 7), host::RaisedError);
    }
    expect_nothing_left_and_the_next_call_works();
}

// A client that throws stands for memory that runs out at any point of a call.
class ThrowingClient : public FaultyClient {
  public:
    explicit ThrowingClient(int rows) : rows_(rows) {}
    ISC_STATUS fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) override {
        if (rows_-- == 0) throw std::bad_alloc();
        return FaultyClient::fetch(status, cursor, output);
    }

  private:
    int rows_;
};

TEST_F(Faults, MemoryThatRunsOutDuringAFetchLeavesNoTransactionOpen) {
    for (const int fetched : {0, 1, 3}) {
        ThrowingClient memory(fetched);
        EXPECT_THROW(call("internalselect", "select A, A from T"), std::bad_alloc);
        EXPECT_EQ(memory.open_transactions(), 0);
    }
    expect_nothing_left_and_the_next_call_works();
}

}  // namespace
}  // namespace zmfb::test
