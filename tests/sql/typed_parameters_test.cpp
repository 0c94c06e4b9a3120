// Values that statements do not take: thrown before anything is sent.
#include <functional>

#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "tests/support/faulty_client.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* table =
    "create table T (S smallint, I integer, N numeric(9,2), B bigint, D double precision, F float, "
    "V varchar(5), C char(3), L char(1), O char(2) character set octets, DAY_ date, AT_ time, TS timestamp, "
    "OK boolean, TXT blob sub_type text, BIN blob, U varchar(3) character set utf8)";

struct Case {
    std::string name;
    std::string column;
    std::function<Parameter()> value;
    std::string sqlstate;
    std::string message;  // behind "Parameter 1"; "" for any
};

void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

const Bytes two_bytes{std::byte{1}, std::byte{2}};
constexpr std::chrono::year_month_day no_day{std::chrono::year(2007), std::chrono::February,
                                             std::chrono::day(30)};

const Case cases[] = {
    {"TextIntoANumber", "I", [] { return Parameter("7"); }, "07006", " is INTEGER and does not take a text"},
    {"NumberIntoAText", "V", [] { return Parameter(7); }, "07006",
     " is VARCHAR(5) and does not take a whole number"},
    {"DoubleIntoADecimal", "N", [] { return Parameter(1.5); }, "07006",
     " is NUMERIC with 2 decimals and does not take double"},
    {"DecimalIntoADouble", "D", [] { return Parameter(Decimal("1.5")); }, "07006",
     " is DOUBLE PRECISION and does not take zmfb::Decimal"},
    {"TextIntoADate", "DAY_", [] { return Parameter("2007-03-01"); }, "07006", ""},
    {"TextIntoBytes", "O", [] { return Parameter("ab"); }, "07006", ""},
    {"BytesIntoAText", "V", [] { return Parameter(two_bytes); }, "07006", ""},
    {"BytesIntoATextBlob", "TXT", [] { return Parameter(two_bytes); }, "07006", ""},
    {"TextIntoABinaryBlob", "BIN", [] { return Parameter("ab"); }, "07006", ""},
    {"LogicalIntoANumber", "I", [] { return Parameter(true); }, "07006",
     " is INTEGER and does not take bool"},
    {"NumberIntoALogical", "OK", [] { return Parameter(1); }, "07006", ""},
    {"TimeStampIntoADate", "DAY_", [] { return Parameter(Timestamp()); }, "07006", ""},
    {"DayIntoATime", "AT_", [] { return Parameter(no_day); }, "07006", ""},
    {"TimeIntoATimeStamp", "TS", [] { return Parameter(TimeOfDay(1)); }, "07006", ""},
    {"TooLargeForSmallint", "S", [] { return Parameter(32768); }, "22003", ", SMALLINT, does not hold 32768"},
    {"TooLargeForInteger", "I", [] { return Parameter(2147483648); }, "22003", ""},
    {"TooLargeForDecimals", "N", [] { return Parameter(21474837); }, "22003", ""},
    {"TooLargeForBigintOnceScaled", "B", [] { return Parameter(18446744073709551615ULL); }, "22003", ""},
    {"MoreDecimalsThanThereAre", "N", [] { return Parameter(Decimal("1.005")); }, "22003",
     ", NUMERIC with 2 decimals, does not hold 1.005 without a loss"},
    {"DecimalsIntoAWholeNumber", "I", [] { return Parameter(Decimal("1.5")); }, "22003",
     ", INTEGER, does not hold 1.5 without a loss"},
    {"WholeNumberThatADoubleRounds", "D", [] { return Parameter(9007199254740993); }, "22003", ""},
    {"WholeNumberThatAFloatRounds", "F", [] { return Parameter(16777217); }, "22003", ""},
    {"TextTooLong", "V", [] { return Parameter("abcdef"); }, "22001",
     ", VARCHAR(5), does not hold 6 bytes: \"abcdef\""},
    {"TextTooLongForChar", "C", [] { return Parameter("abcd"); }, "22001", ""},
    {"CharacterThatTheEncodingDoesNotHave", "V", [] { return Parameter("a\xE2\x82\xAC"); }, "22021", ""},
    {"TextThatIsNoUtf8", "V", [] { return Parameter("\xE9"); }, "22021", ""},
    {"BlobCharacterThatTheEncodingDoesNotHave", "TXT", [] { return Parameter("\xE2\x82\xAC"); }, "22021", ""},
    {"NoSuchDay", "DAY_", [] { return Parameter(no_day); }, "22007", ""},
    {"NoSuchDayOfATimeStamp", "TS", [] { return Parameter(no_day); }, "22007", ""},
    {"DayBeforeTheFirst", "DAY_", [] { return Parameter(std::chrono::year(0) / 12 / 31); }, "22007", ""},
    {"DayAfterTheLast", "TS", [] { return Parameter(std::chrono::year(10000) / 1 / 1); }, "22007", ""},
    {"TimeOfAnotherDay", "AT_", [] { return Parameter(TimeOfDay(24h)); }, "22007", ""},
    {"TimeBeforeMidnight", "AT_", [] { return Parameter(TimeOfDay(-1)); }, "22007", ""},
    {"TimeBeforeAll", "AT_", [] { return Parameter(TimeOfDay::min()); }, "22007", ""},
};

