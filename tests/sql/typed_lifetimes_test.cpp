// How long transactions, and what belongs to them, can be used: in whatever order they go.
#include <filesystem>
#include <functional>
#include <regex>

#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/server_setup.h"
#include "tests/transfer/open_files.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

class TypedLifetime : public Database {
  protected:
    TypedLifetime() {
        execute("create table T (A integer not null primary key, B varchar(10), C blob sub_type text)");
        execute("insert into T values (1, 'one', 'first')");
        execute("insert into T values (2, 'two', 'second')");
    }
};

// What belongs to a transaction, each of it begun.
struct Begun {
    explicit Begun(Transaction& work)
        : statement(work.prepare("select A, B from T order by A")),
          tuples(work.query<int, std::string>("select A, B from T order by A")),
          tuple(tuples.begin()),
          named(work.rows("select A, B from T order by A")),
          row(named.begin()),
          field((*row)["B"]),
          reader(work.one<BlobReader>("select C from T where A = 1")),
          writer(work) {}

    Statement statement;
    TypedRows<int, std::string> tuples;
    decltype(tuples.begin()) tuple;
    zmfb::Rows named;
    decltype(named.begin()) row;
    Field field;
    BlobReader reader;
    BlobWriter writer;
};

void expect_of_no_more_use(Begun& begun, const std::string& why) {
    EXPECT_EQ(begun.statement.columns().size(), 2u);
    EXPECT_EQ(begun.statement.parameter_count(), 0u);
    EXPECT_EQ(std::get<1>(*begun.tuple), "one");
    const auto error = error_of([&] { (void)begun.statement.rows(); });
    EXPECT_EQ(error.sqlstate(), "25000");
    EXPECT_EQ(error.message(), why);
    EXPECT_EQ(state_of([&] { ++begun.tuple; }), "24000");
    EXPECT_EQ(state_of([&] { ++begun.row; }), "24000");
    EXPECT_EQ(state_of([&] { (void)begun.field.text(); }), "24000");
    EXPECT_EQ(state_of([&] { (void)begun.field.as<std::string>(); }), "24000");
    EXPECT_EQ(state_of([&] { begun.reader.read(); }), "25000");
    EXPECT_EQ(state_of([&] { (void)begun.reader.size(); }), "25000");
    EXPECT_EQ(state_of([&] { begun.writer.write("more"); }), "25000");
}

TEST_F(TypedLifetime, OfWhatBelongsToATransactionEndsWithIt) {
    struct Case {
        const char* why;
        void (*end)(std::optional<Transaction>& work);
    };
    const Case cases[] = {
        {"The transaction was committed", [](auto& work) { work->commit(); }},
        {"The transaction was rolled back", [](auto& work) { work->roll_back(); }},
        {"The transaction was rolled back", [](auto& work) { work.reset(); }},
    };
    for (const auto& [why, end] : cases) {
        std::optional<Transaction> work(connection());
        Begun begun(*work);
        end(work);
        expect_of_no_more_use(begun, why);
    }
}

TEST_F(TypedLifetime, OfWhatBelongsToAnAttachmentEndsWithIt) {
    std::optional<zmFBConn> object(connect());
    const std::function<void()> ends[] = {[&] { object->call("disconnect"); }, [&] { object.reset(); }};
    for (const auto& end : ends) {
        Transaction work(*object);
        Begun begun(work);
        work.execute("delete from T");
        end();
        EXPECT_FALSE(work.active());
        EXPECT_EQ(state_of([&] { work.commit(); }), "25000");
        EXPECT_EQ(state_of([&] { work.roll_back(); }), "25000");
        EXPECT_EQ(state_of([&] { work.prepare("select 1 from T"); }), "25000");
        expect_of_no_more_use(begun, "The transaction was rolled back");
        if (object) object->call("init", database(), sysdba, sysdba_password, "");
    }
    EXPECT_EQ(rows("select count(*) from T")[0][0], "2");
}

