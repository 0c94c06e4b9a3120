// What a query gives while exact conversion is in force, through a real engine.
#include "zmfbconn/exact.h"

#include <climits>

#include "tests/support/database.h"
#include "tests/support/faulty_client.h"

namespace zmfb::test {
namespace {

using host::Value;

struct Case {
    std::string_view name;
    std::string_view type;     // of the column
    std::string_view literal;  // that is stored
    std::string_view value;    // that the query gives, as show() shows it
};

constexpr Case cases[] = {
    {"NullIsNil", "integer", "null", "NIL"},
    {"NullTextIsNil", "varchar(6)", "null", "NIL"},
    {"NullBlobIsNil", "blob sub_type text", "null", "NIL"},
    {"TextNullIsAText", "varchar(6)", "'NULL'", R"("NULL")"},
    {"CharLosesItsBlanks", "char(6)", "'AB'", R"("AB")"},
    {"CharKeepsLeadingBlanks", "char(6)", "'  AB'", R"("  AB")"},
    {"CharOfBlanks", "char(6)", "''", R"("")"},
    {"VarcharIsNotPadded", "varchar(10)", "'AB'", R"("AB")"},
    {"VarcharKeepsItsBlanks", "varchar(10)", "'AB  '", R"("AB  ")"},
    {"VarcharEmpty", "varchar(10)", "''", R"("")"},
    {"OctetsInHexadecimal", "char(4) character set octets", "x'00FF41'", R"("00FF4100")"},
    {"SmallintSmallest", "smallint", "-32768", R"("-32768")"},
    {"ScaledSmallint", "numeric(4,2)", "-0.05", R"("-0.05")"},
    {"ScaledSmallintLargest", "numeric(4,2)", "327.67", R"("327.67")"},
    {"IntegerSmallest", "integer", "-2147483648", R"("-2147483648")"},
    {"NegativeNumericHasOneSign", "numeric(9,2)", "-1.50", R"("-1.50")"},
    {"NegativeFractionKeepsItsSign", "numeric(9,2)", "-0.05", R"("-0.05")"},
    {"NumericZero", "numeric(9,2)", "0", R"("0.00")"},
    {"NumericAllDecimals", "numeric(9,9)", "-0.000000001", R"("-0.000000001")"},
    {"WideNumeric", "numeric(18,2)", "12345678901.25", R"("12345678901.25")"},
    {"WideNumericSmallest", "numeric(18,4)", "-922337203685477.5808", R"("-922337203685477.5808")"},
    {"WideNumericEighteenDecimals", "numeric(18,18)", "-0.000000000000000007", R"("-0.000000000000000007")"},
    {"BigintLargest", "bigint", "9223372036854775807", R"("9223372036854775807")"},
    {"BigintSmallest", "bigint", "-9223372036854775808", R"("-9223372036854775808")"},
    {"FloatFewestDigits", "float", "0.1", R"("0.1")"},
    {"FloatAllItsDigits", "float", "3.14159265", R"("3.1415927")"},
    {"FloatWhole", "float", "100000", R"("100000")"},
    {"DoubleFewestDigits", "double precision", "0.1", R"("0.1")"},
    {"DoubleAllItsDigits", "double precision", "cast(1 as double precision) / 3", R"("0.3333333333333333")"},
    {"DoubleNegative", "double precision", "-1.5", R"("-1.5")"},
    {"DoubleZero", "double precision", "0", R"("0")"},
    {"DoubleOfSixteenDigits", "double precision", "1234567890123456", R"("1234567890123456")"},
    {"DoubleLarge", "double precision", "1e22", R"("1e+22")"},
    {"DoubleLargestWithoutExponent", "double precision", "9.999999999999998e15", R"("9999999999999998")"},
    {"DoubleFirstWithExponent", "double precision", "1e16", R"("1e+16")"},
    {"DoubleFirstNegativeWithExponent", "double precision", "-1e16", R"("-1e+16")"},
    {"DoubleSmallestWithoutExponent", "double precision", "1e-5", R"("0.00001")"},
    {"DoubleBelowThat", "double precision", "9.5e-6", R"("9.5e-06")"},
    {"FloatFirstWithExponent", "float", "1e16", R"("1e+16")"},
    {"DoubleTiny", "double precision", "cast(1 as double precision) / 1048576", R"("9.5367431640625e-07")"},
    {"BooleanTrue", "boolean", "true", R"("true")"},
    {"BooleanFalse", "boolean", "false", R"("false")"},
    {"Date", "date", "'2007-03-01'", R"("2007-03-01")"},
    {"DateFirst", "date", "'0001-01-01'", R"("0001-01-01")"},
    {"DateLast", "date", "'9999-12-31'", R"("9999-12-31")"},
    {"Time", "time", "'14:05:09.1234'", R"("14:05:09.1234")"},
    {"TimeMidnight", "time", "'00:00'", R"("00:00:00.0000")"},
    {"TimeLast", "time", "'23:59:59.9999'", R"("23:59:59.9999")"},
    {"Timestamp", "timestamp", "'2007-03-01 14:05:09.1234'", R"("2007-03-01 14:05:09.1234")"},
    {"TextBlob", "blob sub_type text", "'first' || ascii_char(10) || 'second'", R"("first\x0asecond")"},
    {"TextBlobEmpty", "blob sub_type text", "''", R"("")"},
    {"BinaryBlobByItsSize", "blob", "x'000102'", R"("<blob 3 bytes>")"},
    {"BinaryBlobEmpty", "blob", "x''", R"("<blob 0 bytes>")"},
};

class ExactConversion : public Database, public ::testing::WithParamInterface<Case> {};

TEST_P(ExactConversion, GivesTheValue) {
    const Case& one = GetParam();
    execute("create table T (V " + std::string(one.type) + ")");
    execute("insert into T values (" + std::string(one.literal) + ")");
    const ExactQueries exact;
    const Value result = call("executequery", "select V from T");
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(show(result[2]), "{" + std::string(one.value) + "}");
    EXPECT_EQ(exact.sqlcode(), 0);
}

INSTANTIATE_TEST_SUITE_P(Types, ExactConversion, ::testing::ValuesIn(cases),
                         [](const auto& info) { return std::string(info.param.name); });

using ExactQuery = Database;

TEST_F(ExactQuery, NothingDiffersOutsideOfTheScope) {
    execute("create table T (A numeric(18,2), B varchar(3), C boolean)");
    execute("insert into T values (-1.50, 'x', true)");
    const std::string usual =
        R"({{{"A", "N", 8, 2}, {"B", "C", 3, 0}, {"C", " ", 1, 0}}, {"-1.-50", "x  ", "x  "}})";
    EXPECT_EQ(show(call("executequery", "select * from T")), usual);
    {
        const ExactQueries exact;
        EXPECT_EQ(show(call("executequery", "select * from T")[2]), R"({"-1.50", "x", "true"})");
    }
    EXPECT_EQ(show(call("executequery", "select * from T")), usual);
}

TEST_F(ExactQuery, HeaderHasAliasLetterLengthDecimalsAndWhetherTextsAreUtf8) {
    execute(
        "create table T (A numeric(18,2), B varchar(3) character set utf8, C boolean, D date, "
        "E blob sub_type text character set utf8, F blob, G varchar(3))");
    const ExactQueries exact;
    EXPECT_EQ(
        show(call("executequery", "select A as PRICE, B, C, D, E, F, G from T")[1]),
        R"({{"PRICE", "N", 8, 2, .F.}, {"B", "C", 12, 0, .T.}, {"C", "L", 1, 0, .F.}, )"
        R"({"D", "D", 4, 0, .F.}, {"E", "M", 8, 0, .T.}, {"F", " ", 8, 0, .F.}, {"G", "C", 3, 0, .F.}})");
}

TEST_F(ExactQuery, TextsKeepTheirZeroBytes) {
    const ExactQueries exact;
    const Value result =
        call("executequery", "select cast('a' || ascii_char(0) || 'b' as varchar(5)) from rdb$database");
    EXPECT_EQ(result[2][1].text(), std::string_view("a\0b", 3));
}

TEST_F(ExactQuery, LongTextBlobComesWhole) {
    execute("create table T (V blob sub_type text)");
    execute(
        "execute block as declare i integer = 0; declare b blob sub_type text = ''; begin "
        "while (i < 40) do begin b = b || lpad('', 5000, '0123456789'); i = i + 1; end "
        "insert into T values (:b); end");
    const ExactQueries exact;
    const Value text = call("executequery", "select V from T")[2][1];
    ASSERT_EQ(text.text().size(), 200000u);
    EXPECT_EQ(text.text().substr(199990), "0123456789");
}

TEST_F(ExactQuery, ArraysAreNamed) {
    execute("create table T (V integer [3])");
    execute("insert into T (V) values (null)");
    const ExactQueries exact;
    EXPECT_EQ(show(call("executequery", "select V from T")[2]), "{NIL}");
    EXPECT_EQ(show(call("executequery", "select first 1 JOB_GRADE from (select 1 as JOB_GRADE from T)")[2]),
              R"({"1"})");
}

// What the client would say of an engine with newer types.
class NewerEngine : public sql::Client {
  public:
    explicit NewerEngine(short type) : type_(type), before_(sql::set_client(this)) {}
    ~NewerEngine() override { sql::set_client(before_); }
    ISC_STATUS fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) override {
        const short real = output->sqlvar[0].sqltype;
        const ISC_STATUS outcome = Client::fetch(status, cursor, output);
        output->sqlvar[0].sqltype = outcome == 0 ? type_ : real;
        return outcome;
    }

