#include <gtest/gtest.h>

#include <string>

#include "errors.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;
using namespace std::string_view_literals;

TEST(At, IsTheFirstPosition) {
    expect_rows({{at("A", "ABCADEF"), 1},
                 {at("AB", "AB"), 1},
                 {at("D", "ABCDEF"), 4},
                 {at("F", "ABCDEF"), 6},
                 {at("a", "ABCDEF"), 0},
                 {at("ABCDEFG", "ABCDEF"), 0},
                 {at("", "ABC"), 0},
                 {at("", ""), 0},
                 {at("A", ""), 0},
                 {at("\0"sv, "AB\0"sv), 3}});
}

TEST(Rat, IsTheLastPosition) {
    expect_rows({{rat("A", "ABCADEF"), 4},
                 {rat("AB", "AAB"), 2},
                 {rat("AA", "AAAA"), 3},
                 {rat("/", "/a/b"), 3},
                 {rat("X", "ABCDEF"), 0},
                 {rat("", "ABC"), 0},
                 {rat("A", ""), 0}});
}

TEST(Rat, OfAWrongKindIsZeroWithoutAnError) {
    expect_rows({{rat("", 100), 0}, {rat(100, ""), 0}, {rat({}, {}), 0}});
}

TEST(Contained, IsCaseSensitiveAndFalseForNothing) {
    EXPECT_TRUE(contained("D", "BCDE"));
    EXPECT_TRUE(contained("X", "\0X"sv));
    EXPECT_FALSE(contained("D", "bcde"));
    EXPECT_FALSE(contained("BD", "BCD"));
    EXPECT_FALSE(contained("", "ABC"));
    EXPECT_FALSE(contained("", ""));
}

TEST(Contained, AnswersTrueOnAnErrorOnlyWhenTheHandlerDoes) {
    {
        host_test::CaughtErrors caught(true);
        EXPECT_TRUE(contained(1, "AA"));
        EXPECT_EQ(caught.number("subcode"), 1109);
        EXPECT_EQ(caught.text("operation"), "$");
    }
    for (const Value& answer : {Value(false), Value(), Value(1)}) {
        host_test::CaughtErrors caught(answer);
        EXPECT_FALSE(contained("A", {}));
        EXPECT_EQ(caught.take_count(), 1);
    }
}

TEST(Strtran, ReplacesEveryOccurrenceLeftToRight) {
    expect_rows({{strtran("two  blanks", "  ", " "), "two blanks"},
                 {strtran("AAA", "AA", "B"), "BA"},
                 {strtran("AA", "A"), ""},
                 {strtran("ABA", "B", ""), "AA"},
                 {strtran("ABC", "X", "Y"), "ABC"},
                 {strtran("", "X", "Y"), ""},
                 {strtran("A", "A", "a text longer than fourteen"), "a text longer than fourteen"},
                 {strtran("it's a 'quoted' one", "'", "''"), "it''s a ''quoted'' one"},
                 {strtran("A\0B\0"sv, "\0"sv, "."), "A.B."}});
}

TEST(Strtran, ReplacementContainingTheSearchedTextDoesNotLoop) {
    const Value once = strtran("create (@@COLUMNS)", "@@COLUMNS", "A,@@COLUMNS");
    EXPECT_TRUE(host_test::is_same(once, "create (A,@@COLUMNS)"));
    EXPECT_TRUE(host_test::is_same(strtran(once, "@@COLUMNS", "B"), "create (A,B)"));
}

TEST(Strtran, StartAndCountChooseOccurrences) {
    expect_rows({{strtran("AAAA", "A", "B", 2), "ABBB"},
                 {strtran("AAAA", "A", "B", 2, 2), "ABBA"},
                 {strtran("AAAA", "A", "B", 1, 1), "BAAA"},
                 {strtran("AAAA", "A", "B", 5), "AAAA"},
                 {strtran("AAAA", "A", "B", 1, 0), "AAAA"},
                 {strtran("AAAA", "A", "B", 1, -1), "AAAA"},
                 {strtran("AAAA", "A", "B", 0, 1), "BAAA"},
                 {strtran("AAAA", "A", "B", {}, 2), "BBAA"},
                 {strtran("AA", "A", "1", "2"), "11"},
                 {strtran("AA", "A", 1), ""}});
}

TEST(Strtran, EmptySearchChangesNothing) {
    expect_rows({{strtran("ABC", "", "X"), "ABC"}, {strtran("", "", "X"), ""}});
}

TEST(Strtran, ResultTooLongForATextOverflows) {
    const Value many = replicate("A", 1 << 20);
    const Value long_text = replicate("B", 1 << 12);
    host_test::CaughtErrors caught("");
    EXPECT_TRUE(host_test::is_same(strtran(many, "A", long_text), ""));
    EXPECT_EQ(caught.number("subcode"), 1234);
    EXPECT_EQ(caught.number("gencode"), 3);
}

TEST(Searches, WrongKindsRaiseArgumentErrors) {
    expect_argument_error(Subcode::at, "AT", [] { return at(100, ""); });
    expect_argument_error(Subcode::at, "AT", [] { return at("", {}); });
    expect_argument_error(Subcode::strtran, "STRTRAN", [] { return strtran("AA", 1); });
    expect_argument_error(Subcode::strtran, "STRTRAN", [] { return strtran(1, "A"); });
    expect_argument_error(Subcode::strtran, "STRTRAN", [] { return strtran("AA", {}); });
}

}  // namespace
}  // namespace zmfb::host
