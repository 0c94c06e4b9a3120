#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "errors.h"
#include "host/date.h"
#include "host/number.h"
#include "host/settings.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

Value literal(double number, int whole, int decimals) {
    const int width = decimals > 0 ? whole + 1 + decimals : whole;
    return {number, Picture{static_cast<std::uint8_t>(width), static_cast<std::uint8_t>(decimals)}};
}

TEST(Str, TwoArgumentsRoundToAWholeNumber) {
    expect_rows({{str(10, 5), "   10"},
                 {str(10.5, 5), "   11"},
                 {str(-10.5, 5), "  -11"},
                 {str(10.4, 5), "   10"},
                 {str(0.5, 3), "  1"},
                 {str(-0.4, 5), "    0"},
                 {str(99999, 5), "99999"},
                 {str(99999.5, 5), "*****"},
                 {str(99999.5, 6), "100000"}});
}

TEST(Str, ThreeArgumentsAreFixed) {
    expect_rows({{str(10, 5, 1), " 10.0"},
                 {str(-10, 5, 1), "-10.0"},
                 {str(0.1, 5, 1), "  0.1"},
                 {str(-0.1, 5, 1), " -0.1"},
                 {str(-0.04, 5, 1), "  0.0"},
                 {str(10.5, 5, 0), "   11"},
                 {str(10.5, 5, -1), "   11"},
                 {str(2.675, 6, 2), "  2.68"},
                 {str(-2.675, 6, 2), " -2.68"},
                 {str(1.005, 6, 2), "  1.01"},
                 {str(0.1 + 0.2, 20, 16), "  0.3000000000000000"},
                 {str(9.995, 6, 2), " 10.00"},
                 {str(1.15 * 100, 5, 0), "  115"},
                 {str(0.285 * 100, 5, 0), "   29"},
                 {str(0.0049, 6, 2), "  0.00"},
                 {str(0.005, 6, 2), "  0.01"},
                 {str(1.5, 5.9, 1.9), "  1.5"}});
}

TEST(Str, LengthBelowOneIsTen) {
    expect_rows(
        {{str(100000, -5), "    100000"}, {str(10, 0), "        10"}, {str(-10.5, -5), "       -11"}});
}

TEST(Str, WhatDoesNotFitBecomesAsterisksAndKeepsItsDecimals) {
    expect_rows({{str(100000, 5), "*****"},
                 {str(-100000, 6), "******"},
                 {str(-100000, 8, 1), "********"},
                 {str(-10, 4, 1), "****"},
                 {str(0.5, 2, 1), "**"},
                 {str(1, 3, 5), "***"},
                 {str(1, 3, 1e300), "***"},
                 {str(1e300, 20), "********************"}});
}

TEST(Str, SixteenDigitsCount) {
    expect_rows({{str(std::sqrt(3.0), 21, 18), " 1.732050807568877000"},
                 {str(1.0 / 3, 22, 20), "0.33333333333333330000"},
                 {str(123456789012345.0, 15), "123456789012345"},
                 {str(1234567890123456.0, 16), "1234567890123456"},
                 {str(12345678901234567.0, 20), "   12345678901234570"},
                 {str(9007199254740992.0, 20), "    9007199254740992"},
                 {str(1e22, 23), "10000000000000000000000"},
                 {str(5e-324, 10, 8), "0.00000000"}});
}

TEST(Str, WhatIsNoNumberBecomesAsterisks) {
    expect_rows({{str(not_a_number), "**********"},
                 {str(infinity), "********************"},
                 {str(-infinity, 4), "****"},
                 {str(not_a_number, 6, 2), "******"}});
}

TEST(Str, NoMinusBeforeZero) {
    expect_rows({{str(-0.0), "         0"}, {str(-0.0, 5, 1), "  0.0"}, {str(negate(0)), "         0"}});
}

TEST(Str, LengthOrDecimalsOfAWrongKindRaise) {
    expect_argument_error(Subcode::str, "STR", [] { return str({}); });
    expect_argument_error(Subcode::str, "STR", [] { return str("1", 5); });
    expect_argument_error(Subcode::str, "STR", [] { return str(100, Value()); });
    expect_argument_error(Subcode::str, "STR", [] { return str(100, 10, {}); });
    expect_argument_error(Subcode::str, "STR", [] { return str(100, {}, 2); });
    expect_argument_error(Subcode::str, "STRZERO", [] { return strzero({}); });
    expect_argument_error(Subcode::str, "STRZERO", [] { return strzero(100, "A"); });
    expect_argument_error(Subcode::str, "STRZERO", [] { return strzero(100, 10, {}); });
}