  private:
    short type_;
    sql::Client* before_;
};

TEST_F(ExactQuery, TypesOfNewerEnginesAreNamed) {
    connection();
    const std::pair<short, std::string_view> types[] = {
        {SQL_ARRAY, "<ARRAY>"},           {32752, "<INT128>"},       {32754, "<TIMESTAMP WITH TIME ZONE>"},
        {32756, "<TIME WITH TIME ZONE>"}, {32760, "<DECFLOAT(16)>"}, {32762, "<DECFLOAT(34)>"},
        {32000, "<type 32000>"},
    };
    for (const auto& [type, name] : types) {
        const NewerEngine engine(type);
        const ExactQueries exact;
        EXPECT_EQ(call("executequery", "select 1 from rdb$database")[2][1].string(), name);
    }
}

TEST_F(ExactQuery, FailureAmongTheRowsIsToldBesideTheRowsBeforeIt) {
    const ExactQueries exact;
    const Value result =
        call("executequery",
             "select 1 / n from (select 1 as n from rdb$database union all select 0 from rdb$database)");
    EXPECT_EQ(result.size(), 2u);
    EXPECT_EQ(exact.sqlcode(), -802);
    call("executequery", "select 1 from rdb$database");
    EXPECT_EQ(exact.sqlcode(), 0);
    call("executequery", "select nosuch from rdb$database");
    EXPECT_EQ(exact.sqlcode(), -206);
}

class Notes : public RowReader {
  public:
    explicit Notes(int enough = INT_MAX) : enough_(enough) {}
    void header(const Value& columns) override { seen += show(columns); }
    bool row(const Value& values) override {
        seen += " " + show(values);
        return --enough_ > 0;
    }
    std::string seen;

