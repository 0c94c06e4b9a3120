#include "host/compare.h"

#include <gtest/gtest.h>

#include <string>

#include "errors.h"
#include "host/date.h"
#include "host/error.h"
#include "values.h"

namespace zmfb::host {
namespace {

using namespace std::string_view_literals;

class ExactOff : public testing::Test {
  protected:
    void SetUp() override { set_exact(false); }
};

class ExactOn : public testing::Test {
  protected:
    void SetUp() override { set_exact(true); }
    void TearDown() override { set_exact(false); }
};

// All six comparisons of two texts, as a text such as "= <= >=".
std::string holding(const Value& a, const Value& b) {
    std::string made;
    const auto note = [&](bool holds, const char* symbol) {
        if (holds) made += (made.empty() ? "" : " ") + std::string(symbol);
    };
    note(equal(a, b), "=");
    note(unequal(a, b), "!=");
    note(less(a, b), "<");
    note(less_or_equal(a, b), "<=");
    note(greater(a, b), ">");
    note(greater_or_equal(a, b), ">=");
    return made;
}

constexpr const char* same = "= <= >=";
constexpr const char* before = "!= < <=";
constexpr const char* after = "!= > >=";

TEST_F(ExactOff, EqualMeansBeginsWith) {
    EXPECT_EQ(holding("ABC", "ABC"), same);
    EXPECT_EQ(holding("ABCD", "ABC"), same);
    EXPECT_EQ(holding("ABC", ""), same);
    EXPECT_EQ(holding("", ""), same);
    EXPECT_EQ(holding("ABC ", "ABC"), same);
    EXPECT_EQ(holding("A\0B"sv, "A\0"sv), same);
    EXPECT_EQ(holding("", "ABC"), before);
    EXPECT_EQ(holding("ABC", "ABCD"), before);
    EXPECT_EQ(holding("ABC", "ABC "), before);
    EXPECT_EQ(holding("ABC", "ABD"), before);
    EXPECT_EQ(holding("ABD", "ABCD"), after);
    EXPECT_EQ(holding("a", "Z"), after);
    EXPECT_EQ(holding("\xE7", "z"), after);
}

TEST_F(ExactOn, EqualIgnoresTrailingBlanksOnly) {
    EXPECT_EQ(holding("ABC", "ABC"), same);
    EXPECT_EQ(holding("ABC ", "ABC"), same);
    EXPECT_EQ(holding("ABC", "ABC   "), same);
    EXPECT_EQ(holding("", "  "), same);
    EXPECT_EQ(holding("ABCD", "ABC"), after);
    EXPECT_EQ(holding("ABC", ""), after);
    EXPECT_EQ(holding(" ABC", "ABC"), before);
    EXPECT_EQ(holding("ABC\t", "ABC"), after);
    EXPECT_EQ(holding("ABC", "ABCD"), before);
}

TEST_F(ExactOn, ExactlyEqualIsNotTouched) {
    EXPECT_FALSE(exactly_equal("ABC ", "ABC"));
    EXPECT_TRUE(exactly_equal("ABC", "ABC"));
}

TEST_F(ExactOff, ExactlyEqualComparesEveryByte) {
    EXPECT_TRUE(exactly_equal("ABC", "ABC"));
    EXPECT_TRUE(exactly_equal("", ""));
    EXPECT_TRUE(exactly_equal("a text longer than fourteen", "a text longer than fourteen"));
    EXPECT_FALSE(exactly_equal("ABC", "AB"));
    EXPECT_FALSE(exactly_equal("ABC", ""));
    EXPECT_FALSE(exactly_equal("ABC ", "ABC"));
    EXPECT_FALSE(exactly_equal("ABC", "abc"));
}

TEST(Comparison, OfOtherKindsIsByValue) {
    EXPECT_EQ(holding(1, 1), same);
    EXPECT_EQ(holding(1, 2), before);
    EXPECT_EQ(holding(2.5, -1), after);
    EXPECT_EQ(holding(0, -0.0), same);
    EXPECT_EQ(holding(false, true), before);
    EXPECT_EQ(holding(true, true), same);
    EXPECT_EQ(holding(stod("20070301"), stod("20070302")), before);
    EXPECT_EQ(holding(Date{}, stod("01000101")), before);
    EXPECT_EQ(holding(Date{}, Date{}), same);
    EXPECT_TRUE(exactly_equal(1, 1));
    EXPECT_FALSE(exactly_equal(true, false));
    EXPECT_TRUE(exactly_equal(Date{}, Date{}));
}

TEST(Comparison, WithNilNeverRaises) {
    const Value others[] = {
        "", 1, false, Date{}, array_of(), error_new(), Value::block([](Args) { return Value(); })};
    const Value nil;
    EXPECT_TRUE(equal(nil, nil));
    EXPECT_FALSE(unequal(nil, nil));
    EXPECT_TRUE(exactly_equal(nil, nil));
    for (const Value& other : others) {
        EXPECT_FALSE(equal(nil, other));
        EXPECT_FALSE(equal(other, nil));
        EXPECT_TRUE(unequal(nil, other));
        EXPECT_TRUE(unequal(other, nil));
        EXPECT_FALSE(exactly_equal(nil, other));
        EXPECT_FALSE(exactly_equal(other, nil));
    }
}

TEST(Comparison, ArraysAndObjectsAreEqualByIdentity) {
    const Value list = array_of(1);
    const Value same_list = list;
    EXPECT_TRUE(exactly_equal(list, same_list));
    EXPECT_FALSE(exactly_equal(list, array_of(1)));
    EXPECT_FALSE(exactly_equal(array_of(), array_of()));
    const Value error = error_new();
    EXPECT_TRUE(exactly_equal(error, error));
    EXPECT_FALSE(exactly_equal(error, error_new()));
}

struct Raising {
    bool (*compare)(const Value&, const Value&);
    int subcode;
    const char* operation;
};

constexpr Raising every_comparison[] = {
    {exactly_equal, 1070, "=="}, {equal, 1071, "="},   {unequal, 1072, "!="},         {less, 1073, "<"},
    {less_or_equal, 1074, "<="}, {greater, 1075, ">"}, {greater_or_equal, 1076, ">="}};

void expect_raises(const Raising& row, const Value& a, const Value& b) {
    host_test::CaughtErrors caught(true);
    EXPECT_TRUE(row.compare(a, b)) << row.operation;
    EXPECT_EQ(caught.take_count(), 1) << row.operation;
    EXPECT_EQ(caught.number("subcode"), row.subcode);
    EXPECT_EQ(caught.number("gencode"), 1);
    EXPECT_EQ(caught.text("operation"), row.operation);
    EXPECT_TRUE(host_test::is_same(caught.field("args"), array_of(a, b)));
}

TEST(Comparison, OfMixedKindsRaises) {
    for (const Raising& row : every_comparison) {
        expect_raises(row, "A", 1);
        expect_raises(row, 1, true);
        expect_raises(row, array_of(), 1);
        expect_raises(row, Date{}, "A");
    }
}

TEST(Comparison, OfBlocksRaises) {
    const Value block = Value::block([](Args) { return Value(); });
    for (const Raising& row : every_comparison) expect_raises(row, block, block);
}

TEST(Comparison, EqualOrOrderOfArraysAndObjectsRaises) {
    const Value list = array_of();
    const Value error = error_new();
    for (const Raising& row : every_comparison) {
        if (row.compare == exactly_equal) continue;
        expect_raises(row, list, list);
        expect_raises(row, error, error);
    }
}

TEST(Comparison, OrderOfNilRaises) {
    for (const Raising& row : every_comparison) {
        if (row.subcode < 1073) continue;
        expect_raises(row, {}, {});
        expect_raises(row, "A", {});
        expect_raises(row, {}, 1);
    }
}

TEST(Comparison, IsTrueOnAnErrorOnlyWhenTheHandlerSaysSo) {
    for (const Value& answer : {Value(false), Value(), Value("T"), Value(1)}) {
        host_test::CaughtErrors caught(answer);
        for (const Raising& row : every_comparison) EXPECT_FALSE(row.compare("A", 1)) << row.operation;
    }
}

}  // namespace
}  // namespace zmfb::host
