// Numbers with decimals: no digit is lost, nothing overflows in silence.
#include "zmfbconn/decimal.h"

#include <climits>
#include <sstream>

#include "tests/sql/sql_error_of.h"

namespace zmfb::test {
namespace {

TEST(DecimalText, IsReadAndWrittenWithAllItsDecimals) {
    for (const char* text : {"0", "7", "-7", "10.50", "-0.05", "0.000000000000000001", "9223372036854775807",
                             "-9223372036854775808", "-9.223372036854775808"})
        EXPECT_EQ(to_string(Decimal(text)), text);
    EXPECT_EQ(to_string(Decimal("+1.5")), "1.5");
    EXPECT_EQ(to_string(Decimal(".5")), "0.5");
    EXPECT_EQ(to_string(Decimal(-5, 3)), "-0.005");
}

TEST(DecimalText, ThatIsNoNumberIsThrown) {
    for (const char* text :
         {"", "-", ".", "1.", "1,5", "1e5", " 1", "1 ", "1.2.3", "--1", "+-1", "1.-5", "x"})
        EXPECT_EQ(state_of([&] { (void)Decimal(text); }), "22018") << text;
}

TEST(DecimalText, OfMoreDigitsThanFitIsThrown) {
    for (const char* text : {"9223372036854775808", "0.0000000000000000001", "12345678901234567890.1"})
        EXPECT_EQ(state_of([&] { (void)Decimal(text); }), "22003") << text;
}

TEST(DecimalNumber, ComparesByValue) {
    EXPECT_EQ(Decimal("1.5"), Decimal("1.50"));
    EXPECT_LT(Decimal("-1.51"), Decimal("-1.5"));
    EXPECT_LT(Decimal("-0.05"), Decimal(0));
    EXPECT_GT(Decimal("0.000000000000000001"), Decimal(0));
    EXPECT_LT(Decimal(LLONG_MIN), Decimal(LLONG_MIN, 18));
    EXPECT_GT(Decimal(LLONG_MAX), Decimal(LLONG_MAX, 1));
    EXPECT_NE(Decimal("0.1"), Decimal("0.10000000000000001"));
}

TEST(DecimalNumber, AddsAndSubtractsExactly) {
    EXPECT_EQ(to_string(Decimal("0.1") + Decimal("0.25")), "0.35");
    EXPECT_EQ(to_string(Decimal("0.1") - 1), "-0.9");
    Decimal sum;
    for (int i = 0; i < 10; ++i) sum += Decimal("0.1");
    EXPECT_EQ(sum, 1);
    EXPECT_EQ(to_string(-Decimal("0.05")), "-0.05");
}

TEST(DecimalNumber, ThatOverflowsIsThrown) {
    EXPECT_EQ(state_of([] { (void)(Decimal(LLONG_MAX) + 1); }), "22003");
    EXPECT_EQ(state_of([] { (void)(Decimal(LLONG_MAX) + Decimal("0.1")); }), "22003");
    EXPECT_EQ(state_of([] { (void)-Decimal(LLONG_MIN); }), "22003");
    EXPECT_EQ(state_of([] { (void)Decimal(1, 19); }), "22003");
    EXPECT_EQ(state_of([] { (void)Decimal(1, -1); }), "22003");
}

TEST(DecimalNumber, IsRescaledWithoutALoss) {
    EXPECT_EQ(to_string(Decimal("1.5").rescaled(3)), "1.500");
    EXPECT_EQ(to_string(Decimal("1.500").rescaled(1)), "1.5");
    EXPECT_EQ(Decimal("1.5").rescaled(3).unscaled(), 1500);
    EXPECT_EQ(state_of([] { (void)Decimal("1.505").rescaled(2); }), "22003");
    EXPECT_EQ(state_of([] { (void)Decimal(LLONG_MAX).rescaled(1); }), "22003");
}

TEST(DecimalNumber, BecomesTheNearestDoubleWhenAsked) {
    EXPECT_EQ(Decimal("0.1").to_double(), 0.1);
    EXPECT_EQ(Decimal("-922337203685477.5808").to_double(), -922337203685477.5808);
}

TEST(DecimalNumber, GoesToAStream) {
    std::ostringstream out;
    out << Decimal("10.50");
    EXPECT_EQ(out.str(), "10.50");
}

}  // namespace
}  // namespace zmfb::test