TEST_F(TypedLifetime, OfATransactionThatHasEndedIsThrown) {
    Transaction work(connection());
    work.commit();
    EXPECT_EQ(error_of([&] { work.prepare("select 1 from T"); }).message(), "The transaction was committed");
    EXPECT_EQ(state_of([&] { work.commit(); }), "25000");
    EXPECT_EQ(state_of([&] { work.roll_back(); }), "25000");
}

TEST_F(TypedLifetime, OfATransactionThatWasMovedElsewhereIsThrown) {
    Transaction work(connection());
    Transaction moved = std::move(work);
    EXPECT_EQ(moved.one<int>("select count(*) from T"), 2);
    // NOLINTBEGIN(bugprone-use-after-move)
    EXPECT_FALSE(work.active());
    EXPECT_EQ(error_of([&] { work.commit(); }).message(), "The transaction was moved elsewhere");
    EXPECT_EQ(state_of([&] { work.roll_back(); }), "25000");
    EXPECT_EQ(state_of([&] { work.prepare("select 1 from T"); }), "25000");
    EXPECT_EQ(state_of([&] { BlobWriter writer(work); }), "25000");
    // NOLINTEND(bugprone-use-after-move)
}

TEST_F(TypedLifetime, OfAnAttachmentDoesNotEndWithThatOfAnother) {
    zmFBConn other = connect();
    Transaction work(connection(), Access::read_only);
    auto rows = work.query<int>("select A from T order by A");
    auto at = rows.begin();
    other.call("disconnect");
    ++at;
    EXPECT_EQ(std::get<0>(*at), 2);
}

TEST_F(TypedLifetime, OfAnObjectThatWasAttachedAnewIsThatOfItsNewAttachment) {
    zmFBConn object = connect();
    object.call("disconnect");
    EXPECT_EQ(state_of([&] { Transaction again(object); }), "08003");
    object.call("init", database(), sysdba, sysdba_password, "");
    EXPECT_EQ(Transaction(object).one<int>("select count(*) from T"), 2);
}

TEST_F(TypedLifetime, OfStatementsRowsAndFieldsIsTheirOwn) {
    std::optional<Begun> begun;
    Transaction work(connection());
    begun.emplace(work);
    Statement statement = begun->statement;
    const Field field = begun->field;
    BlobReader reader = begun->reader;
    begun.reset();
    EXPECT_EQ(field.as<std::string>(), "one");
    EXPECT_EQ(reader.read(), "first");
    int sum = 0;
    for (auto& [a, b] : statement.query<int, std::string>()) sum += a;
    EXPECT_EQ(sum, 3);
}

TEST_F(TypedLifetime, OfAStatementThatWasMovedElsewhereGoesOn) {
    Transaction work(connection());
    auto statement = work.prepare("select A from T order by A");
    auto rows = statement.query<int>();
    auto elsewhere = std::move(statement);
    int sum = 0;
    for (auto& [code] : rows) sum += code;
    EXPECT_EQ(sum, 3);
    EXPECT_EQ(statement.columns().size(), 1u);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(elsewhere.query<int>().begin() == std::default_sentinel, false);
}

TEST_F(TypedLifetime, OfTheBatchIsThatOfItsCommit) {
    call("starttransaction");
    Transaction batch = Transaction::batch(connection());
    Begun begun(batch);
    call("commitchanges");
    EXPECT_FALSE(batch.active());
    expect_of_no_more_use(begun, "The batch was ended");
    call("starttransaction");
    Transaction next = Transaction::batch(connection());
    next.execute("delete from T");
    call("disconnect");
    EXPECT_FALSE(next.active());
    EXPECT_EQ(rows("select count(*) from T")[0][0], "2");
}

