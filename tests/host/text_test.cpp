#include "host/text.h"

#include <gtest/gtest.h>

#include <string>

#include "host/date.h"
#include "host/error.h"
#include "host/utf8.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;
using namespace std::string_view_literals;

TEST(Upper, ChangesAsciiLettersOnly) {
    expect_rows({{upper("aAzZ{`2"), "AAZZ{`2"},
                 {upper("descrição"_l1), "DESCRIçãO"_l1},
                 {upper("Aaz\0zA"sv), "AAZ\0ZA"sv},
                 {upper(""), ""},
                 {upper("a text longer than fourteen"), "A TEXT LONGER THAN FOURTEEN"},
                 {lower("aAzZ[@2"), "aazz[@2"},
                 {lower("DESCRIÇÃO"_l1), "descriÇÃo"_l1}});
}

TEST(Utf8, HasTwoBytesForEachLetterBeyondAscii) {
    EXPECT_EQ(to_utf8("descrição"_l1), "descrição");
    EXPECT_EQ(to_utf8("\x7F\x80\xBF\xC0\xFF\0z"sv), "\x7F\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF\0z"sv);
    EXPECT_EQ(to_utf8(""), "");
}

TEST(Upper, LeavesItsArgumentAsItWas) {
    const Value text = "a text longer than fourteen";
    const Value same_text = text;
    upper(text);
    EXPECT_EQ(text.text(), "a text longer than fourteen");
    EXPECT_EQ(same_text.text(), "a text longer than fourteen");
}

TEST(Trim, RemovesTrailingBlanksOnly) {
    expect_rows({{trim("   UA  "), "   UA"},
                 {trim("A\r"), "A\r"},
                 {trim(" \tU\t "), " \tU\t"},
                 {trim("A\0"sv), "A\0"sv},
                 {trim("     "), ""},
                 {trim(""), ""}});
}

TEST(Ltrim, RemovesLeadingBlanksTabsAndLineEnds) {
    expect_rows({{ltrim(" \t\r\n UA  "), "UA  "},
                 {ltrim("\v A"), "\v A"},
                 {ltrim("\0A"sv), "\0A"sv},
                 {ltrim(" \t\r\n"), ""}});
}

TEST(Alltrim, KeepsTrailingTabsAndLineEnds) {
    expect_rows({{alltrim("   UA  "), "UA"},
                 {alltrim("\nU\n"), "U\n"},
                 {alltrim(" \t U \t "), "U \t"},
                 {alltrim("  \0ABC\0  "sv), "\0ABC\0"sv},
                 {alltrim("    "), ""},
                 {alltrim(" \t"), ""},
                 {alltrim("nothing to be removed"), "nothing to be removed"}});
}

TEST(Substr, CountsFromOneAndClips) {
    expect_rows({{substr("abcdef", 2, 3), "bcd"},
                 {substr("abcdef", 2), "bcdef"},
                 {substr("abcdef", 2, {}), "bcdef"},
                 {substr("abcdef", 2, 7), "bcdef"},
                 {substr("abcdef", 1, 6), "abcdef"},
                 {substr("abcdef", 6, 1), "f"},
                 {substr("abcdef", 7), ""},
                 {substr("abcdef", 7, 1), ""},
                 {substr("abcdef", 2, 0), ""},
                 {substr("abcdef", 2, -1), ""},
                 {substr("", 1, 1), ""},
                 {substr("ab\0def"sv, 2, 3), "b\0d"sv},
                 {substr("abcdef", 2.9, 1.9), "b"},
                 {substr("abcdef", 1e300, 1), ""},
                 {substr("abcdef", 1, 1e300), "abcdef"}});
}

TEST(Substr, StartOfZeroIsOneAndNegativeCountsFromTheEnd) {
    expect_rows({{substr("abcdef", 0, 1), "a"},
                 {substr("abcdef", 0), "abcdef"},
                 {substr("abcdef", -1), "f"},
                 {substr("abcdef", -2, 1), "e"},
                 {substr("abcdef", -6, 2), "ab"},
                 {substr("abcdef", -10, 1), "a"},
                 {substr("abcdef", -10, 15), "abcdef"},
                 {substr("abcdef", -1e300, 2), "ab"},
                 {substr("", -1, 1), ""}});
}

TEST(LeftAndRight, ClipAtBothEnds) {
    expect_rows({{left("abcdef", 2), "ab"},
                 {left("abcdef", 0), ""},
                 {left("abcdef", -2), ""},
                 {left("abcdef", 10), "abcdef"},
                 {left("ab\0def"sv, 5), "ab\0de"sv},
                 {left("abcdef", 2.9), "ab"},
                 {right("abcdef", 2), "ef"},
                 {right("abcdef", 0), ""},
                 {right("abcdef", -2), ""},
                 {right("abcdef", 10), "abcdef"},
                 {right("ab\0def"sv, 5), "b\0def"sv}});
}

TEST(LeftAndRight, RightOfAWrongKindIsEmptyWithoutAnError) {
    expect_rows({{right(100, -10), ""}, {right("abcdef", "A"), ""}, {right({}, {}), ""}});
}

