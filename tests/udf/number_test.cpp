#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string_view>

#include "result.h"

namespace zmfb::test {
namespace {

constexpr ISC_LONG lowest = std::numeric_limits<ISC_LONG>::min();
constexpr ISC_LONG highest = std::numeric_limits<ISC_LONG>::max();

struct number_case {
    std::string_view name;
    double number;
    integer length;
    integer decimals;
    std::string with_blanks;
    std::string with_zeros;
};

class Number : public testing::TestWithParam<number_case> {};

TEST_P(Number, WithBlanks) {
    const auto& given = GetParam();
    EXPECT_EQ(take(zmstr(&given.number, pointer(given.length), pointer(given.decimals))), given.with_blanks);
}

TEST_P(Number, WithZeros) {
    const auto& given = GetParam();
    EXPECT_EQ(take(zmstrzero(&given.number, pointer(given.length), pointer(given.decimals))),
              given.with_zeros);
}

const double infinity = std::numeric_limits<double>::infinity();
const std::string widest_stars(ZMRDDUDFS_NUMBER_MAX, '*');

const number_case number_cases[] = {
    {"Whole", 10, 5, 0, "   10", "00010"},
    {"Zero", 0, 5, 0, "    0", "00000"},
    {"ZeroWithDecimals", 0, 5, 2, " 0.00", "00.00"},
    {"WithDecimals", 10, 5, 1, " 10.0", "010.0"},
    {"BelowOneShowsAZeroBeforeThePoint", 0.1, 5, 1, "  0.1", "000.1"},
    {"SmallKeepsItsZerosBehindThePoint", 0.0012, 8, 4, "  0.0012", "000.0012"},
    {"Negative", -10, 5, 0, "  -10", "-0010"},
    {"NegativeFillingAllColumns", -10, 5, 1, "-10.0", "-10.0"},
    {"NegativeBelowOne", -0.5, 6, 1, "  -0.5", "-000.5"},
    {"NegativeBeforeItsZeros", -1.5, 8, 2, "   -1.50", "-0001.50"},
    {"FillingAllColumns", 99999, 5, 0, "99999", "99999"},
    {"HalfRoundsAwayFromZero", 10.5, 5, 0, "   11", "00011"},
    {"NegativeHalfRoundsAwayFromZero", -10.5, 5, 0, "  -11", "-0011"},
    {"EvenHalfRoundsAwayFromZero", 2.5, 5, 0, "    3", "00003"},
    {"HalfOfADecimalThatABinaryCannotHold", 1.005, 5, 2, " 1.01", "01.01"},
    {"AnotherHalfOfADecimal", 2.675, 5, 2, " 2.68", "02.68"},
    {"BelowHalfRoundsDown", 10.49, 5, 0, "   10", "00010"},
    {"RoundingCarriesThroughNines", 9.996, 5, 2, "10.00", "10.00"},
    {"RoundingMakesOneOfABitLess", 0.99, 5, 1, "  1.0", "001.0"},
    {"RoundingAHalfToOne", 0.5, 5, 0, "    1", "00001"},
    {"RoundingOverTheWidthOverflows", 99.6, 2, 0, "**", "**"},
    {"RoundingANegativeToZeroDropsTheSign", -0.4, 5, 0, "    0", "00000"},
    {"NegativeZeroHasNoSign", -0.0, 5, 1, "  0.0", "000.0"},
    {"TinyIsZero", 1e-300, 5, 2, " 0.00", "00.00"},
    {"Overflow", 100000, 5, 0, "*****", "*****"},
    {"NegativeOverflow", -100000, 6, 0, "******", "******"},
    {"DecimalsAreNotDroppedToFit", -100000, 8, 1, "********", "********"},
    {"NoRoomForTheZeroBeforeThePoint", 0.5, 2, 1, "**", "**"},
    {"LengthZeroCountsAsTen", 100000, 0, 0, "    100000", "0000100000"},
    {"NegativeLengthCountsAsTen", -100000, -5, 0, "   -100000", "-000100000"},
    {"LowestLengthCountsAsTen", 1, lowest, 0, "         1", "0000000001"},
    {"NullLengthCountsAsTen", 1, std::nullopt, 0, "         1", "0000000001"},
    {"NegativeDecimalsCountAsNone", -10, 5, -1, "  -10", "-0010"},
    {"NullDecimalsCountAsNone", 10.5, 5, std::nullopt, "   11", "00011"},
    {"MoreDecimalsThanColumns", 1, 5, 10, "*****", "*****"},
    {"HighestLengthAndDecimals", 1, highest, highest, widest_stars, widest_stars},
    {"LengthAboveTheLimit", 7, 1000, 0, std::string(ZMRDDUDFS_NUMBER_MAX - 1, ' ') + "7",
     std::string(ZMRDDUDFS_NUMBER_MAX - 1, '0') + "7"},
    {"DecimalsAtTheLimit", 0.5, 255, 253, "0.5" + std::string(252, '0'), "0.5" + std::string(252, '0')},
    {"DigitsBehindThe16thAreZero", std::sqrt(3.0), 21, 18, " 1.732050807568877000", "01.732050807568877000"},
    {"LargeWholeNumber", 9007199254740991.0, 17, 0, " 9007199254740991", "09007199254740991"},
    {"HugeWholeNumber", 1e200, 255, 0, std::string(54, ' ') + "1" + std::string(200, '0'),
     std::string(54, '0') + "1" + std::string(200, '0')},
    {"HugestNumber", std::numeric_limits<double>::max(), 255, 0, widest_stars, widest_stars},
    {"Infinity", infinity, 6, 2, "******", "******"},
    {"NegativeInfinity", -infinity, 0, 0, "**********", "**********"},
    {"NoNumber", std::nan(""), 4, 0, "****", "****"},
};

INSTANTIATE_TEST_SUITE_P(Udf, Number, testing::ValuesIn(number_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(NumberUdf, NullNumberGivesNull) {
    const ISC_LONG width = 5;
    const ISC_LONG decimals = 0;
    EXPECT_EQ(take(zmstr(nullptr, &width, &decimals)), sql_null);
    EXPECT_EQ(take(zmstrzero(nullptr, &width, &decimals)), sql_null);
}

}  // namespace
}  // namespace zmfb::test
