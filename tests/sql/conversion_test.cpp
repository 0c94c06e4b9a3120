// What a query makes of the values of each column type, through a real engine.
#include "tests/support/database.h"

namespace zmfb::test {
namespace {

struct Case {
    std::string_view name;
    std::string_view type;     // of the column
    std::string_view literal;  // that is stored
    std::string_view text;     // that the query gives
};

constexpr Case cases[] = {
    {"CharKeepsItsBlanks", "char(6)", "'AB'", "AB    "},
    {"CharOfOne", "char(1)", "'x'", "x"},
    {"CharOfFourteen", "char(14)", "'abcdefghijklm'", "abcdefghijklm "},
    {"CharOfFifteen", "char(15)", "'abcdefghijklm'", "abcdefghijklm  "},
    {"CharEmpty", "char(3)", "''", "   "},
    {"CharWithQuotes", "char(4)", "'a''\"b'", "a'\"b"},
    {"VarcharIsPadded", "varchar(10)", "'AB'", "AB        "},
    {"VarcharFull", "varchar(4)", "'abcd'", "abcd"},
    {"VarcharEmpty", "varchar(3)", "''", "   "},
    {"VarcharKeepsItsOwnTrailingBlanks", "varchar(5)", "'a  '", "a    "},
    {"VarcharLeadingBlanks", "varchar(5)", "'  a'", "  a  "},
    {"VarcharOfOne", "varchar(1)", "''", " "},
    {"SmallintZero", "smallint", "0", "0"},
    {"SmallintLargest", "smallint", "32767", "32767"},
    {"SmallintSmallest", "smallint", "-32768", "-32768"},
    {"ScaledSmallintComesUnscaled", "numeric(4,2)", "12.34", "1234"},
    {"ScaledNegativeSmallintComesUnscaled", "numeric(4,2)", "-0.05", "-5"},
    {"IntegerZero", "integer", "0", "0"},
    {"IntegerLargest", "integer", "2147483647", "2147483647"},
    {"IntegerSmallest", "integer", "-2147483648", "-2147483648"},
    {"NumericTwoDecimals", "numeric(9,2)", "12.05", "12.05"},
    {"NumericNegative", "numeric(9,2)", "-1.50", "-1.-50"},
    {"NumericNegativeFraction", "numeric(9,2)", "-0.05", "0.-5"},
    {"NumericNegativeHalf", "numeric(9,2)", "-0.50", "0.-50"},
    {"NumericZero", "numeric(9,2)", "0", "0.00"},
    {"NumericSmallRemainderIsFilled", "numeric(9,4)", "3.0007", "3.0007"},
    {"NumericNegativeRemainderIsFilledAfterItsSign", "numeric(9,4)", "-3.0007", "-3.-007"},
    {"NumericAllDecimals", "numeric(9,9)", "0.123456789", "0.123456789"},
    {"NumericLargest", "numeric(9,2)", "21474836.47", "21474836.47"},
    {"DecimalIsNumeric", "decimal(8,1)", "-7.2", "-7.-2"},
    {"BigintSmallValue", "bigint", "42", "42"},
    {"BigintNegative", "bigint", "-42", "-42"},
    {"BigintOf32Bits", "bigint", "2147483647", "2147483647"},
    {"BigintBeyond31BitsComesWrong", "bigint", "2147483648", "-2147483648"},
    {"BigintBeyond32BitsComesWrong", "bigint", "4294967296", "0"},
    {"BigintLargestComesWrong", "bigint", "9223372036854775807", "-1"},
    {"BigintSmallestComesWrong", "bigint", "-9223372036854775808", "0"},
    {"WideNumeric", "numeric(18,2)", "12345678.90", "12345678.90"},
    {"WideNumericNegative", "numeric(18,2)", "-1.50", "-1.-50"},
    {"WideNumericBeyond32BitsComesWrong", "numeric(18,2)", "42949672.97", "0.01"},
    {"WideNumericTenDecimals", "numeric(18,10)", "0.0000000123", "0.0000000123"},
    {"WideNumericEighteenDecimals", "numeric(18,18)", "-0.000000000000000007", "0.-00000000000000007"},
    {"FloatWhole", "float", "3", "3"},
    {"FloatHalf", "float", "0.5", "0.5"},
    {"FloatSixDigits", "float", "3.14159265", "3.14159"},
    {"FloatWidened", "float", "0.1", "0.1"},
    {"FloatLarge", "float", "1234567", "1.23457e+06"},
    {"FloatSmall", "float", "0.00001", "1e-05"},
    {"FloatNegative", "float", "-2.25", "-2.25"},
    {"DoubleWhole", "double precision", "7", "7.000000"},
    {"DoubleSixDecimals", "double precision", "0.1234567", "0.123457"},
    {"DoubleNegative", "double precision", "-1.5", "-1.500000"},
    {"DoubleTiny", "double precision", "1e-30", "0.000000"},
    {"DoubleTinyNegative", "double precision", "-1e-30", "-0.000000"},
    {"DoubleLarge", "double precision", "1e22", "10000000000000000000000.000000"},
    {"DoubleOfSixteenDigits", "double precision", "1234567890123456", "1234567890123456.000000"},
    {"Timestamp", "timestamp", "'2007-03-01 14:05:09.1234'", "2007-03-01 14:05:09.1234"},
    {"TimestampMidnight", "timestamp", "'2007-03-01'", "2007-03-01 00:00:00.0000"},
    {"TimestampLastMoment", "timestamp", "'2007-12-31 23:59:59.9999'", "2007-12-31 23:59:59.9999"},
    {"TimestampLeapDay", "timestamp", "'2004-02-29 01:02:03.0004'", "2004-02-29 01:02:03.0004"},
    {"TimestampBeforeTheEpochOfTheEngine", "timestamp", "'1858-11-16 12:00:00'", "1858-11-16 12:00:00.0000"},
    {"TimestampOfTheEpochOfTheEngine", "timestamp", "'1858-11-17'", "1858-11-17 00:00:00.0000"},
    {"TimestampFirst", "timestamp", "'0001-01-01'", "0001-01-01 00:00:00.0000"},
    {"TimestampLast", "timestamp", "'9999-12-31 23:59:59'", "9999-12-31 23:59:59.0000"},
    {"NullChar", "char(6)", "null", "NULL"},
    {"NullVarchar", "varchar(6)", "null", "NULL"},
    {"NullSmallint", "smallint", "null", "NULL"},
    {"NullInteger", "integer", "null", "NULL"},
    {"NullBigint", "bigint", "null", "NULL"},
    {"NullNumeric", "numeric(9,2)", "null", "NULL"},
    {"NullFloat", "float", "null", "NULL"},
    {"NullDouble", "double precision", "null", "NULL"},
    {"NullTimestamp", "timestamp", "null", "NULL"},
    {"NullOfAnUnconvertedType", "date", "null", "NULL"},
    {"TextNullLooksTheSame", "char(4)", "'NULL'", "NULL"},
    {"DateIsNotConverted", "date", "'2007-03-01'", ""},
    {"TimeIsNotConverted", "time", "'14:05:09'", ""},
    {"BlobIsNotConverted", "blob sub_type text", "'abc'", ""},
    {"BooleanIsNotConverted", "boolean", "true", ""},
};

class Conversion : public Database, public ::testing::WithParamInterface<Case> {};

TEST_P(Conversion, GivesTheText) {
    const Case& one = GetParam();
    execute("create table T (V " + std::string(one.type) + ")");
    execute("insert into T values (" + std::string(one.literal) + ")");
    const host::Value result = call("internalselect", "select V from T");
    EXPECT_EQ(show(result[2]), show(host::array_of(one.text)));
    EXPECT_EQ(result.size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Types, Conversion, ::testing::ValuesIn(cases),
                         [](const auto& info) { return std::string(info.param.name); });

using ConversionOfRows = Database;

TEST_F(ConversionOfRows, NotNullColumnIsNeverNull) {
    execute("create table T (V integer not null)");
    execute("insert into T values (0)");
    EXPECT_EQ(row_texts(call("internalselect", "select V from T")), (Rows{{"0"}}));
}

TEST_F(ConversionOfRows, NullsOfEveryColumnAreToldApart) {
    execute("create table T (A integer, B varchar(3), C timestamp, D double precision)");
    execute("insert into T values (1, null, '2007-03-01', null)");
    execute("insert into T values (null, 'x', null, 2)");
    EXPECT_EQ(row_texts(call("internalselect", "select * from T")),
              (Rows{{"1", "NULL", "2007-03-01 00:00:00.0000", "NULL"}, {"NULL", "x  ", "NULL", "2.000000"}}));
}

TEST_F(ConversionOfRows, UnconvertedTypeTakesTheTextConvertedBefore) {
    execute("create table T (A integer, B date, C char(20), D time, E blob)");
    execute("insert into T values (1, '2007-03-01', 'abc', '10:00', 'x')");
    execute("insert into T values (null, '2007-03-01', null, '10:00', null)");
    const std::string padded = "abc" + std::string(17, ' ');
    EXPECT_EQ(row_texts(call("internalselect", "select * from T order by A desc nulls last")),
              (Rows{{"1", "1", padded, padded, padded}, {"NULL", "NULL", "NULL", "NULL", "NULL"}}));
}

TEST_F(ConversionOfRows, UnconvertedFirstColumnTakesTheLastTextOfTheRowBefore) {
    execute("create table T (B date, A varchar(16))");
    execute("insert into T values ('2007-03-01', 'first')");
    execute("insert into T values ('2007-03-02', 'second')");
    EXPECT_EQ(row_texts(call("internalselect", "select * from T order by A")),
              (Rows{{"", "first           "}, {"first           ", "second          "}}));
}

TEST_F(ConversionOfRows, ConversionsOfOneCallDoNotReachTheNext) {
    execute("create table T (A integer, B date)");
    execute("insert into T values (5, '2007-03-01')");
    EXPECT_EQ(row_texts(call("internalselect", "select A, B from T")), (Rows{{"5", "5"}}));
    EXPECT_EQ(row_texts(call("internalselect", "select B from T")), (Rows{{""}}));
}

TEST_F(ConversionOfRows, TextsEndAtAZeroByte) {
    execute("create table T (A char(6) character set octets, B varchar(6) character set octets)");
    execute("insert into T values (x'410042000000', x'41004243')");
    const host::Value result = call("internalselect", "select * from T");
    EXPECT_EQ(show(result[2]), R"({"A", "A     "})");
}

TEST_F(ConversionOfRows, BytesBeyondAsciiStayAsTheyAre) {
    execute("create table T (A varchar(4))");
    execute("insert into T values ('\xe7\xe3o')");
    EXPECT_EQ(show(call("internalselect", "select A from T")[2]), R"({"\xe7\xe3o "})");
}

TEST_F(ConversionOfRows, ValueLongerThan8192BytesComesWhole) {
    execute("create table T (A varchar(20000), B char(9000))");
    execute("insert into T values (rpad('', 20000, 'abc'), 'x')");
    const host::Value row = call("internalselect", "select A, B from T")[2];
    EXPECT_EQ(row[1].text().size(), 20000u);
    EXPECT_EQ(row[1].text().substr(19995), "abcab");
    EXPECT_EQ(row[2].text(), "x" + std::string(8999, ' '));
}

TEST_F(ConversionOfRows, RowWiderThan32768BytesComesWhole) {
    execute("create table T (A varchar(30000), B varchar(30000))");
    execute("insert into T values ('first', 'second')");
    const host::Value row = call("internalselect", "select A, B, A || '' as C from T")[2];
    ASSERT_EQ(row.size(), 3u);
    EXPECT_EQ(row[1].text(), "first" + std::string(29995, ' '));
    EXPECT_EQ(row[2].text(), "second" + std::string(29994, ' '));
    EXPECT_EQ(row[3].text(), "first" + std::string(29995, ' '));
}

TEST_F(ConversionOfRows, EveryRowKeepsItsOwnTexts) {
    execute("create table T (A integer, B varchar(20), C char(20))");
    execute(
        "execute block as declare i integer = 0; begin while (i < 300) do begin "
        "insert into T values (:i, 'b' || (:i / 7), 'c' || (:i / 50)); i = i + 1; end end");
    const host::Value result = call("internalselect", "select * from T order by A");
    ASSERT_EQ(result.size(), 301u);
    for (int i = 0; i < 300; ++i) {
        std::string b = "b" + std::to_string(i / 7);
        std::string c = "c" + std::to_string(i / 50);
        b.resize(20, ' ');
        c.resize(20, ' ');
        EXPECT_EQ(show(result[static_cast<std::size_t>(i) + 2]),
                  show(host::array_of(std::to_string(i), b, c)));
    }
}

TEST_F(ConversionOfRows, ChangingOneRowLeavesItsNeighboursAlone) {
    const host::Value result =
        call("internalselect", "select cast('the same long text' as varchar(30)) from rdb$types rows 3");
    ASSERT_EQ(result.size(), 4u);
    result[2][1].append("!");
    EXPECT_EQ(result[2][1].text().size(), 31u);
    EXPECT_EQ(result[3][1].text(), "the same long text" + std::string(12, ' '));
    EXPECT_EQ(result[4][1].text(), "the same long text" + std::string(12, ' '));
}

}  // namespace
}  // namespace zmfb::test