TEST(Chr, TakesTheLowEightBits) {
    expect_rows({{chr(65), "A"},
                 {chr(0), "\0"sv},
                 {chr(256), "\0"sv},
                 {chr(257), "\1"},
                 {chr(66.6), "B"},
                 {chr(-0.1), "\0"sv},
                 {chr(-65), "\xBF"},
                 {chr(-10000000.0), "\x80"}});
}

TEST(Asc, IsTheFirstByte) {
    expect_rows({{asc("HELLO"), 72}, {asc("\xFFz"), 255}, {asc("\0A"sv), 0}, {asc(""), 0}});
}

TEST(Chr, AndAscAreInverseForEveryByte) {
    for (int byte = 0; byte < 256; ++byte) EXPECT_TRUE(host_test::is_same(asc(chr(byte)), byte));
}

TEST(Strpeek, IsTheByteAtAPositionOrZero) {
    expect_rows({{strpeek("AB\xFF", 1), 65},
                 {strpeek("AB\xFF", 3), 255},
                 {strpeek("AB", 0), 0},
                 {strpeek("AB", -1), 0},
                 {strpeek("AB", 3), 0},
                 {strpeek("", 1), 0}});
}

TEST(Len, CountsBytesAndElements) {
    expect_rows({{len("A\0B"sv), 3}, {len(""), 0}, {len(array_of(1, 2)), 2}, {len(array_of()), 0}});
}

TEST(Valtype, HasALetterForEachKind) {
    expect_rows({{valtype({}), "U"},
                 {valtype(""), "C"},
                 {valtype(0.5), "N"},
                 {valtype(false), "L"},
                 {valtype(Date{}), "D"},
                 {valtype(array_of()), "A"},
                 {valtype(error_new()), "O"},
                 {valtype(Value::block([](Args) { return Value(); })), "B"}});
}

TEST(Empty, TextOfBlanksCountsAsNotGiven) {
    for (const std::string_view text : {""sv, "   "sv, " \r\t\n"sv}) EXPECT_TRUE(empty(text));
    for (const std::string_view text : {"  A"sv, " \rx\t"sv, "\0"sv, " \v"sv}) EXPECT_FALSE(empty(text));
}

TEST(Empty, OfTextsThatAreNoValues) {
    const std::string blanks = "  ";
    EXPECT_TRUE(empty(blanks));
    EXPECT_TRUE(empty("  "));
    EXPECT_FALSE(empty(blanks + "A"));
}

TEST(Empty, OfOtherKinds) {
    EXPECT_TRUE(empty({}));
    EXPECT_TRUE(empty(0));
    EXPECT_TRUE(empty(-0.0));
    EXPECT_TRUE(empty(1.5 * 1.5 - 2.25));
    EXPECT_FALSE(empty(0.001));
    EXPECT_TRUE(empty(false));
    EXPECT_FALSE(empty(true));
    EXPECT_TRUE(empty(Date{}));
    EXPECT_TRUE(empty(stod("20000230")));
    EXPECT_FALSE(empty(stod("20000229")));
    EXPECT_TRUE(empty(array_of()));
    EXPECT_FALSE(empty(array_of(0)));
    EXPECT_FALSE(empty(error_new()));
    EXPECT_FALSE(empty(Value::block([](Args) { return Value(); })));
}

TEST(Texts, WrongKindsRaiseArgumentErrors) {
    expect_argument_error(Subcode::upper, "UPPER", [] { return upper(100); });
    expect_argument_error(Subcode::lower, "LOWER", [] { return lower({}); });
    expect_argument_error(Subcode::trim, "TRIM", [] { return trim(100); });
    expect_argument_error(Subcode::ltrim, "LTRIM", [] { return ltrim(true); });
    expect_argument_error(Subcode::alltrim, "ALLTRIM", [] { return alltrim(100); });
    expect_argument_error(Subcode::substr, "SUBSTR", [] { return substr(100, 0, -1); });
    expect_argument_error(Subcode::substr, "SUBSTR", [] { return substr("abcdef", "a", 1); });
    expect_argument_error(Subcode::substr, "SUBSTR", [] { return substr("abcdef", 1, "a"); });
    expect_argument_error(Subcode::substr, "SUBSTR", [] { return substr("abcdef", {}); });
    expect_argument_error(Subcode::left, "LEFT", [] { return left("abcdef", "A"); });
    expect_argument_error(Subcode::left, "LEFT", [] { return left(100, 1); });
    expect_argument_error(Subcode::chr, "CHR", [] { return chr("A"); });
    expect_argument_error(Subcode::asc, "ASC", [] { return asc(65); });
    expect_argument_error(Subcode::strpeek, "STRPEEK", [] { return strpeek("A", "1"); });
    expect_argument_error(Subcode::len, "LEN", [] { return len(100); });
    expect_argument_error(Subcode::len, "LEN", [] { return len({}); });
}

}  // namespace
}  // namespace zmfb::host
