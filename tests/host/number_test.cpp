#include "host/number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "errors.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;
using namespace std::string_view_literals;

TEST(Val, ReadsTheLeadingNumber) {
    expect_rows({{val("200"), 200},   {val(" 200 "), 200},      {val("-200 "), -200},
                 {val("  +12"), 12},  {val("\t\r\n12"), 12},    {val(".1"), 0.1},
                 {val("-.1"), -0.1},  {val("+.1"), 0.1},        {val("1."), 1},
                 {val("1.."), 1},     {val("15.001 "), 15.001}, {val("12-"), 12},
                 {val("12A12"), 12},  {val("15.1A1"), 15.1},    {val("12. 5"), 12},
                 {val(" 12 .1"), 12}, {val("12\0.2"sv), 12},    {val("0012"), 12},
                 {val("1.2.3"), 1.2}, {val("5000000000"), 5e9}, {val("2.00000000000009"), 2.00000000000009}});
}

TEST(Val, NothingUsableIsZero) {
    for (const char* text : {"", " ", "-", "+", ".", "..", "- 12", "--12", "+-12", "- .1", "A12", "\v12",
                             "INF", "NAN", "-INF", "$5", "(5)"}) {
        EXPECT_TRUE(host_test::is_same(val(text), 0)) << text;
    }
}

TEST(Val, KnowsNoExponentsOrBases) {
    expect_rows({{val("1E2"), 1}, {val("15e2"), 15}, {val("0x10"), 0}, {val("1.5E3"), 1.5}});
}

TEST(Val, ZeroHasNoSign) {
    for (const char* text : {"-0", "-.0", "-0.00"}) EXPECT_FALSE(std::signbit(val(text).number())) << text;
}

TEST(Val, OfVeryLongNumbers) {
    EXPECT_TRUE(std::isinf(val(std::string(400, '9')).number()));
    EXPECT_EQ(val("0." + std::string(400, '0') + "1").number(), 0);
    EXPECT_EQ(val("0" + std::string(400, '0') + "1").number(), 1);
}

TEST(Bin2i, ReadsTwoSignedBytes) {
    expect_rows({{bin2i("AB"), 16961},
                 {bin2i("ABC"), 16961},
                 {bin2i("\xFF"), 255},
                 {bin2i("\0\x80"sv), -32768},
                 {bin2i("\xFF\x7F"), 32767},
                 {bin2i(""), 0},
                 {bin2i({}), 0},
                 {bin2i(5), 0}});
}

TEST(Bin2i, BytesFfFfAreMinusOne) { EXPECT_TRUE(host_test::is_same(bin2i("\xFF\xFF"), -1)); }

TEST(Bin2l, ReadsFourSignedBytes) {
    expect_rows({{bin2l("ABC"), 4407873},
                 {bin2l("ABCDE"), 1145258561},
                 {bin2l("\xFF\xFF\xFF"), 16777215},
                 {bin2l("\xFF\xFF\xFF\xFF"), -1},
                 {bin2l("\0\0\0\x80"sv), -2147483648.0},
                 {bin2l(""), 0},
                 {bin2l({}), 0}});
}

TEST(Arithmetic, OnNumbers) {
    expect_rows({{Value(2) + Value(3), 5},
                 {Value(2) - Value(3), -1},
                 {times(2, 3), 6},
                 {divide(3, 2), 1.5},
                 {negate(3), -3},
                 {abs(-2.5), 2.5},
                 {abs(2.5), 2.5},
                 {integer_part(2.9), 2},
                 {integer_part(-2.9), -2}});
}

TEST(Arithmetic, DividingByZeroRaisesAndGivesANumber) {
    {
        host_test::CaughtErrors caught;
        EXPECT_TRUE(host_test::is_same(divide(1, 0), 0));
        EXPECT_EQ(caught.number("gencode"), 5);
        EXPECT_EQ(caught.number("subcode"), 1340);
    }
    const host_test::CaughtErrors caught(7);
    EXPECT_TRUE(host_test::is_same(divide(1, 0), 7));
}

TEST(Arithmetic, WrongKindsRaiseArgumentErrors) {
    expect_argument_error(Subcode::plus, "+", [] { return Value(1) + Value("A"); });
    expect_argument_error(Subcode::plus, "+", [] { return Value() + Value("A"); });
    expect_argument_error(Subcode::plus, "+", [] { return Value("A") + Value(); });
    expect_argument_error(Subcode::minus, "-", [] { return Value("A") - Value(1); });
    expect_argument_error(Subcode::times, "*", [] { return times("A", 1); });
    expect_argument_error(Subcode::divide, "/", [] { return divide(1, {}); });
    expect_argument_error(Subcode::minus, "-", [] { return negate("A"); });
    expect_argument_error(Subcode::abs, "ABS", [] { return abs("A"); });
    expect_argument_error(Subcode::integer, "INT", [] { return integer_part({}); });
    expect_argument_error(Subcode::val, "VAL", [] { return val({}); });
}

TEST(Joining, PlusJoinsAndMinusMovesBlanksToTheEnd) {
    expect_rows({{Value("A  ") + Value("B"), "A  B"},
                 {Value("A  ") - Value("B"), "AB  "},
                 {Value("A  ") - Value("B "), "AB   "},
                 {Value("   ") - Value("B"), "B   "},
                 {Value("A") - Value(""), "A"},
                 {Value("") + Value(""), ""},
                 {Value("a text longer ") - Value("than fourteen"), "a text longerthan fourteen "},
                 {Value("A\0"sv) + Value("\0B"sv), "A\0\0B"sv}});
}

TEST(Joining, LeavesItsArgumentsAsTheyWere) {
    const Value first = "a text longer than fourteen";
    const Value second = ", and one more";
    Value both = first;
    both = std::move(both) + second;
    EXPECT_EQ(first.text(), "a text longer than fourteen");
    EXPECT_EQ(second.text(), ", and one more");
    EXPECT_EQ(both.text(), "a text longer than fourteen, and one more");
}

TEST(Joining, ATextWithItself) {
    Value twice = "a text longer than fourteen";
    twice = std::move(twice) + twice;
    EXPECT_EQ(twice.text(), "a text longer than fourteena text longer than fourteen");
    Value small = "abc";
    small = std::move(small) + small;
    EXPECT_EQ(small.text(), "abcabc");
}

TEST(Joining, AppendsInPlaceWhenTheLeftSideIsDone) {
    Value text = space(1000);
    text = std::move(text) + "x";  // makes room to spare
    const char* const place = text.text().data();
    for (int i = 0; i < 300; ++i) text = std::move(text) + "y";
    EXPECT_EQ(text.text().data(), place);
    EXPECT_EQ(text.text().size(), 1301U);
}

}  // namespace
}  // namespace zmfb::host
