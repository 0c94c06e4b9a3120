#include "host/array.h"

#include <gtest/gtest.h>

#include <vector>

#include "errors.h"
#include "host/compare.h"
#include "host/date.h"
#include "host/error.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;
using host_test::is_same;

Value block(Value (*body)(Args)) { return Value::block(body); }

TEST(Array, IsFilledWithNil) {
    expect_rows({{array(0), array_of()}, {array(2), array_of(Value(), Value())}});
}

TEST(Array, MoreDimensionsNest) {
    const Value dimensions[] = {2, 3};
    const Value made = array(dimensions);
    ASSERT_EQ(made.size(), 2U);
    EXPECT_EQ(made[1].size(), 3U);
    EXPECT_FALSE(made[1].same(made[2]));
    const Value none_first[] = {0, 3, 2};
    EXPECT_TRUE(is_same(array(none_first), array_of()));
}

TEST(Array, WithoutANumberIsNil) {
    const Value with_text[] = {1, 0, "A"};
    expect_rows({{array(Args()), {}}, {array(with_text), {}}, {array("A"), {}}, {array(Value()), {}}});
}

TEST(Array, NegativeOrAbsurdDimensionsRaiseABoundError) {
    host_test::CaughtErrors caught("answer");
    const Value large[] = {1e5, 1e5};
    const Value negative_later[] = {1, -1};
    for (const Value& got : {array(-1), array(negative_later), array(1e9), array(1e300), array(large)}) {
        EXPECT_TRUE(is_same(got, "answer"));
    }
    EXPECT_EQ(caught.take_count(), 5);
    EXPECT_EQ(caught.number("gencode"), 2);
    EXPECT_EQ(caught.number("subcode"), 1131);
}

TEST(Aadd, AppendsAndReturnsTheElement) {
    const Value list = array_of();
    expect_rows({{aadd(list, "A"), "A"}, {aadd(list, {}), {}}, {list, array_of("A", Value())}});
    expect_argument_error(Subcode::aadd, "AADD", [] { return aadd("no array", 1); });
}

TEST(Ascan, EmptyArrayGivesZero) { EXPECT_TRUE(is_same(ascan(array_of(), "A"), 0)); }

TEST(Ascan, FindsByValueWithinARange) {
    const Value list = array_of("A", 5, true, stod("20070301"), Value(), 5, "B");
    expect_rows({{ascan(list, "A"), 1},
                 {ascan(list, 5), 2},
                 {ascan(list, true), 3},
                 {ascan(list, stod("20070301")), 4},
                 {ascan(list, {}), 5},
                 {ascan(list, 5, 3), 6},
                 {ascan(list, 5, 3, 3), 0},
                 {ascan(list, 5, 3, 4), 6},
                 {ascan(list, 5, 0), 2},
                 {ascan(list, 5, -7), 2},
                 {ascan(list, 5, 1, 0), 0},
                 {ascan(list, 5, 8), 0},
                 {ascan(list, 5, 1, 1e300), 2},
                 {ascan(list, "Z"), 0},
                 {ascan(list, 6), 0}});
}

TEST(Ascan, TextsFollowSetExact) {
    const Value list = array_of(1, "ABC", "AB");
    expect_rows({{ascan(list, "AB"), 2}, {ascan(list, ""), 2}, {ascan(list, "ABCD"), 0}});
    set_exact(true);
    const Value exactly = ascan(list, "AB");
    const Value blanks_aside = ascan(list, "AB  ");
    const Value empty_text = ascan(list, "");
    set_exact(false);
    expect_rows({{exactly, 3}, {blanks_aside, 3}, {empty_text, 0}});
}

TEST(Ascan, OtherKindsNeverRaiseOrMatch) {
    const Value inner = array_of(1);
    const Value error = error_new();
    const Value list = array_of(inner, error, "5", block([](Args) { return Value(true); }));
    expect_rows({{ascan(list, inner), 0},
                 {ascan(list, error), 0},
                 {ascan(list, 5), 0},
                 {ascan(list, {}), 0},
                 {ascan("A", "A"), 0},
                 {ascan({}, 1), 0}});
}

TEST(Ascan, BlockChoosesTheFirstItIsTrueFor) {
    const Value list = array_of(1, 2, 3, 2);
    const Value is_two = block([](Args args) -> Value { return args[0].number() == 2; });
    expect_rows({{ascan(list, is_two), 2},
                 {ascan(list, is_two, 3), 4},
                 {ascan(list, is_two, 3, 1), 0},
                 {ascan(list, block([](Args) { return Value(); })), 0},
                 {ascan(list, block([](Args) { return Value(1); })), 0},
                 {ascan("A", is_two), 0}});
}