class TypedParameter : public Database, public ::testing::WithParamInterface<Case> {};

TEST_P(TypedParameter, ThatDoesNotFitIsThrownBeforeAnythingIsSent) {
    const Case& one = GetParam();
    execute(table);
    Transaction work(connection());
    auto insert = work.prepare("insert into T (" + one.column + ") values (?)");
    const FaultyClient client;
    const SqlError error = error_of([&] { insert.execute(one.value()); });
    EXPECT_EQ(error.sqlstate(), one.sqlstate) << error.message();
    EXPECT_EQ(error.message(), one.message.empty() ? error.message() : "Parameter 1" + one.message);
    EXPECT_EQ(client.count(ClientCall::execute), 0);
    EXPECT_EQ(client.count(ClientCall::create_blob), 0);
    EXPECT_EQ(work.one<int>("select count(*) from T"), 0);
}

INSTANTIATE_TEST_SUITE_P(Values, TypedParameter, ::testing::ValuesIn(cases),
                         [](const auto& info) { return info.param.name; });

using TypedParameters = Database;

TEST_F(TypedParameters, AnotherNumberOfValuesIsThrown) {
    Transaction work(connection());
    auto statement = work.prepare("select 1 from rdb$database where 1 = cast(? as integer)");
    const auto error = error_of([&] { (void)statement.query<int>(); });
    EXPECT_EQ(error.sqlstate(), "07001");
    EXPECT_EQ(error.message(), "The statement takes 1 value, not 0");
    EXPECT_EQ(state_of([&] { (void)statement.query<int>(1, 2); }), "07001");
    EXPECT_EQ(statement.one<int>(1), 1);
}

TEST_F(TypedParameters, AreNeverPutIntoTheText) {
    execute("create table T (V varchar(40))");
    const std::string hostile = "x'); delete from T; --";
    Transaction work(connection());
    work.execute("insert into T values (?)", hostile);
    EXPECT_EQ(work.one<std::string>("select V from T where V = ?", hostile), hostile);
}

TEST_F(TypedParameters, ComeAsASpanWhereTheirNumberIsNotKnown) {
    execute("create table T (A integer, B varchar(5))");
    const std::vector<Parameter> values{1, "one"};
    Transaction work(connection());
    EXPECT_EQ(work.execute("insert into T values (?, ?)", values), 1);
    EXPECT_EQ(work.one<std::string>("select B from T where A = ? and B = ?", values), "one");
}

TEST_F(TypedParameters, OptionalOnesAndNullPointersAreNull) {
    execute("create table T (A integer, B varchar(5), C numeric(9,2))");
    Transaction work(connection());
    const char* const nothing = nullptr;
    work.execute("insert into T values (?, ?, ?)", std::optional<int>(), nothing,
                 std::optional<Decimal>("1.5"));
    EXPECT_EQ(work.one<int>("select count(*) from T where A is null and B is null and C = 1.5"), 1);
}

TEST_F(TypedParameters, AreAskedWhetherTheyAreNull) {
    Transaction work(connection());
    auto statement = work.prepare("select iif(? is null, 'null', 'not') from rdb$database");
    EXPECT_EQ(statement.one<std::string>(std::nullopt), "null");
    EXPECT_EQ(statement.one<std::string>(5), "not");
    EXPECT_EQ(statement.one<std::string>("five"), "not");
}

TEST_F(TypedParameters, WithoutBlanksAtTheirEndsMatchPatternsOfChar) {
    execute("create table T (C char(6))");
    execute("insert into T values ('abc')");
    Transaction work(connection());
    EXPECT_EQ(work.one<int>("select count(*) from T where C like ?", "ab%"), 1);
    EXPECT_EQ(work.one<int>("select count(*) from T where C = ?", "abc"), 1);
}

}  // namespace
}  // namespace zmfb::test
