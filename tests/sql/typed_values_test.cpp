// Values of every type out of rows and into statements, through a real engine.
#include <climits>
#include <functional>

#include "sql/object_client.h"
#include "tests/sql/sql_error_of.h"
#include "tests/support/database.h"
#include "zmfbconn/transaction.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::year_month_day;

constexpr year_month_day day(int y, unsigned m, unsigned d) {
    return {std::chrono::year(y), std::chrono::month(m), std::chrono::day(d)};
}

constexpr TimeOfDay ticks(std::chrono::seconds time, int more = 0) {
    return TimeOfDay(time) + TimeOfDay(more);
}

constexpr Timestamp moment(year_month_day date, TimeOfDay time) {
    return Timestamp(std::chrono::local_days(date)) + time;
}

Bytes bytes(std::initializer_list<int> values) {
    Bytes made;
    for (const int value : values) made.push_back(static_cast<std::byte>(value));
    return made;
}

// What is done with a column of one type: the value of `literal` is to be read as `T`, and to come out the
// same when it is put in as a parameter.
struct Case {
    std::string name;
    std::string type;
    std::string literal;
    std::string text;  // as Field::text() has it
    std::function<void(Transaction& work)> check;
};

void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

template <class T>
Case same(std::string name, std::string type, std::string literal, std::string text, T value) {
    const auto check = [value](Transaction& work) {
        EXPECT_EQ(work.one<T>("select V from T"), value);
        EXPECT_EQ(work.one<std::optional<T>>("select V from T"), value);
        EXPECT_EQ(work.execute("insert into T values (?)", value), 1);
    };
    return {std::move(name), std::move(type), std::move(literal), std::move(text), check};
}

