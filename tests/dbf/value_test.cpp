#include "dbf/value.h"

#include <gtest/gtest.h>

#include <bit>

#include "dbf/records.h"
#include "shown.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::dbf {
namespace {

using dbf_test::shown;
using test::DbfBuilder;
using test::high_first;
using test::low_first;

struct Case {
    int first_byte;
    char type;
    std::string bytes;
    std::string value;
};

// The value that the bytes are in a file that has one field.
std::string value_of(const Case& c, ValueOptions options = {}) {
    const auto source = in_memory(DbfBuilder()
                                      .type(c.first_byte)
                                      .field("F", c.type, static_cast<int>(c.bytes.size()))
                                      .raw_record(" " + c.bytes)
                                      .bytes());
    const Header header = read_header(*source);
    Records records(*source, header);
    records.next();
    return shown(read_value(header, header.fields[0], records.bytes(), options));
}

void expect_values(const std::vector<Case>& cases) {
    for (const Case& c : cases) EXPECT_EQ(value_of(c), c.value) << c.type << " " << c.bytes;
}

std::string zeros(std::size_t count) { return std::string(count, '\0'); }

TEST(DbfValue, TextsEndBeforeTheirBlanksAndZeroBytes) {
    expect_values({{3, 'C', "Ana  ", "\"Ana\""},
                   {3, 'C', "  Ana", "\"  Ana\""},
                   {3, 'C', "     ", "\"\""},
                   {3, 'C', "Ana" + zeros(2), "\"Ana\""},
                   {3, 'C', "A" + zeros(1) + "b  ", "\"A" + zeros(1) + "b\""},
                   {3, 'C', "\xE7\x1A", "\"\xE7\x1A\""}});
}

TEST(DbfValue, NumbersAreTheirDigits) {
    for (const char type : {'N', 'F'}) {
        expect_values({{3, type, "   12", "12"},
                       {3, type, "12   ", "12"},
                       {3, type, "-1.50", "-1.50"},
                       {3, type, "+.5  ", "+.5"},
                       {3, type, "5.   ", "5."},
                       {3, type, "1.5e+02", "1.5e+02"},
                       {3, type, "123456789012345678901234567890", "123456789012345678901234567890"},
                       {3, type, "     ", "blank"},
                       {3, type, zeros(5), "blank"},
                       {3, type, " 12" + zeros(2), "12"},
                       {3, type, zeros(2) + "12", "12"},
                       {3, type, "*****", "bad: stars: the number was too wide for its field"},
                       {3, type, "1" + zeros(1) + "2", "bad: a zero byte in a number"},
                       {3, type, "1,50 ", "bad: not a number"},
                       {3, type, "1 2  ", "bad: not a number"},
                       {3, type, "-    ", "bad: not a number"},
                       {3, type, "- 5  ", "bad: not a number"},
                       {3, type, "--5  ", "bad: not a number"},
                       {3, type, "1.2.3", "bad: not a number"},
                       {3, type, "\t5   ", "bad: not a number"},
                       {3, type, "5\n   ", "bad: not a number"},
                       {3, type, "5 e3 ", "bad: not a number"},
                       {3, type, ".    ", "bad: not a number"},
                       {3, type, "e5   ", "bad: not a number"},
                       {3, type, "5e   ", "bad: not a number"},
                       {3, type, "nan  ", "bad: not a number"},
                       {3, type, "0x1F ", "bad: not a number"}});
    }
}

TEST(DbfValue, ACommaIsAPointWhenAskedFor) {
    EXPECT_EQ(value_of({3, 'N', "-1,50", ""}, {.decimal_comma = true}), "-1.50");
    EXPECT_EQ(value_of({3, 'N', "1.50 ", ""}, {.decimal_comma = true}), "1.50");
    EXPECT_EQ(value_of({3, 'N', "1,2,3", ""}, {.decimal_comma = true}), "bad: not a number");
}

TEST(DbfValue, DatesAreDaysOfTheCalendar) {
    expect_values({{3, 'D', "20070301", "2007-03-01"},
                   {3, 'D', "20240229", "2024-02-29"},
                   {3, 'D', "00010101", "0001-01-01"},
                   {3, 'D', "99991231", "9999-12-31"},
                   {3, 'D', "        ", "blank"},
                   {3, 'D', "00000000", "blank"},
                   {3, 'D', zeros(8), "blank"},
                   {3, 'D', "20070301  ", "2007-03-01"},
                   {3, 'D', "          ", "blank"},
                   {3, 'D', "20230229", "bad: not a date"},
                   {3, 'D', "19000229", "bad: not a date"},
                   {3, 'D', "20071301", "bad: not a date"},
                   {3, 'D', "00000101", "bad: not a date"},
                   {3, 'D', "2007-3-1", "bad: not a date"},
                   {3, 'D', "********", "bad: not a date"}});
}

TEST(DbfValue, LogicalsAreTheirLetters) {
    for (const char* yes : {"T", "t", "Y", "y"}) expect_values({{3, 'L', yes, "true"}});
    for (const char* no : {"F", "f", "N", "n"}) expect_values({{3, 'L', no, "false"}});
    expect_values({{3, 'L', " ", "blank"},
                   {3, 'L', "?", "blank"},
                   {3, 'L', zeros(1), "blank"},
                   {3, 'L', "T  ", "true"},
                   {3, 'L', "x", "bad: not a logical"},
                   {3, 'L', "1", "bad: not a logical"},
                   {3, 'L', "TF", "bad: not a logical"}});
}

TEST(DbfValue, IntegersHaveTheirLowByteFirstButInDbase7) {
    expect_values({{0x30, 'I', low_first(12, 4), "12"},
                   {0x30, 'I', low_first(0xFFFFFFFF, 4), "-1"},
                   {0x30, 'I', low_first(0x80000000, 4), "-2147483648"},
                   {4, 'I', high_first(0x8000000C, 4), "12"},
                   {4, 'I', high_first(0x7FFFFFFF, 4), "-1"},
                   {4, '+', high_first(0x80000001, 4), "1"},
                   {0x8C, '+', high_first(0xFFFFFFFF, 4), "2147483647"}});
}

TEST(DbfValue, RealsAreDoubles) {
    const auto bits = [](double real) { return std::bit_cast<std::uint64_t>(real); };
    constexpr std::uint64_t sign = std::uint64_t{1} << 63;
    expect_values({{0x30, 'B', low_first(bits(-78.4), 8), "-78.4"},
                   {0x30, 'B', zeros(8), "0"},
                   {4, 'O', high_first(bits(43.65) ^ sign, 8), "43.65"},
                   {4, 'O', high_first(~bits(-199.99), 8), "-199.99"},
                   {4, 'O', high_first(sign, 8), "0"},
                   {0x30, 'B', low_first(0x7FF8000000000000, 8), "bad: not a number"},
                   {0x30, 'B', low_first(0x7FF0000000000000, 8), "bad: not a number"}});
}

TEST(DbfValue, AmountsAreTenThousandths) {
    expect_values({{0x30, 'Y', low_first(125000, 8), "125000/10000"},
                   {0x30, 'Y', low_first(static_cast<std::uint64_t>(-1), 8), "-1/10000"},
                   {0x30, 'Y', low_first(std::uint64_t{1} << 63, 8), "-9223372036854775808/10000"}});
}

TEST(DbfValue, TimesAreADayAndMilliseconds) {
    const auto time = [](std::uint64_t day, std::uint64_t milliseconds) {
        return low_first(day, 4) + low_first(milliseconds, 4);
    };
    const auto dbase7 = [](double milliseconds) {
        return high_first(std::bit_cast<std::uint64_t>(milliseconds) | std::uint64_t{1} << 63, 8);
    };
    expect_values({{0x30, 'T', time(2440588, 0), "1970-01-01 00:00:00.000"},
                   {0x30, 'T', time(2459680, 86399999), "2022-04-10 23:59:59.999"},
                   {0x30, 'T', time(1721426, 1), "0001-01-01 00:00:00.001"},
                   {0x30, 'T', time(5373484, 0), "9999-12-31 00:00:00.000"},
                   {0x30, 'T', time(0, 0), "blank"},
                   {0x30, 'T', time(0, 2), "blank"},
                   {0x30, 'T', "        ", "blank"},
                   {0x30, 'T', time(2440588, 86400000), "bad: not a time"},
                   {0x30, 'T', time(1721425, 0), "bad: a time outside the years 1 to 9999"},
                   {0x30, 'T', time(5373485, 0), "bad: a time outside the years 1 to 9999"},
                   // 65,536 years behind 1970, and as far as there are days.
                   {0x30, 'T', time(2440588 + 23936532, 0), "bad: a time outside the years 1 to 9999"},
                   {0x30, 'T', time(0x7FFFFFFF, 0), "bad: a time outside the years 1 to 9999"},
                   {0x30, 'T', time(0x80000000, 0), "bad: a time outside the years 1 to 9999"},
                   {4, '@', dbase7(62135683200000.0), "1970-01-01 00:00:00.000"},
                   {4, '@', dbase7(62135683200000.0 + 3723004), "1970-01-01 01:02:03.004"},
                   {4, '@', high_first(0x42CC418BA99A0000, 8), "1970-01-01 00:00:00.000"},
                   {4, '@', zeros(8), "blank"},
                   {4, '@', dbase7(0), "blank"},
                   {4, '@', dbase7(1e300), "bad: not a time"},
                   {4, '@', dbase7(1e3), "bad: a time outside the years 1 to 9999"}});
}

TEST(DbfValue, MemosAreTheNumberOfTheirBlock) {
    for (const char type : {'M', 'G', 'P', 'W'}) {
        expect_values({{0x83, type, "         7", "memo 7"},
                       {0x83, type, "0000000007", "memo 7"},
                       {0x83, type, "4294967295", "memo 4294967295"},
                       {0x83, type, "4294967296", "bad: not the number of a memo"},
                       {0x83, type, "          ", "blank"},
                       {0x83, type, "0000000000", "blank"},
                       {0x83, type, zeros(10), "blank"},
                       {0x83, type, "      x   ", "bad: not the number of a memo"},
                       {0x30, type, low_first(300, 4), "memo 300"},
                       {0x30, type, zeros(4), "blank"},
                       {0x30, type, "    ", "blank"}});
    }
    expect_values({{0x8B, 'B', "         7", "memo 7"},
                   {0xE5, 'M', low_first(1, 2) + low_first(99, 4) + low_first(7, 4), "memo 7"}});
}

// The value of the second field, of type V or Q and ten bytes, and of the third, with their flags.
std::vector<std::string> flagged(char type, const std::string& bytes, char flags) {
    const auto source = in_memory(DbfBuilder()
                                      .type(0x32)
                                      .field("A", 'C', 2)
                                      .field("B", type, 10, 0, 2)
                                      .field("C", 'N', 3, 0, 2)
                                      .field("_NullFlags", '0', 1, 0, 5)
                                      .raw_record(" aa" + bytes + "123" + flags)
                                      .bytes());
    const Header header = read_header(*source);
    Records records(*source, header);
    records.next();
    return {shown(read_value(header, header.fields[1], records.bytes())),
            shown(read_value(header, header.fields[2], records.bytes()))};
}

TEST(DbfValue, FlagsSayWhatIsNullAndWhatIsShorterThanItsField) {
    using Two = std::vector<std::string>;
    const std::string four = "Ana " + zeros(5) + "\x04";
    EXPECT_EQ(flagged('V', four, 1), (Two{"\"Ana \"", "123"}));
    EXPECT_EQ(flagged('Q', four, 1), (Two{"bytes \"Ana \"", "123"}));
    EXPECT_EQ(flagged('V', "ten bytes ", 0), (Two{"\"ten bytes \"", "123"}));
    EXPECT_EQ(flagged('V', four, 3), (Two{"NULL", "123"}));
    EXPECT_EQ(flagged('V', four, 7), (Two{"NULL", "NULL"}));
    EXPECT_EQ(flagged('Q', four, 5), (Two{"bytes \"Ana \"", "NULL"}));
    EXPECT_EQ(flagged('V', "123456789\x0A", 1), (Two{"bad: a length beyond the field", "123"}));
}

}  // namespace
}  // namespace zmfb::dbf
