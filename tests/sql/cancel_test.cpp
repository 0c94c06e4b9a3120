// Statements ended from another thread, and attachments that are not asked again.
#include "zmfbconn/cancel.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <semaphore>
#include <thread>

#include "tests/support/database.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::Value;

class Cancelling : public Database {
  protected:
    Cancelling() {
        execute("create table T (A integer)");
        connection();
    }
    ~Cancelling() override { resume(); }
};

// Says when a call of one kind is about to be made.
class Announcing : public FaultyClient {
  public:
    explicit Announcing(ClientCall call) : call_(call) {}
    void wait() { begun_.acquire(); }

  private:
    void asked(ClientCall call) override {
        if (call == call_) begun_.release();
    }
    ClientCall call_;
    std::counting_semaphore<> begun_{0};
};

// Calls cancel() again and again, from when the client makes that call on, for as long as it lives.
class Canceller {
  public:
    explicit Canceller(ClientCall call)
        : client_(call), thread_([this] {
              client_.wait();
              for (; !done_; std::this_thread::sleep_for(std::chrono::milliseconds(50))) cancel();
          }) {}
    ~Canceller() {
        done_ = true;
        thread_.join();
    }

  private:
    std::atomic<bool> done_ = false;
    Announcing client_;
    std::thread thread_;
};

TEST_F(Cancelling, AStatementThatRunsFailsAndIsTakenBack) {
    {
        const Canceller canceller(ClientCall::execute_immediate);
        const Value answer = call("executeupdate",
                                  "execute block as declare n bigint = 0; begin insert into T values (1); "
                                  "while (n >= 0) do n = mod(n + 1, 1000); end");
        EXPECT_TRUE(answer.text().starts_with("[ERROR] SQLCODE=-901 (")) << answer.text();
        EXPECT_EQ(last_engine_message(), "operation was cancelled");
    }
    resume();
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
    EXPECT_EQ(show(call("executeupdate", "insert into T values (2)")), "\"\"");
}

TEST_F(Cancelling, AQueryThatReadsWithoutAnEndStops) {
    const Canceller canceller(ClientCall::fetch);
    const auto read = [this] {
        call("executequery",
             "select 1 from rdb$fields a, rdb$fields b, rdb$fields c, rdb$fields d, rdb$fields e");
    };
    try {
        read();  // a fetch that was under way has failed
        EXPECT_EQ(last_engine_message(), "operation was cancelled");
    } catch (const Cancelled&) {  // it was between two
    }
}

TEST_F(Cancelling, NothingIsBegunUntilItIsResumed) {
    const std::function<void()> beginnings[] = {
        [this] { call("executeupdate", "insert into T values (1)"); },
        [this] { call("executequery", "select A from T"); },
        [this] { call("starttransaction"); },
        [this] { call("cachedupdate", "insert into T values (1)"); },
        [this] { call("commitchanges"); },
        [this] { connect(); },
        [this] { (void)create_database(file("new.fdb"), "SYSDBA", ""); },
    };
    EXPECT_TRUE(cancel());
    for (const auto& begin : beginnings) EXPECT_THROW(begin(), Cancelled);
    EXPECT_FALSE(std::filesystem::exists(file("new.fdb")));
    resume();
    EXPECT_EQ(show(call("executeupdate", "insert into T values (1)")), "\"\"");
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"1"}}));
}

TEST_F(Cancelling, ABatchThatWasOpenIsNotCommitted) {
    call("starttransaction");
    call("cachedupdate", "insert into T values (1)");
    cancel();
    EXPECT_THROW(call("commitchanges"), Cancelled);
    disconnect();
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"0"}}));
}

TEST_F(Cancelling, WithoutAnAttachmentThereIsNothingToCancel) {
    disconnect();
    EXPECT_FALSE(cancel());
}

class GivenUp : public Cancelling {
  protected:
    // The path of the database as the engine names it.
    [[nodiscard]] std::string database_file() const {
        const std::string& name = database();
        return names_a_server(name) ? name.substr(name.find(':') + 1) : name;
    }
    FaultyClient client;
};

TEST_F(GivenUp, AnAttachmentIsNotAskedAgainAfterAnErrorOfItsOwnFile) {
    client.fail_on_file(ClientCall::execute_immediate, database_file());
    call("executeupdate", "insert into T values (1)");
    const std::string first = last_engine_message();
    const int started = client.count(ClientCall::start_transaction);
    const int made = client.count(ClientCall::execute_immediate);
    const Value answer = call("executeupdate", "insert into T values (1)");
    EXPECT_TRUE(answer.text().starts_with("[ERROR] SQLCODE=-902 (")) << answer.text();
    EXPECT_NE(last_engine_message().find(first), std::string::npos) << last_engine_message();
    EXPECT_EQ(show(call("executequery", "select A from T")), "{}");
    call("starttransaction");
    EXPECT_FALSE(call("cachedupdate", "insert into T values (1)").string().empty());
    call("commitchanges");
    EXPECT_EQ(client.count(ClientCall::start_transaction), started);
    EXPECT_EQ(client.count(ClientCall::execute_immediate), made);
    EXPECT_EQ(client.count(ClientCall::commit_transaction), 0);
}

TEST_F(GivenUp, ANewAttachmentIsAsGoodAsAny) {
    client.fail_on_file(ClientCall::execute_immediate, database_file());
    call("executeupdate", "insert into T values (1)");
    disconnect();
    EXPECT_EQ(show(call("executeupdate", "insert into T values (1)")), "\"\"");
}

TEST_F(GivenUp, AnErrorOfAnotherFileChangesNothing) {
    client.fail_on_file(ClientCall::execute_immediate, write_file("external.dat", ""));
    EXPECT_FALSE(call("executeupdate", "insert into T values (1)").string().empty());
    EXPECT_EQ(show(call("executeupdate", "insert into T values (1)")), "\"\"");
}

}  // namespace
}  // namespace zmfb::test
