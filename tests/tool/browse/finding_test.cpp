// Orders, seeking, filters and moves.
#include "tests/tool/browse/browser.h"

namespace zmfb::test {
namespace {

class BrowseFinding : public Browser {
  protected:
    BrowseFinding() { make_orders(); }
    // What the filter's line asks for is as it was last.
    static void filter(const Tmux& shown, const std::string& condition) {
        shown.press({"f"});
        shown.expect("Only rows where:");
        for (int i = 0; i < 40; ++i) shown.press({"BSpace"});
        shown.type(condition);
        shown.press({"Enter"});
    }
};

TEST_F(BrowseFinding, GoesThroughTheOrdersAndStaysOnItsRecord) {
    const auto shown = browse({"customers"});
    shown->expect("row 1 of 10");
    shown->press({"Down", "o"});
    shown->expect("order NAME: UPPER(NAME)");
    shown->expect("record 2   row 4 of 10");
    shown->press({"o"});
    shown->expect("order CREDIT: CREDIT");
    shown->expect("record 2   row 1 of 10");
    shown->press({"o"});
    shown->expect("in the order of the record numbers");
    shown->expect("record 2   row 2 of 10");
}

TEST_F(BrowseFinding, SeeksInTheOrderAndGoesOn) {
    execute("update customers set name = 'Jo' where recno = 10");
    const auto shown = browse({"customers"});
    shown->expect("row 1 of 10");
    shown->press({"/"});
    shown->expect("a key is sought in an order");
    shown->press({"n"});
    shown->expect("nothing was sought");
    shown->press({"o"});
    shown->expect("order NAME: UPPER(NAME)");
    shown->press({"n"});
    shown->expect("nothing was sought");
    shown->press({"/"});
    shown->expect("Seek in NAME:");
    shown->type("jo");
    shown->press({"Enter"});
    shown->expect("record 10   row 3 of 10");
    shown->press({"n"});
    shown->expect("record 8   row 4 of 10");
    shown->press({"n"});
    shown->expect("no more rows with JO");
    shown->press({"/", "BSpace", "BSpace"});
    shown->type("zz");
    shown->press({"Enter"});
    shown->expect("there is no ZZ, and nothing behind it");
    shown->expect("record 8 ");
    shown->press({"/", "BSpace", "BSpace"});
    shown->type("lx");
    shown->press({"Enter"});
    shown->expect("there is no LX; this is what comes next");
    shown->expect("record 6 ");
    shown->press({"o", "o"});
    shown->expect("in the order of the record numbers");
    shown->press({"n"});
    shown->expect("nothing was sought");
}

TEST_F(BrowseFinding, SeeksNumbersInAnOrderOfNumbers) {
    const auto shown = browse({"customers"});
    shown->expect("row 1 of 10");
    shown->press({"o", "o", "/"});
    shown->type("310.00");
    shown->press({"Enter"});
    shown->expect("record 5   row 7 of 10");
    shown->press({"/"});
    shown->type("x");
    shown->press({"Enter"});
    shown->expect("what is sought is");
}

TEST_F(BrowseFinding, LeavesInWhatFitsAConditionAndKeepsItWhenAnotherIsWrong) {
    const auto shown = browse({"customers"});
    shown->expect("row 1 of 10");
    filter(*shown, "credit > 100 and city like '%é%'");
    shown->expect("row 1 of 1 ");
    filter(*shown, "nosuch = 1");
    shown->expect("Column unknown; NOSUCH");
    shown->expect("CUSTOMERS   where credit > 100 and city like '%é%'");
    filter(*shown, "1 / (code - 4) = 0");
    shown->expect("Integer divide by zero");
    shown->expect("CUSTOMERS   where credit > 100 and city like '%é%'");
    shown->press({"f", "x", "Escape", "F5"});
    shown->expect("row 1 of 1 ");
    filter(*shown, "code = 99");
    shown->expect(" no rows\n");
    filter(*shown, "");
    shown->expect("row 1 of 10");
}

TEST_F(BrowseFinding, TellsWhatIsWrongWithAConditionWithoutPositionsInAStatementThatNobodySees) {
    const auto shown = browse({"customers"}, 200);
    shown->expect("row 1 of 10");
    for (const auto& [condition, told] :
         std::vector<std::pair<std::string, std::string>>{{"nosuch = 1", "Column unknown; NOSUCH\n"},
                                                          {"credit > > 1", "Token unknown; >\n"},
                                                          {"credit >", "Unexpected end of command\n"}}) {
        filter(*shown, condition);
        const std::string screen = shown->expect(told);
        EXPECT_EQ(screen.find("line"), std::string::npos) << screen;
    }
    const auto view = browse({"--query", "select code, credit from customers"}, 200);
    view->expect("row 1");
    filter(*view, "nosuch = 1");
    view->expect("Column unknown; NOSUCH\n");
}

TEST_F(BrowseFinding, GoesToARecordByItsNumber) {
    const auto shown = browse({"customers"}, 60, 15);
    shown->expect("row 1 of 10");
    shown->press({"g", "7", "Enter"});
    shown->expect("record 7   row 7 of 10");
    shown->press({"g", "7", "7", "Enter"});
    shown->expect("there is no record 77");
    shown->press({"g", "x", "Enter"});
    shown->expect("x is no number");
    shown->expect("record 7   row 7 of 10");
}

TEST_F(BrowseFinding, ShowsRowsThatWereMeantWhenOthersAreDeletedOrAdded) {
    execute("update customers set city = 'A' where recno > 3");
    const auto shown = browse({"customers"});
    shown->expect("row 1 of 10");
    shown->press({"Down", "Down", "Down"});
    shown->expect("record 4   row 4 of 10");
    execute("delete from customers where recno in (2, 4)");
    shown->press({"F5"});
    shown->expect("record 5   row 3 of 8");
    execute("delete from customers");
    shown->press({"F5"});
    shown->expect(" no rows\n");
    shown->press({"Down", "Up", "PageDown", "PageUp", "C-Home", "C-End", "v", "n", "o"});
    shown->expect(" no rows\n");
    shown->press({"q"});
    shown->expect(Tmux::ended(0));
}

}  // namespace
}  // namespace zmfb::test