  private:
    int enough_;
};

constexpr std::string_view three_rows =
    "select first 3 row_number() over (order by rdb$relation_id) as N from rdb$relations";

TEST_F(ExactQuery, ReaderGetsHeaderAndRowsAndTheResultOnlyTheHeader) {
    connection();
    Notes notes;
    const ExactQueries exact(&notes);
    EXPECT_EQ(show(call("executequery", three_rows)), R"({{{"N", "N", 8, 0, .F.}}})");
    EXPECT_EQ(notes.seen, R"({{"N", "N", 8, 0, .F.}} {"1"} {"2"} {"3"})");
}

TEST_F(ExactQuery, ReaderThatHasEnoughEndsTheQueryAndItHasNotFailed) {
    connection();
    Notes notes(2);
    const ExactQueries exact(&notes);
    call("executequery", three_rows);
    EXPECT_EQ(notes.seen, R"({{"N", "N", 8, 0, .F.}} {"1"} {"2"})");
    EXPECT_EQ(exact.sqlcode(), 0);
    EXPECT_EQ(call("executequery", "select 7 from rdb$database").size(), 1u);
}

class Throwing : public Notes {
    bool row(const Value&) override { throw std::runtime_error("enough"); }
};

TEST_F(ExactQuery, WhatTheReaderThrowsComesThroughAndTheNextQueryWorks) {
    connection();
    FaultyClient client;
    {
        Throwing reader;
        const ExactQueries exact(&reader);
        EXPECT_THROW(call("executequery", three_rows), std::runtime_error);
    }
    EXPECT_EQ(client.open_transactions(), 0);
    EXPECT_EQ(show(call("executequery", "select 7 from rdb$database")[2]), R"({"7"})");
}

TEST_F(ExactQuery, BlobThatCannotBeReadEndsTheQueryWithTheFailure) {
    execute("create table T (V blob sub_type text)");
    execute("insert into T values ('abc')");
    connection();
    for (const ClientCall failing : {ClientCall::open_blob, ClientCall::blob_info, ClientCall::get_segment}) {
        FaultyClient client;
        client.fail(failing);
        const ExactQueries exact;
        EXPECT_EQ(call("executequery", "select V from T").size(), 1u) << name_of(failing);
        EXPECT_EQ(exact.sqlcode(), -902) << name_of(failing);
        EXPECT_EQ(client.open_transactions(), 0);
        EXPECT_EQ(client.count(ClientCall::close_blob), failing == ClientCall::open_blob ? 0 : 1);
        EXPECT_EQ(show(call("executequery", "select V from T")[2]), R"({"abc"})");
    }
}

}  // namespace
}  // namespace zmfb::test
