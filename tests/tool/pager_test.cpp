// Rows that do not fit on the terminal.
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* numbers =
    "with recursive r as (select 1 as n from rdb$database union all select n + 1 from r where n < 100) ";
constexpr const char* marks_lines = "PAGER=sed s/^/paged:/";

class RowsInAPager : public Tool {
  protected:
    [[nodiscard]] std::vector<std::string> paged(const std::string& pager,
                                                 std::vector<std::string> words) const {
        words.insert(words.begin(), {"--db", path});
        std::vector<std::string> all = command(words, {"NO_COLOR=1", "LC_ALL=C", pager});
        all.insert(all.begin() + 1, {"-u", "LESS"});
        return all;
    }
    [[nodiscard]] std::vector<std::string> query(const std::string& pager, const std::string& rows) const {
        return paged(pager, {"query", numbers + rows});
    }
    static bool less_is_there() { return run({"less", "--version"}).status == 0; }
    const std::string path = database();
};

TEST_F(RowsInAPager, AreThoseThatDoNotFit) {
    Dialogue many(query(marks_lines, "select n from r"));
    const std::string shown = many.expect("paged:(100 rows)");
    EXPECT_NE(shown.find("paged:  N\r\npaged:---\r\npaged:  1\r\n"), std::string::npos) << shown;
    EXPECT_EQ(many.end(), 0);
    Dialogue few(query(marks_lines, "select n from r where n < 20"));
    EXPECT_EQ(few.expect("(19 rows)").find("paged:"), std::string::npos);
    EXPECT_EQ(few.end(), 0);
}

TEST_F(RowsInAPager, AreNoneWhereNoneIsWanted) {
    for (const char* none : {"PAGER=", "PAGER=cat"}) {
        Dialogue plain(query(none, "select n from r"));
        plain.expect("(100 rows)");
        EXPECT_EQ(plain.end(), 0);
    }
    std::vector<std::string> words = query(marks_lines, "select n from r");
    words.emplace_back("--no-pager");
    Dialogue refused(words);
    EXPECT_EQ(refused.expect("(100 rows)").find("paged:"), std::string::npos);
    EXPECT_EQ(refused.end(), 0);
    Dialogue shell(paged(marks_lines, {"shell", "--no-pager"}));
    shell.expect_prompt("zmfb> ");
    shell.type(std::string(numbers) + "select n from r;\n");
    EXPECT_EQ(shell.expect("(100 rows)").find("paged:"), std::string::npos);
    const Finished piped = run(query(marks_lines, "select n from r"));
    EXPECT_EQ(piped.out.find("paged:"), std::string::npos);
    EXPECT_TRUE(piped.out.ends_with("(100 rows)\n"));
}

TEST_F(RowsInAPager, ThatEndsEarlyEndTheQueryWithoutAWord) {
    Dialogue endless(query("PAGER=head -n 3", "select a.n from r a, r b, r c, r d, r e"));
    endless.expect("\r\n1\r\n");
    EXPECT_EQ(endless.end(), 0);
    Dialogue shell(paged("PAGER=head -n 3", {"shell"}));
    shell.expect_prompt("zmfb> ");
    shell.type(std::string(numbers) + "select a.n from r a, r b, r c, r d, r e;\n");
    const std::string said = shell.expect_prompt("\r\nzmfb> ");
    EXPECT_EQ(said.find("error"), std::string::npos) << said;
    shell.type("begin;\n");
    shell.expect_prompt("zmfb*> ");
    shell.type(std::string(numbers) + "select a.n from r a, r b, r c, r d, r e;\n");
    const std::string inside = shell.expect_prompt("\r\nzmfb*> ");
    EXPECT_EQ(inside.find("error"), std::string::npos) << inside;
    shell.type("commit;\n");
    shell.expect_prompt("zmfb> ");
    shell.type("select 6 * 7 as n from rdb$database;\n");
    shell.expect("\r\n42\r\n");
    shell.expect_prompt("zmfb> ");
    shell.type("\x04");
    EXPECT_EQ(shell.end(), 0);
}

TEST_F(RowsInAPager, AreFollowedByTheErrorThatEndedThem) {
    Dialogue talk(query(marks_lines, "select 1 / (90 - n) as q from r"));
    talk.expect("paged:1\r\n");
    talk.expect("error: the query failed");
    EXPECT_EQ(talk.expect("Integer divide by zero").find("paged:"), std::string::npos);
    EXPECT_EQ(talk.end(), 1);
}

TEST_F(RowsInAPager, ThatCannotBeRunIsAnErrorThatSaysWhatHelps) {
    Dialogue talk(query("PAGER=nosuchpager -x", "select n from r"));
    talk.expect(
        "error: the pager nosuchpager -x cannot be run\r\nhint: PAGER names it; --no-pager does without\r\n");
    EXPECT_EQ(talk.end(), 1);
}

TEST_F(RowsInAPager, LessShowsTheFirstPageOfAnEndlessQueryAndQEndsIt) {
    if (!less_is_there()) GTEST_SKIP() << "less is not installed";
    Dialogue shell(paged("PAGER=less", {"shell"}));
    shell.expect_prompt("zmfb> ");
    shell.type(std::string(numbers) + "select a.n from r a, r b, r c, r d, r e;\n");
    shell.expect("\n1");
    shell.expect(":");
    shell.type("q");
    shell.expect_prompt("zmfb> ");
    shell.type("select 6 * 7 as n from rdb$database;\n");
    shell.expect("\r\n42\r\n");
}

TEST_F(RowsInAPager, ThatControlCEndsEndTheQueryAsItWouldHaveEndedWithoutOne) {
    const std::string endless = "select a.n from r a, r b, r c, r d, r e";
    Dialogue alone(query("PAGER=exec cat", endless));
    alone.expect("\r\n1\r\n");
    alone.type("\x03");
    EXPECT_EQ(alone.end(), 130);
    Dialogue shell(paged("PAGER=exec cat", {"shell"}));
    shell.expect_prompt("zmfb> ");
    shell.type(std::string(numbers) + endless + ";\n");
    shell.expect("\r\n1\r\n");
    shell.type("\x03");
    EXPECT_EQ(shell.expect_prompt("zmfb> ").find("error"), std::string::npos);
    shell.type("\x04");
    EXPECT_EQ(shell.end(), 0);
}

TEST_F(RowsInAPager, ControlCEndsTheRowsAndThePagerHasWhatCame) {
    Dialogue shell(paged("PAGER=trap '' INT; cat; echo the pager is left", {"shell"}));
    shell.expect_prompt("zmfb> ");
    shell.type(std::string(numbers) + "select a.n from r a, r b, r c, r d, r e;\n");
    shell.expect("\r\n1\r\n");
    shell.type("\x03");
    shell.expect("rows, interrupted)\r\nthe pager is left\r\n");
    shell.expect_prompt("zmfb> ");
    shell.type("select 6 * 7 as n from rdb$database;\n");
    shell.expect("\r\n42\r\n");
    shell.expect_prompt("zmfb> ");
    shell.type("\x04");
    EXPECT_EQ(shell.end(), 0);
}

}  // namespace
}  // namespace zmfb::test
