#include <gtest/gtest.h>

#include "errors.h"
#include "host/date.h"
#include "host/error.h"
#include "host/number.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;
using namespace std::string_view_literals;

TEST(Pad, FillsOrCutsToTheLength) {
    expect_rows({{padr("HELLO", 10), "HELLO     "},
                 {padl("HELLO", 10), "     HELLO"},
                 {padr("HELLO", 5), "HELLO"},
                 {padr("abcdef", 5), "abcde"},
                 {padr("", 3), "   "},
                 {padl("A\0"sv, 4), "  A\0"sv},
                 {padr("A", 3.9), "A  "}});
}

TEST(Pad, BothSidesKeepTheLeftPartOfALongText) {
    expect_rows({{padl("abcdef", 5), "abcde"}, {padr("abcdef", 5), "abcde"}});
}

TEST(Pad, LengthBelowOneOrNoNumberGivesNothing) {
    expect_rows({{padr("abcdef", 0), ""},
                 {padr("abcdef", -5), ""},
                 {padr("abcdef", 0.9), ""},
                 {padr("abcdef", "A"), ""},
                 {padl("abcdef", {}), ""}});
}

TEST(Pad, TakesTheFirstByteOfTheFill) {
    expect_rows({{padr("abcdef", 10, "1"), "abcdef1111"},
                 {padl("abcdef", 10, "12"), "1111abcdef"},
                 {padr("ab", 4, ""), "ab\0\0"sv},
                 {padr("ab", 4, 7), "ab  "}});
}

TEST(Pad, NumbersArePaddedAsTheyShow) {
    const Value ten_point_two(10.2, Picture{12, 1});
    expect_rows({{padr(10, 5), "10   "},
                 {padr(ten_point_two, 5), "10.2 "},
                 {padl(ten_point_two, 5), " 10.2"},
                 {padr(100000, 8, "-"), "100000--"},
                 {padr(-100000, 8, "-"), "-100000-"},
                 {padl(-100000, 8, "-"), "--100000"},
                 {padl(123456, 4), "1234"}});
}

TEST(Pad, DatesArePaddedAsTheyShow) {
    expect_rows({{padr(stod("20070301"), 10), "03/01/07  "}, {padl(Date{}, 10), "    /  /  "}});
}

TEST(Pad, OtherKindsGiveNothingWithoutAnError) {
    expect_rows(
        {{padr(true, 5), ""}, {padl({}, 5), ""}, {padr(array_of(1), 5), ""}, {padl(error_new(), 5), ""}});
}

TEST(SpaceAndReplicate, RepeatAndCutFractions) {
    expect_rows({{space(3), "   "},
                 {space(3.7), "   "},
                 {space(0), ""},
                 {space(-1), ""},
                 {space(20), "                    "},
                 {replicate("HE", 3.7), "HEHEHE"},
                 {replicate("H\0"sv, 2), "H\0H\0"sv},
                 {replicate("A", 0), ""},
                 {replicate("A", -3), ""},
                 {replicate("", 1e300), ""},
                 {replicate("abc", 7), "abcabcabcabcabcabcabc"}});
}

TEST(SpaceAndReplicate, WrongKindsRaiseArgumentErrors) {
    expect_argument_error(Subcode::space, "SPACE", [] { return space("10"); });
    expect_argument_error(Subcode::replicate, "REPLICATE", [] { return replicate(10, 2); });
    expect_argument_error(Subcode::replicate, "REPLICATE", [] { return replicate("A", "2"); });
}

TEST(Sizes, AbsurdOnesOverflow) {
    host_test::CaughtErrors caught("answer");
    const auto overflow = [&](const Value& got, std::string_view operation) {
        EXPECT_TRUE(host_test::is_same(got, "answer"));
        EXPECT_EQ(caught.take_count(), 1);
        EXPECT_EQ(caught.number("gencode"), 3);
        EXPECT_EQ(caught.number("subcode"), 1234);
        EXPECT_EQ(caught.text("description"), "String overflow: " + std::string(operation));
    };
    overflow(replicate("a text longer than fourteen", 1e7), "REPLICATE");
    for (const double size : {1e9, 5e9, 1e19, 1e300}) {
        overflow(space(size), "SPACE");
        overflow(replicate("A", size), "REPLICATE");
        overflow(replicate("a text longer than fourteen", size), "REPLICATE");
        overflow(padr("A", size), "PADR");
        overflow(padl("A", size), "PADL");
        overflow(str(1, size), "STR");
        overflow(str(1, size, 2), "STR");
        overflow(strzero(1, size), "STRZERO");
    }
}

TEST(Sizes, LargestFilledTextIsMade) {
    const Value blanks = space(static_cast<double>(max_filled_size));
    EXPECT_EQ(blanks.text().size(), max_filled_size);
    EXPECT_EQ(blanks.text().back(), ' ');
}

}  // namespace
}  // namespace zmfb::host