std::vector<Case> cases() {
    using namespace std::string_literals;
    const std::string euro = "\xE2\x82\xAC", e_acute = "\xC3\xA9";
    return {
        same("Varchar", "varchar(10)", "'AB  '", "AB  ", "AB  "s),
        same("TextNull", "varchar(6)", "'NULL'", "NULL", "NULL"s),
        same("VarcharEmpty", "varchar(10)", "''", "", ""s),
        same("CharWithoutItsBlanks", "char(6)", "'  AB'", "  AB", "  AB"s),
        same("Latin1Text", "varchar(10) character set iso8859_1", "_utf8'a" + e_acute + "'", "a" + e_acute,
             "a" + e_acute),
        same("Utf8Text", "varchar(3) character set utf8", "_utf8'" + euro + e_acute + "a'",
             euro + e_acute + "a", euro + e_acute + "a"),
        same("Utf8Char", "char(3) character set utf8", "_utf8'" + euro + "'", euro, euro),
        same("Windows1252Text", "varchar(3) character set win1252", "_utf8'" + euro + euro + euro + "'",
             euro + euro + euro, euro + euro + euro),
        same("TextOfZeroBytes", "varchar(5)", "'a' || ascii_char(0) || 'b'", "a\0b"s, "a\0b"s),
        same("Octets", "char(4) character set octets", "x'00FF4100'", "00FF4100", bytes({0, 255, 65, 0})),
        same("OctetsVarying", "varchar(4) character set octets", "x'20FF'", "20FF", bytes({32, 255})),
        same("Smallint", "smallint", "-32768", "-32768", std::int16_t{SHRT_MIN}),
        same("Integer", "integer", "-2147483648", "-2147483648", INT_MIN),
        same("Bigint", "bigint", "9223372036854775807", "9223372036854775807", std::int64_t{LLONG_MAX}),
        same("BigintSmallest", "bigint", "-9223372036854775808", "-9223372036854775808",
             std::int64_t{LLONG_MIN}),
        same("IntegerAsAWiderType", "integer", "7", "7", 7LL),
        same("IntegerAsAnUnsignedType", "bigint", "4000000000", "4000000000", 4000000000U),
        same("IntegerAsADecimal", "integer", "-12", "-12", Decimal(-12)),
        same("DecimalInSmallint", "numeric(4,2)", "-0.05", "-0.05", Decimal("-0.05")),
        same("DecimalInInteger", "numeric(9,2)", "-1.50", "-1.50", Decimal("-1.5")),
        same("DecimalAllDecimals", "numeric(18,18)", "-0.000000000000000007", "-0.000000000000000007",
             Decimal(-7, 18)),
        same("DecimalZero", "numeric(9,2)", "0", "0.00", Decimal(0)),
        same("DecimalWide", "numeric(18,4)", "-922337203685477.5808", "-922337203685477.5808",
             Decimal(LLONG_MIN, 4)),
        same("Double", "double precision", "0.1", "0.1", 0.1),
        same("DoubleThird", "double precision", "cast(1 as double precision) / 3", "0.3333333333333333",
             1.0 / 3),
        same("DoubleLarge", "double precision", "1e22", "1e+22", 1e22),
        same("DoubleZero", "double precision", "0", "0", 0.0),
        same("DoubleOfSixteenDigits", "double precision", "1234567890123456", "1234567890123456",
             1234567890123456.0),
        same("DoubleLargestWithoutExponent", "double precision", "9.999999999999998e15", "9999999999999998",
             9999999999999998.0),
        same("DoubleFirstWithExponent", "double precision", "1e16", "1e+16", 1e16),
        same("DoubleFirstNegativeWithExponent", "double precision", "-1e16", "-1e+16", -1e16),
        same("DoubleSmallestWithoutExponent", "double precision", "1e-5", "0.00001", 1e-5),
        same("DoubleBelowThat", "double precision", "9.5e-6", "9.5e-06", 9.5e-6),
        same("FloatFewestDigits", "float", "0.1", "0.1", static_cast<double>(0.1F)),
        same("FloatAllItsDigits", "float", "3.14159265", "3.1415927", static_cast<double>(3.14159265F)),
        same("FloatFirstWithExponent", "float", "1e16", "1e+16", static_cast<double>(1e16F)),
        same("Float", "float", "0.5", "0.5", 0.5),
        same("BooleanTrue", "boolean", "true", "true", true),
        same("BooleanFalse", "boolean", "false", "false", false),
        same("LogicalOfTheDriver", "char(1)", "'T'", "T", true),
        same("LogicalOfTheDriverFalse", "char(1)", "'F'", "F", false),
        same("Date", "date", "'2007-03-01'", "2007-03-01", day(2007, 3, 1)),
        same("DateFirst", "date", "'0001-01-01'", "0001-01-01", day(1, 1, 1)),
        same("DateLast", "date", "'9999-12-31'", "9999-12-31", day(9999, 12, 31)),
        same("DateBeforeTheEngineBeginsToCount", "date", "'1858-11-16'", "1858-11-16", day(1858, 11, 16)),
        same("DateOfALeapYear", "date", "'2000-02-29'", "2000-02-29", day(2000, 2, 29)),
        same("Time", "time", "'14:05:09.1234'", "14:05:09.1234", ticks(14h + 5min + 9s, 1234)),
        same("TimeMidnight", "time", "'00:00'", "00:00:00.0000", ticks(0s)),
        same("TimeLast", "time", "'23:59:59.9999'", "23:59:59.9999", ticks(24h, -1)),
        same("Timestamp", "timestamp", "'2007-03-01 14:05:09.1234'", "2007-03-01 14:05:09.1234",
             moment(day(2007, 3, 1), ticks(14h + 5min + 9s, 1234))),
        same("TimestampFirst", "timestamp", "'0001-01-01'", "0001-01-01 00:00:00.0000",
             moment(day(1, 1, 1), ticks(0s))),
        same("TimestampLast", "timestamp", "'9999-12-31 23:59:59.9999'", "9999-12-31 23:59:59.9999",
             moment(day(9999, 12, 31), ticks(24h, -1))),
        same("DayOfTheDriver", "timestamp", "'2007-03-01'", "2007-03-01 00:00:00.0000", day(2007, 3, 1)),
        same("TextBlob", "blob sub_type text", "'first' || ascii_char(10) || 'second'", "first\nsecond",
             "first\nsecond"s),
        same("TextBlobEmpty", "blob sub_type text", "''", "", ""s),
        same("TextBlobUtf8", "blob sub_type text character set utf8", "_utf8'" + euro + "'", euro, euro),
        same("TextBlobLatin1", "blob sub_type text character set iso8859_1", "_utf8'" + e_acute + "'",
             e_acute, e_acute),
        same("TextBlobWindows1252", "blob sub_type text character set win1252", "_utf8'" + euro + "'", euro,
             euro),
        same("BinaryBlob", "blob", "x'00FF02'", "<blob 3 bytes>", bytes({0, 255, 2})),
        same("BinaryBlobEmpty", "blob", "x''", "<blob 0 bytes>", Bytes()),
    };
}

class TypedValue : public Database, public ::testing::WithParamInterface<Case> {
  protected:
    TypedValue() { execute("create table T (V " + GetParam().type + ")"); }
};

TEST_P(TypedValue, IsReadAsItsTypeAndComesOutTheSameAsAParameter) {
    const Case& one = GetParam();
    execute("insert into T values (" + one.literal + ")");
    Transaction work(connection());
    one.check(work);
    int count = 0;
    for (const auto& row : work.rows("select V from T")) {
        EXPECT_EQ(row[0].text(), one.text);
        ++count;
    }
    EXPECT_EQ(count, 2);
    EXPECT_EQ(work.one<int>("select count(*) from T A join T B on A.V = B.V"), 4);
}