TEST(Strzero, ZerosForBlanksAndTheSignInFront) {
    expect_rows({{strzero(10, 5), "00010"},
                 {strzero(-10, 5), "-0010"},
                 {strzero(-10, 5, 1), "-10.0"},
                 {strzero(10.5, 5, 1), "010.5"},
                 {strzero(-10.5, 7, 1), "-0010.5"},
                 {strzero(10.5, 5, 0), "00011"},
                 {strzero(10, 5, -1), "00010"},
                 {strzero(100000, 5), "*****"},
                 {strzero(0, 3), "000"},
                 {strzero(10), "0000000010"},
                 {strzero(-10), "-000000010"},
                 {strzero(literal(10.5, 10, 1)), "0000000010.5"}});
}

TEST(Pictures, OfLiteralsShowAsGiven) {
    expect_rows({{str(literal(10.5, 10, 2)), "        10.50"},
                 {str(literal(1000000000, 11, 0)), " 1000000000"},
                 {str(literal(10, 10, 2)), "        10.00"}});
}

TEST(Pictures, NumberWithoutOneShowsInTenColumnsWithItsDecimals) {
    expect_rows({{str(10), "        10"},
                 {str(0.5), "         0.5"},
                 {str(-12.125), "       -12.125"},
                 {str(0.1 + 0.2), "         0.3"},
                 {str(9999999999.0), "9999999999"},
                 {str(10000000000.0), "         10000000000"},
                 {str(-999999999), "-999999999"},
                 {str(-1000000000), "         -1000000000"}});
}

TEST(Pictures, SumsKeepTheLargerDecimals) {
    expect_rows({{str(literal(1.5, 10, 1) + literal(2.25, 10, 2)), "         3.75"},
                 {str(literal(1.50, 10, 2) - literal(0.5, 10, 1)), "         1.00"},
                 {str(Value(1) + Value(2)), "         3"},
                 {str(literal(9999999999, 10, 0) + Value(1)), "         10000000000"},
                 {str(val("12.50") + Value(1)), "        13.50"}});
}

TEST(Pictures, ProductsAddTheDecimals) {
    expect_rows({{str(times(literal(1.5, 10, 1), literal(1.5, 10, 1))), "         2.25"},
                 {str(times(literal(10.5, 10, 1), 2)), "        21.0"},
                 {str(times(100000, 100000)), "         10000000000"}});
}

TEST(Pictures, QuotientsShowSetDecimalsUnlessExact) {
    expect_rows({{str(divide(4, 2)), "         2"},
                 {str(divide(2, 4)), "         0.50"},
                 {str(divide(literal(4, 10, 1), 2)), "         2.00"},
                 {str(divide(1, 3)), "         0.33"}});
    set_decimals(4);
    const Value third = str(divide(1, 3));
    set_decimals(2);
    EXPECT_TRUE(host_test::is_same(third, "         0.3333"));
}

TEST(Pictures, NegatedAndAbsoluteNumbersKeepTheirDecimals) {
    expect_rows({{str(negate(literal(10.5, 10, 2))), "       -10.50"},
                 {str(negate(5000000000.0)), "         -5000000000"},
                 {str(abs(literal(-10.5, 10, 2))), "        10.50"},
                 {str(integer_part(literal(-10.9, 10, 2))), "       -10"}});
}

TEST(Pictures, OfValHasTheColumnsOfItsText) {
    expect_rows({{str(val("15.1A10")), "15.1000"},
                 {str(val("200 ")), " 200"},
                 {str(val("200")), "200"},
                 {str(val("")), "         0"},
                 {str(val("12.50")), "12.50"},
                 {str(val("  12.5")), "  12.5"},
                 {str(val("1.")), "1"},
                 {str(val(" 12 .10")), "  12.00"},
                 {str(val(".5")), "         0.5"},
                 {str(val("5000000000")), "5000000000"}});
}

TEST(Pictures, OfAVeryLongTextStaysWithinBounds) {
    const std::string digits(300, '9');
    expect_rows({{len(str(val(digits))), 255},
                 {len(str(val("1." + digits))), 255},
                 {len(str(val("." + digits))), 255}});
}

TEST(Pictures, OfDatePartsAreNarrow) {
    const Value day_of_march = stod("20070301");
    expect_rows({{str(year(day_of_march)), " 2007"},
                 {str(month(day_of_march)), "  3"},
                 {str(day(day_of_march)), "  1"},
                 {str(day_of_march - stod("20070201")), "        28"}});
}

}  // namespace
}  // namespace zmfb::host
