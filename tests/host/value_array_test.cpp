#include <gtest/gtest.h>

#include <vector>

#include "errors.h"
#include "host/error.h"
#include "host/value.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::is_same;

TEST(ArrayValue, IsHeldByReference) {
    const Value list = array_of(1, 2);
    const Value other = list;
    other[1] = "changed";
    list.push(3);
    EXPECT_TRUE(is_same(list, array_of("changed", 2, 3)));
    EXPECT_TRUE(is_same(other, list));
    EXPECT_TRUE(list.same(other));
    EXPECT_FALSE(list.same(array_of("changed", 2, 3)));
}

TEST(ArrayValue, CountsFromOneAndRaisesOutsideItsBounds) {
    const Value list = array_of("first", "last");
    EXPECT_TRUE(is_same(list[1], "first"));
    EXPECT_TRUE(is_same(list[2], "last"));
    CaughtErrors caught("ignored");
    for (const std::size_t index : {std::size_t{0}, std::size_t{3}, static_cast<std::size_t>(-1)}) {
        EXPECT_TRUE(list[index].is_nil());
        EXPECT_EQ(caught.take_count(), 1);
        EXPECT_EQ(caught.number("gencode"), 2);
        EXPECT_EQ(caught.number("subcode"), 1132);
    }
    EXPECT_TRUE(Value("text")[1].is_nil());
    EXPECT_TRUE(Value()[1].is_nil());
    EXPECT_EQ(caught.take_count(), 2);
}

TEST(ArrayValue, WhatIsWrittenOutsideItsBoundsIsNobodys) {
    const CaughtErrors caught;
    const Value list = array_of(1);
    list[5] = "lost";
    EXPECT_TRUE(list[6].is_nil());
    EXPECT_TRUE(is_same(list, array_of(1)));
}

TEST(ArrayValue, GrowsWhileItKeepsItsElements) {
    for (const std::size_t start : {0U, 1U, 3U, 4U, 9U}) {
        const Value list = Value::array_of_size(start);
        std::vector<std::size_t> expected(start, 0);
        for (std::size_t i = 0; i < start; ++i) list.items()[i] = 0;
        for (std::size_t i = 0; i < 1000; ++i) {
            list.push(i);
            expected.push_back(i);
        }
        ASSERT_EQ(list.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(list[i + 1].number(), expected[i]);
    }
}

TEST(ArrayValue, PushesAnElementOfItsOwn) {
    const Value list = array_of("a text longer than fourteen");
    for (int i = 0; i < 50; ++i) list.push(list[1]);
    EXPECT_EQ(list.size(), 51U);
    EXPECT_EQ(list[51].text(), "a text longer than fourteen");
}

TEST(ArrayValue, OfASizeIsNil) {
    const Value list = Value::array_of_size(3);
    for (const Value& element : list.items()) EXPECT_TRUE(element.is_nil());
    EXPECT_EQ(Value::array_of_size(0).size(), 0U);
}

TEST(ArrayValue, IsReleasedWithItsElements) {
    const Value inner = array_of("kept");
    Value list = array_of(inner, array_of(inner, "a text longer than fourteen"));
    list = {};
    EXPECT_TRUE(is_same(inner, array_of("kept")));
}

TEST(ArrayValue, AMillionDeepIsReleasedWithoutStack) {
    Value nested = array_of("a text longer than fourteen");
    for (int i = 0; i < 1'000'000; ++i) {
        Value outer = Value::array_of_size(0);
        outer.push(std::move(nested));
        nested = std::move(outer);
    }
    nested = {};
    EXPECT_TRUE(nested.is_nil());
}

TEST(ArrayValue, AWideTreeIsReleased) {
    Value level = array_of(1);
    for (int i = 0; i < 40; ++i) level = array_of(level, level, "x");
    level = {};
    EXPECT_TRUE(level.is_nil());
}

TEST(BlockValue, IsEvaluatedWithItsArguments) {
    const Value join = Value::block([](Args args) -> Value {
        EXPECT_TRUE(args[2].is_nil());
        return args[1];
    });
    const Value args[] = {"A", "B"};
    EXPECT_TRUE(is_same(join.eval(args), "B"));
    EXPECT_TRUE(join.eval({}).is_nil());
    EXPECT_TRUE(join.same(Value(join)));
    EXPECT_FALSE(join.same(Value::block([](Args) { return Value(); })));
}

TEST(BlockValue, LivesWhileItIsEvaluated) {
    Value self;
    const Value text = "a text longer than fourteen";
    self = Value::block([&self, text](Args) -> Value {
        self = {};
        return text;
    });
    EXPECT_TRUE(is_same(self.eval({}), text));
    EXPECT_TRUE(self.is_nil());
}

TEST(BlockValue, IsReleasedWithWhatItHolds) {
    const Value list = array_of(1);
    Value block = Value::block([list](Args) { return list; });
    EXPECT_TRUE(block.eval({}).same(list));
    Value copy = block;
    block = {};
    EXPECT_TRUE(copy.eval({}).same(list));
}

TEST(BlockValue, EvalOfAnotherKindRaises) {
    host_test::expect_argument_error(Subcode::eval, "EVAL", [] { return Value("no block").eval({}); });
}

}  // namespace
}  // namespace zmfb::host