TEST(Ascan, BlockReceivesTheElementAlone) {
    std::vector<std::size_t> counts;
    const Value counting = Value::block([&](Args args) -> Value {
        counts.push_back(args.size());
        return false;
    });
    ascan(array_of("A", "B"), counting);
    EXPECT_EQ(counts, (std::vector<std::size_t>{1, 1}));
}

TEST(Ascan, BlockMayChangeTheArrayItRunsOver) {
    Value list = array_of("a text longer than fourteen", 2, 3);
    std::vector<Value> seen;
    const Value overwriting = Value::block([&](Args args) -> Value {
        list.items()[0] = 0;
        for (int i = 0; i < 100; ++i) list.push(i);
        seen.push_back(args[0]);
        return false;
    });
    EXPECT_TRUE(is_same(ascan(list, overwriting), 0));
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_TRUE(is_same(seen[0], "a text longer than fourteen"));
    const Value dropping = Value::block([&](Args) -> Value {
        list = {};
        return false;
    });
    EXPECT_TRUE(is_same(ascan(list, dropping), 0));
}

TEST(Acopy, CopiesWithinBothArrays) {
    const auto copied = [](const Value& start, const Value& count, const Value& place) {
        const Value source = array_of(1, 2, 3);
        const Value target = array_of("a", "b", "c", "d");
        EXPECT_TRUE(acopy(source, target, start, count, place).same(target));
        EXPECT_EQ(target.size(), 4U);
        return target;
    };
    expect_rows({{copied({}, {}, {}), array_of(1, 2, 3, "d")},
                 {copied(2, {}, {}), array_of(2, 3, "c", "d")},
                 {copied(0, {}, {}), array_of(1, 2, 3, "d")},
                 {copied(4, {}, {}), array_of("a", "b", "c", "d")},
                 {copied(1, 2, {}), array_of(1, 2, "c", "d")},
                 {copied(1, 0, {}), array_of("a", "b", "c", "d")},
                 {copied(1, -1, {}), array_of("a", "b", "c", "d")},
                 {copied(1, 9, {}), array_of(1, 2, 3, "d")},
                 {copied(1, 3, 3), array_of("a", "b", 1, 2)},
                 {copied(1, 3, 0), array_of(1, 2, 3, "d")},
                 {copied(1, 3, 4), array_of("a", "b", "c", 1)},
                 {copied(1, 3, 100), array_of("a", "b", "c", 1)}});
}

TEST(Acopy, OfNoArraysIsNil) {
    expect_rows({{acopy("C", array_of()), {}}, {acopy(array_of(), "C"), {}}, {acopy({}, {}), {}}});
}

TEST(Acopy, IntoAnEmptyArrayOrItself) {
    EXPECT_TRUE(is_same(acopy(array_of(1), array_of()), array_of()));
    const Value list = array_of(1, 2, 3, 4);
    expect_rows({{acopy(list, list, 1, 3, 2), array_of(1, 1, 2, 3)}});
    expect_rows({{acopy(list, list, 2, 3, 1), array_of(1, 2, 3, 3)}});
}

TEST(Acopy, SharesNestedArrays) {
    const Value inner = array_of(1);
    const Value target = array(1);
    acopy(array_of(inner), target);
    EXPECT_TRUE(target[1].same(inner));
}

TEST(Aclone, CopiesNestedArraysAndSharesTheRest) {
    const Value error = error_new();
    const Value code = block([](Args) { return Value(); });
    const Value original = array_of("A", array_of(1, array_of(2)), error, code);
    const Value copy = aclone(original);
    ASSERT_EQ(copy.size(), 4U);
    EXPECT_FALSE(copy.same(original));
    EXPECT_FALSE(copy[2].same(original[2]));
    EXPECT_FALSE(copy[2][2].same(original[2][2]));
    EXPECT_TRUE(copy[3].same(error));
    EXPECT_TRUE(copy[4].same(code));
    copy[2][2][1] = "changed";
    EXPECT_TRUE(is_same(original[2][2][1], 2));
    expect_rows({{aclone({}), {}}, {aclone("A"), {}}, {aclone(array_of()), array_of()}});
}

TEST(Aclone, OfAnArrayThatHoldsItselfHoldsItself) {
    Value ring = array(2);
    ring[1] = ring;
    Value copy = aclone(ring);
    EXPECT_TRUE(copy[1].same(copy));
    EXPECT_FALSE(copy.same(ring));
    ring[1] = {};
    copy[1] = {};
}

TEST(Aclone, OfDeeplyNestedArraysNeedsNoStack) {
    constexpr int depth = 1'000'000;
    Value nested = array_of("innermost");
    for (int i = 0; i < depth; ++i) nested = array_of(std::move(nested));
    Value copy = aclone(nested);
    nested = {};
    for (int i = 0; i < depth; ++i) copy = Value(copy[1]);
    EXPECT_TRUE(is_same(copy, array_of("innermost")));
}

}  // namespace
}  // namespace zmfb::host
