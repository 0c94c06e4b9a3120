#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "errors.h"
#include "host/date.h"
#include "host/value.h"
#include "values.h"

namespace zmfb::host {
namespace {

// Around the size up to which a text is held in the value itself.
constexpr std::size_t boundary = Value::inline_text_size;
const std::vector<std::size_t> sizes{0,  1,  7,  boundary - 1, boundary, boundary + 1,
                                     15, 16, 28, 29,           100,      70000};

std::string sample(std::size_t size) {
    std::string made;
    for (std::size_t i = 0; i < size; ++i) made += static_cast<char>(i * 7);
    return made;
}

TEST(TextValue, HoldsFourteenBytesInside) {
    EXPECT_EQ(boundary, 14U);
    const Value inside = sample(14);
    const auto* begin = reinterpret_cast<const char*>(&inside);
    EXPECT_GE(inside.text().data(), begin);
    EXPECT_LT(inside.text().data(), begin + sizeof inside);
    const Value outside = sample(15);
    const auto* other = reinterpret_cast<const char*>(&outside);
    EXPECT_TRUE(outside.text().data() < other || outside.text().data() >= other + sizeof outside);
}

TEST(TextValue, KeepsItsBytesAtEverySize) {
    for (const std::size_t size : sizes) {
        const Value text = sample(size);
        EXPECT_TRUE(text.is(Kind::character));
        EXPECT_EQ(text.text(), sample(size));
        EXPECT_EQ(text.size(), size);
    }
}

TEST(TextValue, CopyIsIndependentAtEverySize) {
    for (const std::size_t size : sizes) {
        if (size == 0) continue;
        Value original = sample(size);
        Value copy = original;
        copy.writable_text()[0] = 'x';
        EXPECT_EQ(original.text(), sample(size)) << size;
        EXPECT_EQ(copy.text()[0], 'x') << size;
        original.writable_text()[size - 1] = 'y';
        EXPECT_EQ(copy.text().back(), size == 1 ? 'x' : sample(size).back()) << size;
    }
}

TEST(TextValue, LongTextIsSharedUntilItIsWrittenTo) {
    Value original = sample(100);
    const Value copy = original;
    EXPECT_EQ(original.text().data(), copy.text().data());
    original.writable_text().front() = 'x';
    EXPECT_NE(original.text().data(), copy.text().data());
    const char* const own = original.text().data();
    original.writable_text().front() = 'y';
    EXPECT_EQ(original.text().data(), own);
}

TEST(TextValue, MoveLeavesNilAndKeepsTheBlock) {
    for (const std::size_t size : sizes) {
        Value original = sample(size);
        const char* const place = original.text().data();
        const Value moved = std::move(original);
        EXPECT_TRUE(original.is_nil());  // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(moved.text(), sample(size));
        EXPECT_EQ(moved.text().data() == place, size > boundary);
    }
}

TEST(TextValue, SelfAssignmentKeepsTheText) {
    for (const std::size_t size : sizes) {
        Value text = sample(size);
        Value& alias = text;
        text = alias;
        EXPECT_EQ(text.text(), sample(size));
        text = std::move(alias);
        EXPECT_EQ(text.text(), sample(size));
    }
}

TEST(TextValue, AppendsAcrossTheBoundary) {
    for (const std::size_t size : sizes) {
        for (const std::size_t more : sizes) {
            Value text = sample(size);
            text.append(sample(more));
            EXPECT_EQ(text.text(), sample(size) + sample(more)) << size << " + " << more;
        }
    }
}

TEST(TextValue, AppendLeavesACopyAsItWas) {
    for (const std::size_t size : sizes) {
        Value text = sample(size);
        const Value copy = text;
        text.append("more");
        EXPECT_EQ(copy.text(), sample(size));
        EXPECT_EQ(text.text(), sample(size) + "more");
    }
}

TEST(TextValue, AppendOfItselfOrAPartOfItself) {
    for (const std::size_t size : sizes) {
        Value text = sample(size);
        for (int i = 0; i < 3; ++i) {
            const std::string before(text.text());
            text.append(text.text());
            EXPECT_EQ(text.text(), before + before) << size;
            text.append(text.text().substr(before.size() / 2));
            EXPECT_EQ(text.text(), before + before + (before + before).substr(before.size() / 2)) << size;
        }
    }
}

TEST(TextValue, AppendIsAmortised) {
    Value text = "";
    int moves = 0;
    const char* place = nullptr;
    for (int i = 0; i < 100000; ++i) {
        text.append("x");
        if (text.text().data() != place) ++moves;
        place = text.text().data();
    }
    EXPECT_EQ(text.size(), 100000U);
    EXPECT_LT(moves, 40);
}

TEST(TextValue, OfASizeIsZeroBytes) {
    for (const std::size_t size : sizes) {
        const Value text = Value::text_of_size(size);
        EXPECT_EQ(text.text(), std::string(size, '\0'));
    }
}

TEST(TextValue, IsSameByContent) {
    EXPECT_TRUE(Value(sample(100)).same(sample(100)));
    EXPECT_TRUE(Value(sample(14)).same(sample(14)));
    EXPECT_FALSE(Value(sample(14)).same(sample(15)));
    EXPECT_FALSE(Value("1").same(1));
    Value grown = "";
    grown.append(sample(20));
    EXPECT_TRUE(grown.same(sample(20)));
}

TEST(TextValue, SwapsWithAnyKind) {
    Value text = sample(100);
    Value number = 5;
    text.swap(number);
    EXPECT_TRUE(host_test::is_same(text, 5));
    EXPECT_EQ(number.text(), sample(100));
}

TEST(Picture, SurvivesCopiesMovesAndArrays) {
    const Picture picture{12, 3};
    const Value number(2.5, picture);
    Value copy = number;
    EXPECT_EQ(copy.picture(), picture);
    const Value moved = std::move(copy);
    EXPECT_EQ(moved.picture(), picture);
    const Value list = array_of(number, 1);
    list.push(moved);
    EXPECT_EQ(list[1].picture(), picture);
    EXPECT_EQ(list[3].picture(), picture);
    EXPECT_EQ(list[2].picture(), Picture{});
    EXPECT_TRUE(number.same(2.5));
}

TEST(NumberValue, IntegerCutsTowardZeroAndHoldsWithinItsRange) {
    EXPECT_EQ(Value(2.9).integer(), 2);
    EXPECT_EQ(Value(-2.9).integer(), -2);
    EXPECT_EQ(Value(1e300).integer(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Value(9223372036854775808.0).integer(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Value(-1e300).integer(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).integer(), 0);
}

TEST(Accessors, OfAnotherKindRaiseAndAnswerWithNothing) {
    host_test::CaughtErrors caught("ignored");
    const Value text = "A";
    const Value number = 1;
    EXPECT_EQ(number.text(), "");
    EXPECT_EQ(text.number(), 0);
    EXPECT_EQ(text.integer(), 0);
    EXPECT_FALSE(number.logical());
    EXPECT_EQ(number.date(), Date{});
    EXPECT_TRUE(text.items().empty());
    EXPECT_EQ(number.size(), 0U);
    EXPECT_EQ(caught.take_count(), 7);
    EXPECT_EQ(caught.number("gencode"), 1);
    text.push(1);
    Value(1).append("more");
    Value writable = 1;
    EXPECT_TRUE(writable.writable_text().empty());
    EXPECT_EQ(caught.take_count(), 3);
    EXPECT_EQ(number.object(), nullptr);
    EXPECT_EQ(caught.take_count(), 0);
}

TEST(Args, MissingOnesReadAsNil) {
    const Value values[] = {"A", 2};
    const Args args = values;
    EXPECT_EQ(args.size(), 2U);
    EXPECT_TRUE(host_test::is_same(args[1], 2));
    EXPECT_TRUE(args[2].is_nil());
    EXPECT_TRUE(args[1000].is_nil());
    EXPECT_TRUE(Args()[0].is_nil());
    const Value only = 5;
    EXPECT_EQ(Args(only).size(), 1U);
}

}  // namespace
}  // namespace zmfb::host
