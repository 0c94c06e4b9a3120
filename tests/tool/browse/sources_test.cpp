// What can be looked at, and what cannot.
#include <gtest/gtest.h>

#include "tests/support/dialogue.h"
#include "tests/tool/browse/browser.h"

namespace zmfb::test {
namespace {

class BrowseSources : public Browser {
  protected:
    [[nodiscard]] Finished without_terminal(std::vector<std::string> words) const {
        words.insert(words.begin(), {ZMFB_TOOL, "--db", database(), "browse"});
        return run(words);
    }
};

TEST_F(BrowseSources, AreListedAndOpenedAndComeBackTo) {
    execute("create view rich as select code, name from customers where credit > 100");
    const auto shown = browse({}, 60, 15);
    const std::string list = shown->expect("row 1 of 5");
    EXPECT_NE(list.find("TABLE                        ║KIND      │"), std::string::npos) << list;
    EXPECT_NE(list.find("CUSTOMERS                    ║driver    │"), std::string::npos) << list;
    EXPECT_NE(list.find("RICH                         ║view      │"), std::string::npos) << list;
    shown->press({"Enter"});
    shown->expect("record 1   row 1 of 10");
    shown->press({"Escape"});
    shown->expect("row 1 of 5");
    shown->press({"C-End", "Enter"});
    shown->expect(" RICH   read-only");
    shown->expect(" row 1 of 4");
    shown->press({"q"});
    shown->expect(Tmux::ended(0));
}

TEST_F(BrowseSources, MayBeAQueryWhoseRowsAreReadAsFarAsOneLooks) {
    const auto shown =
        browse({"--query",
                "select n.id * 100 + m.id as number, 'ção' as text from (select row_number() "
                "over () as id from rdb$fields rows 100) n, (select row_number() over () as id "
                "from rdb$fields rows 100) m -- all"});
    const std::string first = shown->expect("row 1 ");
    EXPECT_EQ(first.find(" of 10000"), std::string::npos) << first;
    EXPECT_NE(first.find("ção"), std::string::npos) << first;
    shown->press({"PageDown", "PageDown"});
    shown->expect(" row 41 ");
    shown->press({"C-End"});
    shown->expect(" row 10000 of 10000 ");
    shown->press({"PageUp"});
    shown->expect(" row 9980 of 10000 ");
    shown->press({"g", "5", "0", "0", "0", "Enter"});
    shown->expect(" row 5000 of 10000 ");
    shown->press({"f"});
    shown->type("number between 200 and 205");
    shown->press({"Enter", "C-End"});
    shown->expect(" row 6 of 6 ");
}

TEST_F(BrowseSources, ThatAreWrongAreToldAndTheTerminalIsLeftAlone) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"custmers"}, "error: there is no table custmers"},
        {{"--query", "selct 1"}, "error: the rows cannot be shown"},
        {{"--query", "delete from customers"},
         "error: the statement returns no rows: exec runs such statements"},
    };
    for (const auto& [words, told] : cases) {
        const auto shown = browse(words);
        const std::string screen = shown->expect(Tmux::ended(1));
        EXPECT_NE(screen.find(told), std::string::npos) << screen;
    }
    const auto shown = browse({"customers", "--query", "select 1 from rdb$database"});
    EXPECT_NE(shown->expect(Tmux::ended(2)).find("error: --query goes without a table"), std::string::npos);
    EXPECT_EQ(rows("select count(*) from customers"), Rows({{"10"}}));
}

TEST_F(BrowseSources, AreNotShownWithoutATerminal) {
    const Finished done = without_terminal({"customers"});
    EXPECT_EQ(done.status, 2);
    EXPECT_EQ(done.out, "");
    EXPECT_EQ(done.err,
              "error: browse shows tables on a terminal, which standard input and output are not\n"
              "hint: zmfb query writes rows to files and pipes\n");
    Dialogue unknown({"env", "TERM=nosuch", ZMFB_TOOL, "--db", database(), "browse", "customers"});
    unknown.expect("error: there is no terminal of the kind \"nosuch\"");
    EXPECT_EQ(unknown.end(), 2);
}

TEST_F(BrowseSources, ThatOthersHaveForThemselvesAreToldWithWhoHasThem) {
    Area mine(connection(), "CUSTOMERS", {.mode = OpenMode::exclusive, .alias = "MINE"});
    const auto shown = browse({"customers"});
    const std::string screen = shown->expect(Tmux::ended(1));
    EXPECT_NE(screen.find("MINE"), std::string::npos) << screen;
}

TEST_F(BrowseSources, WithoutRowsOrWithOneColumnAreShown) {
    execute("create table lonely (a varchar(10))");
    const auto shown = browse({"lonely"});
    shown->expect(" no rows\n");
    shown->press({"Right", "End", "Left", "v", "Enter", "C-End", "PageUp", "f"});
    shown->type("a is null");
    shown->press({"Enter"});
    shown->expect("where a is null");
    execute("insert into lonely values (null)");
    shown->press({"F5"});
    shown->expect("row 1 of 1 ");
    shown->press({"v"});
    shown->expect(" A VARCHAR(10)\nNULL\n");
}

TEST_F(BrowseSources, ThatAreOnlyReadRegisterNothingForWriting) {
    const auto shown = browse({"customers", "--readonly"});
    shown->expect(" CUSTOMERS   read-only");
    shown->expect("row 1 of 10");
}

}  // namespace
}  // namespace zmfb::test