TEST_F(TypedLifetime, OfTwoReadersMayOverlapInsteadOfNesting) {
    Transaction work(connection(), Access::read_only);
    auto first = std::make_unique<TypedRows<Decimal>>(
        work.query<Decimal>("select cast(-A - 0.5 as numeric(9,2)) from T order by A"));
    auto at_first = first->begin();
    auto second = std::make_unique<zmfb::Rows>(work.rows("select B from T order by A"));
    auto at_second = second->begin();
    ++at_first;
    EXPECT_EQ(std::get<0>(*at_first), Decimal("-2.5"));
    first.reset();
    ++at_second;
    EXPECT_EQ((*at_second)["B"].as<std::string>(), "two");
    second.reset();
    EXPECT_EQ(work.one<std::string>("select B from T where A = 2"), "two");
}

TEST_F(TypedLifetime, OfTwoTransactionsMayOverlapInsteadOfNesting) {
    constexpr const char* numeric = "select cast(-1.50 as numeric(9,2)) from T";
    std::optional<Transaction> first(connection());
    auto rows_of_first = first->query<std::optional<Decimal>>(numeric);
    auto at_first = rows_of_first.begin();
    std::optional<Transaction> second(connection());
    auto rows_of_second = second->query<int>("select A from T order by A");
    auto at_second = rows_of_second.begin();
    ++at_first;
    EXPECT_EQ(std::get<0>(*at_first), Decimal("-1.5"));
    first.reset();
    ++at_second;
    EXPECT_EQ(std::get<0>(*at_second), 2);
    second.reset();
    EXPECT_EQ(show(call("executequery", numeric)[2]), R"({"-1.-50"})");
}

// What the methods give, those that read the catalog and values by queries of their own among them; without
// the time of the matrix.
std::string what_methods_give(zmFBConn& object) {
    std::string all = show(object.call("gettablestruct", "PEOPLE"));
    all += show(object.call("executequery", "select NAME, cast(-1.50 as numeric(9,2)) from PEOPLE"));
    all += show(object.call("extractmatrix", host::array_of("PEOPLE")));
    return std::regex_replace(all, std::regex("Data: [0-9/]+ [0-9:]+"), "");
}

TEST_F(TypedLifetime, OfReadersDoesNotChangeWhatMethodsGive) {
    call("createtable", "PEOPLE", host::array_of(host::array_of("NAME", "C", 20, 0)));
    call("executeupdate", "insert into PEOPLE (NAME) values ('Ana')");
    const std::string without_readers = what_methods_give(connection());
    EXPECT_NE(without_readers.find("{\"Ana                 \", \"-1.-50\"}"), std::string::npos)
        << without_readers;
    Transaction work(connection(), Access::read_only);
    auto first = work.query<int>("select A from T order by A");
    auto at_first = first.begin();
    auto second = work.rows("select * from T order by A");
    auto at_second = second.begin();
    EXPECT_EQ(what_methods_give(connection()), without_readers);
    ++at_first;
    EXPECT_EQ(std::get<0>(*at_first), 2);
    ++at_second;
    EXPECT_EQ((*at_second)["c"].as<std::string>(), "second");
    EXPECT_EQ(raised(), std::vector<std::string>{});
}

TEST_F(TypedLifetime, OfReadersKeepsNoTableFromGoingOut) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    const CurrentFolder here(folder());
    call("createtable", "PEOPLE", host::array_of(host::array_of("NAME", "C", 20, 0)));
    call("setfullpathdatfile", file("data.dat"));
    Transaction work(connection(), Access::read_only);
    auto reader = work.query<int>("select A from T order by A");
    auto at_first = reader.begin();
    EXPECT_TRUE(call("exiletable", "PEOPLE").logical());
    ++at_first;
    EXPECT_EQ(std::get<0>(*at_first), 2);
}

// What would be gone before the statement runs does not compile.
template <class Value>
inline constexpr bool is_taken = std::is_constructible_v<Parameter, Value>;
static_assert(is_taken<const std::string&> && is_taken<std::string&> && !is_taken<std::string>);
static_assert(is_taken<const Bytes&> && !is_taken<Bytes>);
static_assert(is_taken<std::optional<std::string>&> && !is_taken<std::optional<std::string>>);
static_assert(is_taken<int> && is_taken<std::optional<int>> && is_taken<const char*>);

}  // namespace
}  // namespace zmfb::test
