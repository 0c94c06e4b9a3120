#include <gtest/gtest.h>

#include "tests/matrix/values.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

struct SplitCase {
    std::string_view name;
    std::string_view line;
    std::string_view separator;
    std::vector<std::string> pieces;
};

class Split : public ::testing::TestWithParam<SplitCase> {};

TEST_P(Split, GivesThePieces) {
    zmFBConn object;
    EXPECT_EQ(elements(object.call("toarray", GetParam().line, GetParam().separator)), GetParam().pieces);
}

using namespace std::string_view_literals;

INSTANTIATE_TEST_SUITE_P(
    ToArray, Split,
    ::testing::Values(SplitCase{"TwoPieces", "a::b", "::", {"a", "b"}},
                      SplitCase{"ASeparatorAtTheEndAddsAnEmptyText", "a::b::", "::", {"a", "b", ""}},
                      SplitCase{"ASeparatorAtTheStartGivesAnEmptyText", "::a", "::", {"", "a"}},
                      SplitCase{"AnEmptyLineGivesNothing", "", "::", {}},
                      SplitCase{"WithoutTheSeparatorTheWholeLine", "abc", "::", {"abc"}},
                      SplitCase{"TheSeparatorAloneGivesTwoEmptyTexts", "::", "::", {"", ""}},
                      SplitCase{"AdjacentSeparatorsGiveAnEmptyText", "a::::b", "::", {"a", "", "b"}},
                      SplitCase{"OverlapsAreFoundFromTheLeft", ":::", "::", {"", ":", ""}},
                      SplitCase{"PiecesAreNotTrimmed", " a :: b ", "::", {" a ", " b "}},
                      SplitCase{"TheSeparatorIsCaseSensitive", "aXbxc", "x", {"aXb", "c"}},
                      SplitCase{"TheArrowAtTheEndStillGivesTwoSides", "x=>", "=>", {"x", ""}},
                      SplitCase{"TheArrowAloneStillGivesTwoSides", "=>", "=>", {"", ""}},
                      SplitCase{"ASeparatorLongerThanTheLine", "a", "abc", {"a"}},
                      SplitCase{"AnEmptySeparatorCountsOnlyAsTheEnd", "abc", "", {"abc", ""}},
                      SplitCase{"AnEmptySeparatorAndAnEmptyLine", "", "", {""}},
                      SplitCase{"ZeroBytesAreBytes", "a\0::b"sv, "::", {std::string("a\0", 2), "b"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ToArray, GivesAnEmptyArrayForOtherKindsThanTexts) {
    zmFBConn object;
    const Value none[] = {Value(), Value(5), Value(true), texts({"a"})};
    for (const Value& other : none) {
        const Value left = object.call("toarray", other, "::");
        const Value right = object.call("toarray", "a::b", other);
        ASSERT_TRUE(left.is(host::Kind::array) && right.is(host::Kind::array));
        EXPECT_EQ(left.size() + right.size(), 0U);
    }
    EXPECT_EQ(object.call("toarray").size(), 0U);
}

TEST(ToArray, SplitsALongLineInOneWalk) {
    std::string line;
    for (int i = 0; i < 200000; ++i) line += "ab::";
    zmFBConn object;
    const Value pieces = object.call("toarray", line, "::");
    ASSERT_EQ(pieces.size(), 200001U);
    EXPECT_EQ(pieces[200000].text(), "ab");
    EXPECT_EQ(pieces[200001].text(), "");
}

}  // namespace
}  // namespace zmfb::test