TEST_P(TypedValue, IsNullInAndOut) {
    Transaction work(connection());
    work.execute("insert into T values (?)", std::nullopt);
    for (const auto& row : work.rows("select V from T")) EXPECT_TRUE(row[0].is_null());
    EXPECT_EQ(work.one<int>("select count(*) from T where V is null"), 1);
}

INSTANTIATE_TEST_SUITE_P(Types, TypedValue, ::testing::ValuesIn(cases()),
                         [](const auto& info) { return info.param.name; });

using TypedValues = Database;

TEST_F(TypedValues, ViewsGiveTheTextOfEveryKindOfText) {
    execute("create table T (A varchar(5), B char(5) character set utf8, C blob sub_type text)");
    execute("insert into T values ('ab', _utf8'\xE2\x82\xAC', 'xyz')");
    Transaction work(connection(), Access::read_only);
    for (auto& [a, b, c] : work.query<std::string_view, std::string_view, std::optional<std::string_view>>(
             "select A, B, C from T")) {
        EXPECT_EQ(a, "ab");
        EXPECT_EQ(b, "\xE2\x82\xAC");
        EXPECT_EQ(c, "xyz");
    }
}

TEST_F(TypedValues, NumbersThatTheTypeDoesNotHoldAreThrown) {
    Transaction work(connection(), Access::read_only);
    const auto error = error_of([&] { (void)work.one<int>("select 2147483648 as N from rdb$database"); });
    EXPECT_EQ(error.sqlstate(), "22003");
    EXPECT_EQ(error.message(), "Column N has 2147483648, which the type it is read as does not hold");
    EXPECT_EQ(state_of([&] { (void)work.one<unsigned>("select -1 from rdb$database"); }), "22003");
    EXPECT_EQ(state_of([&] { (void)work.one<std::int8_t>("select 128 from rdb$database"); }), "22003");
}

TEST_F(TypedValues, ATimeOfDayIsNotLostInADay) {
    Transaction work(connection(), Access::read_only);
    constexpr const char* query = "select timestamp '2007-03-01 00:00:00.0001' as D from rdb$database";
    EXPECT_EQ(state_of([&] { (void)work.one<year_month_day>(query); }), "07006");
}

TEST_F(TypedValues, ALetterThatIsNeitherTNorFIsNoLogical) {
    Transaction work(connection(), Access::read_only);
    EXPECT_EQ(state_of([&] { (void)work.one<bool>("select cast('x' as char(1)) from rdb$database"); }),
              "22018");
    EXPECT_EQ(state_of([&] { (void)work.one<bool>("select cast('T' as char(2)) from rdb$database"); }),
              "07006");
}

TEST_F(TypedValues, ArraysAreNamedAndReadAsNothing) {
    execute("create table T (V integer [3])");
    execute("insert into T (V) values (null)");
    Transaction work(connection(), Access::read_only);
    const auto error = error_of([&] { (void)work.one<int>("select V from T"); });
    EXPECT_EQ(error.message(),
              "Column V is ARRAY, which cannot be read as std::int64_t, but as Field::text() only");
}

// What the client would say of an engine with newer types.
class NewerEngine : public sql::ObjectClient {
  public:
    explicit NewerEngine(unsigned type) : type_(type), before_(sql::set_object_client(this)) {}
    ~NewerEngine() override { sql::set_object_client(before_); }
    ISC_STATUS describe(Firebird::IStatus* status, Firebird::IMessageMetadata* message,
                        std::vector<sql::MessageItem>* items, unsigned* length) override {
        const ISC_STATUS code = ObjectClient::describe(status, message, items, length);
        for (sql::MessageItem& item : *items) item.type = type_;
        return code;
    }

  private:
    unsigned type_;
    sql::ObjectClient* before_;
};

TEST_F(TypedValues, OfTypesOfNewerEnginesAreNamed) {
    connection();
    const std::pair<unsigned, std::string_view> types[] = {
        {SQL_ARRAY, "<ARRAY>"},           {32752, "<INT128>"},       {32754, "<TIMESTAMP WITH TIME ZONE>"},
        {32756, "<TIME WITH TIME ZONE>"}, {32760, "<DECFLOAT(16)>"}, {32762, "<DECFLOAT(34)>"},
        {32000, "<type 32000>"},
    };
    for (const auto& [type, name] : types) {
        const NewerEngine engine(type);
        Transaction work(connection(), Access::read_only);
        for (const auto& row : work.rows("select 1 from rdb$database")) EXPECT_EQ(row[0].text(), name);
    }
}

TEST_F(TypedValues, NumbersOfExpressionsKeepTheirDecimals) {
    Transaction work(connection(), Access::read_only);
    EXPECT_EQ(work.one<Decimal>("select sum(A) from (select 0.1 as A from rdb$database union all "
                                "select 0.20 from rdb$database)"),
              Decimal("0.30"));
}

}  // namespace
}  // namespace zmfb::test
