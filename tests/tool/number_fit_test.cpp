#include "tool/import/number_fit.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

using namespace zmfb::tool;

struct NumberCase {
    std::string_view text;
    std::size_t length;
    int decimals;
    std::string_view problem;
};

// What the engine answered to each, through an external table.
constexpr NumberCase number_cases[] = {
    {"5", 4, 2, ""},
    {"+5", 4, 2, ""},
    {"-5", 4, 2, ""},
    {".5", 4, 2, ""},
    {"5.", 4, 2, ""},
    {"-.5", 4, 2, ""},
    {"1E+2", 4, 2, ""},
    {"1.5e2", 4, 2, ""},
    {"1e-2", 4, 2, ""},
    {"1e-300", 4, 2, ""},
    {"000000000000000000000000000005", 4, 2, ""},
    {"0.00000000000000000000000001", 4, 2, ""},
    {"327.67", 4, 2, ""},
    {"327.674", 4, 2, ""},
    {"-327.684", 4, 2, ""},
    {"-327.68", 4, 2, ""},
    {"327.68", 4, 2, "too wide for NUMERIC(4,2)"},
    {"327.675", 4, 2, "too wide for NUMERIC(4,2)"},
    {"-327.685", 4, 2, "too wide for NUMERIC(4,2)"},
    {"2.147483647", 4, 2, ""},
    {"2.147483648", 4, 2, "too wide for NUMERIC(4,2)"},
    {"1.5000000000", 9, 2, "too wide for NUMERIC(9,2)"},
    {"21474836.47", 9, 2, ""},
    {"-21474836.48", 9, 2, ""},
    {"21474836.474", 9, 2, "too wide for NUMERIC(9,2)"},
    {"214748364.7", 9, 2, "too wide for NUMERIC(9,2)"},
    {"-2147483648", 9, 0, ""},
    {"2147483648", 9, 0, "too wide for NUMERIC(9,0)"},
    {"9999999999.99", 10, 2, ""},
    {"1e3275", 10, 2, "too wide for NUMERIC(10,2)"},
    {"0e3275", 10, 2, ""},
    {"0e3276", 10, 2, "too wide for NUMERIC(10,2)"},
    {"92233720368547758.07", 18, 2, ""},
    {"-92233720368547758.08", 18, 2, ""},
    {"92233720368547758.08", 18, 2, "too wide for NUMERIC(18,2)"},
    {"92233720368547758.074", 18, 2, "too wide for NUMERIC(18,2)"},
    {"1.000000000000000000", 18, 2, ""},
    {"1.0000000000000000000", 18, 2, "too wide for NUMERIC(18,2)"},
    {"922337203685477580.7e1", 18, 0, ""},
    {"9.3e18", 18, 0, "too wide for NUMERIC(18,0)"},
};

TEST(NumberProblem, IsWhatTheEngineWouldRefuse) {
    for (const NumberCase& one : number_cases) {
        EXPECT_EQ(number_problem(one.text, one.length, one.decimals), one.problem)
            << one.text << " for " << one.length << ',' << one.decimals;
    }
}

TEST(NumberProblem, SaysWhatIsRounded) {
    for (const auto& [text, is_rounded] :
         {std::pair{"1.235", true}, {"1.23", false}, {"1.230", false}, {"5e-3", true}, {"0.000", false}}) {
        bool rounded = false;
        EXPECT_EQ(number_problem(text, 10, 2, &rounded), "");
        EXPECT_EQ(rounded, is_rounded) << text;
    }
}

}  // namespace
}  // namespace zmfb::test
