#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "result.h"

namespace zmfb::test {
namespace {

using one_text_function = char* (*)(const char*);

constexpr ISC_LONG lowest = std::numeric_limits<ISC_LONG>::min();
constexpr ISC_LONG highest = std::numeric_limits<ISC_LONG>::max();
const std::string longest(ZMRDDUDFS_TEXT_MAX, 'x');
const std::string too_long(ZMRDDUDFS_TEXT_MAX + 3, 'x');

struct one_text_case {
    std::string_view name;
    one_text_function function;
    std::string text;
    std::string expected;
};

class OneText : public testing::TestWithParam<one_text_case> {};

TEST_P(OneText, Gives) {
    const auto& [name, function, text, expected] = GetParam();
    EXPECT_EQ(take(function(text.c_str())), expected);
}

const one_text_case one_text_cases[] = {
    {"TrimTakesBlanksOffBothEnds", zmtrim, "  ab cd   ", "ab cd"},
    {"TrimKeepsTextWithoutBlanks", zmtrim, "ab", "ab"},
    {"TrimOfBlanksIsEmpty", zmtrim, "     ", ""},
    {"TrimOfEmptyIsEmpty", zmtrim, "", ""},
    {"TrimKeepsOtherWhiteSpace", zmtrim, " \ta\r\n ", "\ta\r\n"},
    {"TrimKeepsTheLongestText", zmtrim, longest, longest},
    {"TrimReadsNoMoreThanTheLongestText", zmtrim, too_long, longest},
    {"LowerChangesAsciiLetters", zmlower, "@AZ[`az{09", "@az[`az{09"},
    {"LowerChangesAccentedLetters", zmlower, "\xC0\xC7\xD6\xD8\xDE", "\xE0\xE7\xF6\xF8\xFE"},
    {"LowerKeepsTheMultiplicationSign", zmlower, "\xD7", "\xD7"},
    {"LowerKeepsWhatIsNoUpperCaseLetter", zmlower, "\xBF\xDF\xE0\xF7\xFF", "\xBF\xDF\xE0\xF7\xFF"},
    {"LowerOfEmptyIsEmpty", zmlower, "", ""},
    {"LowerReadsNoMoreThanTheLongestText", zmlower, too_long, longest},
    {"UpperChangesAsciiLetters", zmupper, "@AZ[`az{09", "@AZ[`AZ{09"},
    {"UpperChangesAccentedLetters", zmupper, "\xE0\xE7\xF6\xF8\xFE", "\xC0\xC7\xD6\xD8\xDE"},
    {"UpperKeepsTheDivisionSign", zmupper, "\xF7", "\xF7"},
    {"UpperKeepsLettersWithoutAnUpperCase", zmupper, "\xDF\xFF", "\xDF\xFF"},
    {"UpperKeepsWhatIsNoLowerCaseLetter", zmupper, "\xBF\xC0\xD7\xDE", "\xBF\xC0\xD7\xDE"},
    {"UpperOfEmptyIsEmpty", zmupper, "", ""},
    {"UpperReadsNoMoreThanTheLongestText", zmupper, too_long, std::string(ZMRDDUDFS_TEXT_MAX, 'X')},
};

INSTANTIATE_TEST_SUITE_P(Udf, OneText, testing::ValuesIn(one_text_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TextUdf, NullTextGivesNull) {
    const ISC_LONG one = 1;
    EXPECT_EQ(take(zmtrim(nullptr)), sql_null);
    EXPECT_EQ(take(zmlower(nullptr)), sql_null);
    EXPECT_EQ(take(zmupper(nullptr)), sql_null);
    EXPECT_EQ(take(zmsubstr(nullptr, &one, &one)), sql_null);
    EXPECT_EQ(take(zmpadr(nullptr, &one)), sql_null);
    EXPECT_EQ(take(zmpadl(nullptr, &one)), sql_null);
}

struct substr_case {
    std::string_view name;
    std::string text;
    integer start;
    integer length;
    std::string expected;
};

class Substr : public testing::TestWithParam<substr_case> {};

TEST_P(Substr, Gives) {
    const auto& [name, text, start, length, expected] = GetParam();
    EXPECT_EQ(take(zmsubstr(text.c_str(), pointer(start), pointer(length))), expected);
}

const substr_case substr_cases[] = {
    {"CountsFromOne", "abcdef", 1, 2, "ab"},
    {"TakesFromTheMiddle", "abcdef", 3, 2, "cd"},
    {"TakesTheLastByte", "abcdef", 6, 1, "f"},
    {"EndsWhereTheTextEnds", "abcdef", 5, 100, "ef"},
    {"StartZeroCountsAsOne", "abcdef", 0, 1, "a"},
    {"NullStartCountsAsOne", "abcdef", std::nullopt, 1, "a"},
    {"NegativeStartCountsFromTheEnd", "abcdef", -1, 5, "f"},
    {"NegativeStartAtTheBeginning", "abcdef", -6, 2, "ab"},
    {"NegativeStartBeforeTheBeginning", "abcdef", -10, 1, "a"},
    {"StartBehindTheEndGivesEmpty", "abcdef", 7, 1, ""},
    {"LengthZeroGivesEmpty", "abcdef", 2, 0, ""},
    {"NegativeLengthGivesEmpty", "abcdef", 2, -1, ""},
    {"NullLengthGivesEmpty", "abcdef", 2, std::nullopt, ""},
    {"EmptyTextGivesEmpty", "", 1, 5, ""},
    {"EmptyTextFromTheEndGivesEmpty", "", -1, 5, ""},
    {"LowestStart", "abc", lowest, highest, "abc"},
    {"HighestStart", "abc", highest, highest, ""},
    {"LowestLength", "abc", 1, lowest, ""},
    {"LongestText", longest, 1, highest, longest},
    {"TooLongTextIsReadToTheLimit", too_long, ZMRDDUDFS_TEXT_MAX, 10, "x"},
};

INSTANTIATE_TEST_SUITE_P(Udf, Substr, testing::ValuesIn(substr_cases),
                         [](const auto& info) { return std::string(info.param.name); });

struct pad_case {
    std::string_view name;
    std::string text;
    integer length;
    std::string right;
    std::string left;
};

class Pad : public testing::TestWithParam<pad_case> {};

TEST_P(Pad, FillsOnTheRight) {
    const auto& given = GetParam();
    EXPECT_EQ(take(zmpadr(given.text.c_str(), pointer(given.length))), given.right);
}

TEST_P(Pad, FillsOnTheLeft) {
    const auto& given = GetParam();
    EXPECT_EQ(take(zmpadl(given.text.c_str(), pointer(given.length))), given.left);
}

const std::string blanks_to_the_limit(ZMRDDUDFS_TEXT_MAX - 2, ' ');
const pad_case pad_cases[] = {
    {"ShortText", "ab", 5, "ab   ", "   ab"},
    {"FittingText", "abcde", 5, "abcde", "abcde"},
    {"LongTextKeepsItsLeftPart", "abcdefg", 5, "abcde", "abcde"},
    {"EmptyText", "", 3, "   ", "   "},
    {"LengthZero", "ab", 0, "", ""},
    {"NegativeLength", "ab", -7, "", ""},
    {"LowestLength", "ab", lowest, "", ""},
    {"NullLength", "ab", std::nullopt, "", ""},
    {"LengthAboveTheLimit", "ab", ZMRDDUDFS_TEXT_MAX + 1, "ab" + blanks_to_the_limit,
     blanks_to_the_limit + "ab"},
    {"HighestLength", "ab", highest, "ab" + blanks_to_the_limit, blanks_to_the_limit + "ab"},
    {"TextAboveTheLimit", too_long, highest, longest, longest},
};

INSTANTIATE_TEST_SUITE_P(Udf, Pad, testing::ValuesIn(pad_cases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zmfb::test
