#include "matrix/decide.h"

#include <gtest/gtest.h>

#include "tests/matrix/matrix_test.h"

namespace zmfb::test {
namespace {

using matrix::Action;
using matrix::Decision;

const Field a{"A", "C", 10, 0};
const Field b{"B", "N", 12, 2};
const Field c{"C", "D", 8, 0};
const Field drop{"DROP FIELD", "", 0, 0};

// On the table {A, B, C}, line 2 of a matrix whose lines 1 and 3 ask for no change.
struct DecisionCase {
    std::string_view name;
    Field left;
    Field right;
    Action action;
    bool reorder;
};

using Deciding = MatrixTest;

class DecidingALine : public MatrixTest, public ::testing::WithParamInterface<DecisionCase> {};

TEST_P(DecidingALine, GivesTheAction) {
    const DecisionCase& asked = GetParam();
    const Decision decision =
        matrix::decide(db.self(), field(asked.left), structure({a, asked.right, c}), structure({a, b, c}), 2);
    EXPECT_EQ(decision.action, asked.action);
    EXPECT_EQ(decision.reorder, asked.reorder);
}

INSTANTIATE_TEST_SUITE_P(
    Matrix, DecidingALine,
    ::testing::Values(
        DecisionCase{"Unchanged", b, b, Action::none, false},
        DecisionCase{"UnchangedWhateverTheLeftSide", {"X", "L", 1, 0}, b, Action::none, false},
        DecisionCase{"Drop", b, drop, Action::drop, false},
        DecisionCase{"DropOfAFieldThatIsElsewhere", c, drop, Action::drop, false},
        DecisionCase{"DropOfAFieldThatIsGone", {"X", "C", 1, 0}, drop, Action::already_dropped, false},
        DecisionCase{"Length", b, {"B", "N", 14, 2}, Action::alter, true},
        DecisionCase{"Decimals", b, {"B", "N", 12, 3}, Action::alter, true},
        DecisionCase{"Type", b, {"B", "C", 12, 2}, Action::alter, true},
        DecisionCase{"Rename", b, {"PRICE", "N", 12, 2}, Action::alter, true},
        DecisionCase{"RenameAndType", b, {"PRICE", "C", 20, 0}, Action::alter, true},
        DecisionCase{
            "RenameOfAFieldThatIsGone", {"X", "N", 12, 2}, {"PRICE", "N", 12, 2}, Action::none, false},
        DecisionCase{
            "SizeOfAFieldWhoseLeftSideIsGone", {"X", "N", 12, 2}, {"B", "N", 14, 2}, Action::none, false},
        DecisionCase{"Move", c, c, Action::none, true},
        DecisionCase{"MoveAndSize", {"C", "D", 8, 0}, {"C", "C", 20, 0}, Action::alter, true},
        DecisionCase{"Add", {"X", "C", 5, 0}, {"X", "C", 5, 0}, Action::add, true},
        DecisionCase{"AddWhoseSidesDiffer", {"X", "C", 5, 0}, {"X", "N", 7, 1}, Action::add, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Deciding, ALineBehindTheLastFieldAdds) {
    const Value rights = structure({a, b, c, {"X", "L", 1}});
    const Decision decision = matrix::decide(db.self(), rights[4], rights, structure({a, b, c}), 4);
    EXPECT_EQ(decision.action, Action::add);
    EXPECT_TRUE(decision.reorder);
}

TEST_F(Deciding, ALineBehindTheLastFieldMovesAFieldThatIsThere) {
    const Value rights = structure({a, drop, c, b});
    const Decision decision = matrix::decide(db.self(), field(b), rights, structure({a, b, c}), 4);
    EXPECT_EQ(decision.action, Action::none);
    EXPECT_TRUE(decision.reorder);
}

}  // namespace
}  // namespace zmfb::test
