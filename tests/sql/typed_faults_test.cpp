// Every call of the client that transactions, statements, rows and blobs make, made to fail at each of its
// occurrences: it is thrown, nothing is left behind, and the same goes well the next time.
#include <fmt/format.h>

#include <algorithm>

#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/database.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

using enum ClientCall;

// A piece of work that makes calls of one kind; its answer tells whether all went well.
struct Scenario {
    const char* name;
    std::string (*act)(zmFBConn& connection);
    const char* answer;
    std::vector<ClientCall> passed_over;  // what ends or gives back what is of no more use: nobody is told
};

std::string read_rows(zmFBConn& connection) {
    Transaction work(connection, Access::read_only);
    std::string seen;
    for (auto& [a, u] : work.query<int, std::string>("select A, U from T where A >= ? order by A", 1))
        seen += std::to_string(a) + u;
    return seen;
}

std::string read_fields(zmFBConn& connection) {
    Transaction work(connection, Access::read_only);
    std::string seen;
    for (const auto& row : work.rows("select A, W from T order by A"))
        seen += row["W"].text().value_or("NULL");
    return seen;
}

std::string change_rows(zmFBConn& connection) {
    Transaction work(connection);
    auto update = work.prepare("update T set U = ? where A = ?");
    const auto first = update.execute("one", 1), second = update.execute("two", 2);
    const int returned = work.one<int>("update T set A = A where A = 1 returning A");
    const bool none = !work.maybe_one<int>("update T set A = A where A = 7 returning A");
    work.commit();
    return fmt::format("{} {} {} {}", first, second, returned, none);
}

std::string roll_back(zmFBConn& connection) {
    Transaction work(connection);
    work.execute("delete from T");
    work.roll_back();
    return "rolled back";
}

std::string write_blobs(zmFBConn& connection) {
    Transaction work(connection);
    BlobWriter writer(work);
    writer.write("streamed");
    work.execute("update T set B = ?, X = ? where A = 1", writer, "a text");
    work.commit();
    return "written";
}

std::string read_blobs(zmFBConn& connection) {
    Transaction work(connection, Access::read_only);
    std::string seen;
    for (auto& [x, w, b] :
         work.query<std::string, std::string, BlobReader>("select X, W, B from T where A = 3")) {
        seen += x + w + std::to_string(b.size());
        for (std::string_view piece; !(piece = b.read()).empty();) seen += piece;
    }
    return seen;
}

const Scenario scenarios[] = {
    {"Rows", read_rows, "1one2two3three", {release, close, rollback_transaction}},
    {"Fields", read_fields, "NULLNULLw", {release, close, close_blob, rollback_transaction}},
    {"Changes", change_rows, "1 1 1 true", {release, close}},  // rows come from a cursor since Firebird 5
    {"RollBack", roll_back, "rolled back", {release}},
    {"WritingBlobs", write_blobs, "written", {release}},
    {"ReadingBlobs", read_blobs, "xw3abc", {release, close, close_blob, rollback_transaction}},
};

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

class TypedFaults : public Database, public ::testing::WithParamInterface<Scenario> {
  protected:
    TypedFaults() {
        execute(
            "create table T (A integer, U varchar(5) character set utf8, X blob sub_type text, "
            "W blob sub_type text character set win1252, B blob)");
        for (const char* row : {"(1, 'one', null, null, null)", "(2, 'two', null, null, null)",
                                "(3, 'three', 'x', 'w', 'abc')"})
            execute(std::string("insert into T values ") + row);
        Transaction(connection()).prepare("select A from T");  // what is asked once of an attachment
    }

    // The answer of the work, or what it threw.
    std::string outcome() {
        try {
            return GetParam().act(connection());
        } catch (const SqlError& error) {
            EXPECT_EQ(error.sqlcode(), -902);
            EXPECT_EQ(error.message().substr(0, 9), "I/O error");
            EXPECT_EQ(last_engine_message(), error.message());
            return "thrown";
        }
    }
};

using TypedFaultsAtFirst = Database;

TEST_F(TypedFaultsAtFirst, OfAskingWhatTheEngineKnowsAreThrownAndItIsAskedAgain) {
    zmFBConn& object = connection();
    FaultyClient client;
    client.fail(ClientCall::database_info);
    EXPECT_THROW(Transaction(object).prepare("select 1 from rdb$database"), SqlError);
    EXPECT_TRUE(client.all_failed());
    Transaction(object).prepare("select 1 from rdb$database");
    EXPECT_EQ(client.count(ClientCall::database_info), 2);
    EXPECT_EQ(client.open_transactions(), 0);
}

TEST_P(TypedFaults, AreThrownAtEveryOccurrenceAndLeaveNothing) {
    std::vector<int> counts;
    {
        const FaultyClient client;
        ASSERT_EQ(outcome(), GetParam().answer);
        for (std::size_t call = 0; call < client_call_count; ++call)
            counts.push_back(client.count(static_cast<ClientCall>(call)));
        EXPECT_EQ(client.open_transactions(), 0);
    }
    const auto& passed_over = GetParam().passed_over;
    int failures = 0;
    for (std::size_t i = 0; i < client_call_count; ++i) {
        const auto call = static_cast<ClientCall>(i);
        for (int nth = 1; nth <= counts[i]; ++nth, ++failures) {
            SCOPED_TRACE(name_of(call) + " " + std::to_string(nth));
            {
                FaultyClient client;
                client.fail(call, nth);
                const bool told = std::ranges::find(passed_over, call) == passed_over.end();
                EXPECT_EQ(outcome(), told ? "thrown" : GetParam().answer);
                EXPECT_TRUE(client.all_failed());
            }
            EXPECT_EQ(outcome(), GetParam().answer) << "the next time";
        }
    }
    EXPECT_GT(failures, 5);
}

INSTANTIATE_TEST_SUITE_P(Works, TypedFaults, ::testing::ValuesIn(scenarios),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zmfb::test
