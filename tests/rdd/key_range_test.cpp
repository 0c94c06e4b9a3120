// Which keys a sought value has.
#include "rdd/key_range.h"

#include <gtest/gtest.h>

#include <cmath>

#include "rdd/key_expression.h"

namespace zmfb::test {
namespace {

using namespace std::chrono;

rdd::Order order_by(const char* expression) {
    static const Structure fields{{"CITY", "C", 5, 0},
                                  {"CREDIT", "N", 10, 2},
                                  {"CODE", "N", 6, 0},
                                  {"BORN", "D", 8, 0},
                                  {"GOOD", "L", 1, 0}};
    return rdd::order_of("T", "O", expression, false, {fields});
}

// The key of a record with number 7.
std::string key(std::string value, std::size_t width) {
    value.resize(width, ' ');
    return value + "1000000000000007";
}

struct Sought {
    const char* expression;
    Parameter value;
    std::string record;  // its value as a key
    bool found;
};

class KeyRange : public ::testing::TestWithParam<Sought> {};

TEST_P(KeyRange, HoldsTheKeysOfTheValue) {
    const auto& [expression, value, record, found] = GetParam();
    const rdd::Order order = order_by(expression);
    EXPECT_EQ(rdd::range_of(order, value).holds(key(record, order.width)), found);
}

INSTANTIATE_TEST_SUITE_P(
    Table, KeyRange,
    ::testing::Values(
        Sought{"CITY", "Cork", "Cork", true}, Sought{"CITY", "Co", "Cork", true},
        Sought{"CITY", "", "Cork", true}, Sought{"CITY", "Cork ", "Cork", true},
        Sought{"CITY", "Cork     ", "Cork", true}, Sought{"CITY", "Cork", "Cor", false},
        Sought{"CITY", "cork", "Cork", false}, Sought{"CITY", "Corks-1", "Corks", false},
        Sought{"CITY", "Cor", "Cor\x01", true}, Sought{"CITY", "Cor ", "Cor\x01", false},
        Sought{"CITY", "\xFF", "\xFF\xFF", true}, Sought{"CREDIT", 10, "50000000000000010.00", true},
        Sought{"CREDIT", 10.25, "50000000000000010.25", true},
        Sought{"CREDIT", Decimal("10.250"), "50000000000000010.25", true},
        Sought{"CREDIT", Decimal("10.251"), "50000000000000010.25", false},
        Sought{"CREDIT", 10.251, "50000000000000010.25", false},
        Sought{"CREDIT", 0.1 + 0.2, "50000000000000000.30", true},
        Sought{"CREDIT", -0.05, "49999999999999999.95", true},
        Sought{"CODE", -3, "4999999999999999997", true}, Sought{"CODE", 1e300, "5000000000000000000", false},
        Sought{"BORN", 2000y / 2 / 29, "2000-02-29", true}, Sought{"BORN", std::nullopt, "", true},
        Sought{"BORN", std::nullopt, "2000-02-29", false}, Sought{"GOOD", true, "T", true},
        Sought{"GOOD", false, "T", false}));

TEST(KeyRangeBounds, OfAValueBetweenTwoKeysLieBetweenThem) {
    const rdd::Order order = order_by("CREDIT");
    const std::string below = key("50000000000000010.25", order.width),
                      above = key("50000000000000010.26", order.width);
    for (const Parameter value : {Parameter(Decimal("10.251")), Parameter(10.251)}) {
        const rdd::KeyRange range = rdd::range_of(order, value);
        EXPECT_LT(below, range.low);
        EXPECT_LT(range.low, above);
        EXPECT_LT(range.high, above);
        EXPECT_LT(below, range.high);
    }
    EXPECT_LT(rdd::range_of(order, -1e300).low, key("40000000000000000.00", order.width));
    EXPECT_GT(rdd::range_of(order, 1e300).low, key("60000000000000000.00", order.width));
}

TEST(KeyRangeBounds, OfATextThatIsTooLongLieBehindItsBeginning) {
    const rdd::Order order = order_by("CITY");
    const rdd::KeyRange range = rdd::range_of(order, "Corks-1");
    EXPECT_LT(key("Corks", order.width), range.low);
    EXPECT_LT(range.low, key("Corkt", order.width));
}

TEST(KeyRangeTypes, AreThoseOfTheOrder) {
    const struct {
        const char* expression;
        Parameter value;
        const char* why;
    } cases[] = {
        {"CITY", 7, "The keys of the order O (CITY) are texts; what is sought is a number"},
        {"CITY", true, "The keys of the order O (CITY) are texts; what is sought is a logical"},
        {"CREDIT", "7", "The keys of the order O (CREDIT) are numbers; what is sought is a text"},
        {"BORN", "20000229", "The keys of the order O (BORN) are dates; what is sought is a text"},
        {"BORN", 7.5, "The keys of the order O (BORN) are dates; what is sought is a number"},
        {"GOOD", std::nullopt, "The keys of the order O (GOOD) are logicals; what is sought is a date"},
        {"CITY", TimeOfDay(1),
         "The keys of the order O (CITY) are texts; what is sought is of a type that no key has"},
        {"CREDIT", std::nan(""), "No key is a number that is none"},
    };
    for (const auto& [expression, value, why] : cases) {
        try {
            rdd::range_of(order_by(expression), value);
            ADD_FAILURE() << why;
        } catch (const rdd::OrderError& error) {
            EXPECT_STREQ(error.what(), why);
        }
    }
    EXPECT_THROW(rdd::range_of(rdd::natural_order(), 7), rdd::OrderError);
}

}  // namespace
}  // namespace zmfb::test
