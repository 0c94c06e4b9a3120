// The shell, its lines on standard input.
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Shell : public Tool {
  protected:
    Shell() {
        on(path, {"exec", "create table t (a integer, b varchar(10), c numeric(18,2))"});
        on(path, {"exec", "insert into t values (1, 'ação', 12345678901.25)"});
        on(path, {"exec", "insert into t values (2, null, -1.50)"});
    }
    [[nodiscard]] Finished shell(const std::string& input) const { return on(path, {"shell"}, input); }
    const std::string path = database();
};

TEST_F(Shell, RunsStatementsCallsAndCommands) {
    const Finished run = shell(
        "-- a comment\n"
        "\n"
        "select * from t\n"
        "  order by a;\n"
        "istable(\"T\")\n"
        "update t set b = 'x;y' where a = 2;\n"
        "select b from t where a = 2; select 7 as n from rdb$database;\n"
        ".struct t\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string expected =
        "A  B                  C\n"
        "-  ----  --------------\n"
        "1  ação  12345678901.25\n"
        "2  NULL           -1.50\n"
        "(2 rows)\n"
        ".T.\n"
        "done: update, 1 row\n"
        "B\n---\nx;y\n(1 row)\n"
        "N\n-\n7\n(1 row)\n";
    EXPECT_EQ(run.out.substr(0, expected.size()), expected);
    EXPECT_NE(run.out.find("field", expected.size()), std::string::npos);
}

TEST_F(Shell, GoesOnBehindErrorsNamesTheirLinesAndEndsWithOne) {
    const Finished run = shell(
        "select nosuch\n"
        "  from t;\n"
        "delete from nosuch;\n"
        "istabel(\"T\")\n"
        "istable(\"T\"\n"
        ".tabels\n"
        "selct 1;\n"
        "comit;\n"
        "show tables;\n"
        ".mode nosuch\n"
        ".timer what\n"
        ".read nosuch.sql\n"
        ".help nosuch\n"
        ".struct nosuch\n"
        "isconnected()\n"
        "select 1");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, ".T.\n");
    const std::vector<std::string> errors{
        "error: line 1: the query failed",
        "error: line 3: [ERROR] SQLCODE=-204 (",
        "error: line 4: there is no method istabel; did you mean \"istable\"?",
        "error: line 5: expected \")\" before at the end",
        "error: line 6: there is no command .tabels; did you mean \".tables\"?",
        "error: line 7: \"selct\" begins neither SQL nor a call; did you mean \"select\"?",
        "error: line 8: \"comit\" begins neither SQL nor a call; did you mean \"commit\"?",
        "error: line 9: \"show\" begins neither SQL nor a call",
        "error: line 10: there is no mode nosuch: table, line, csv, json or auto",
        "error: line 11: the timer is on or off",
        "error: line 12: cannot read nosuch.sql",
        "error: line 13: there is no method nosuch",
        "error: line 14: there is no table nosuch",
        "error: line 16: the statement does not end with \";\"",
    };
    std::vector<std::string> found;
    for (const std::string& line : lines(run.err)) {
        if (line.starts_with("error: ")) found.push_back(line);
    }
    ASSERT_EQ(found.size(), errors.size()) << run.err;
    for (std::size_t i = 0; i < errors.size(); ++i) EXPECT_TRUE(found[i].starts_with(errors[i])) << found[i];
    EXPECT_NE(run.err.find("NOSUCH"), std::string::npos);
}

TEST_F(Shell, FailureAmongTheRowsComesBehindTheRowsBeforeIt) {
    const Finished run =
        shell("select 1 / (2 - a) as q from t order by a;\nselect 3 as n from rdb$database;\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "Q\n-\n1\nN\n-\n3\n(1 row)\n");
    EXPECT_NE(run.err.find("Integer divide by zero"), std::string::npos);
}

TEST_F(Shell, RaisedErrorMakesItEndWithOneAndGoesOn) {
    const Finished run = shell("looptest(\"T\")\nistable(\"T\")\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "{}\n.T.\n");
    EXPECT_TRUE(run.err.starts_with("raised: [FBCONN Error]")) << run.err;
}

TEST_F(Shell, ModesShapeRowsAndResults) {
    const Finished run = shell(
        ".mode\n.mode csv\nselect a, b from t order by a;\n.mode json\nselect b, c from t where a = 2;\n"
        "istable(\"T\")\n.mode line\nselect a from t where a = 1;\n");
    EXPECT_TRUE(
        run.out.starts_with("table\nA,B\r\n1,ação\r\n2,\r\n[\n  {\"B\": null, \"C\": -1.50}\n]\ntrue\n"))
        << run.out;
    EXPECT_TRUE(run.out.ends_with("A = 1\n\n(1 row)\n")) << run.out;
}

TEST_F(Shell, BodyOfATriggerIsOneStatement) {
    const Finished run = shell(
        "create trigger tt for t before insert as\n"
        "begin\n"
        "  if (new.a = 9) then\n"
        "  begin\n"
        "    new.b = 'nine; x';\n"
        "  end\n"
        "end;\n"
        "insert into t (a) values (9);\n"
        "select b from t where a = 9;\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "done: create trigger\ndone: insert, 1 row\nB\n-------\nnine; x\n(1 row)\n");
}

TEST_F(Shell, ReadTakesLinesFromAFile) {
    const std::string inner = write_file("inner.sql", "select 2 as n from rdb$database;\nselct;\n");
    const std::string outer =
        write_file("outer.sql", ".mode csv\r\n.read " + inner + "\r\n.quit\r\nselct;\r\n");
    const Finished run = shell(".read " + outer + "\nselect 3 as n from rdb$database;\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "N\r\n2\r\n");
    EXPECT_EQ(lines(run.err).at(0), "error: " + inner +
                                        " line 2: \"selct\" begins neither SQL nor a call; "
                                        "did you mean \"select\"?");
    EXPECT_EQ(run.err.find("outer.sql"), std::string::npos);
}

TEST_F(Shell, FileThatReadsItselfComesToAnEnd) {
    const std::string file = write_file("self.sql", "");
    write_file("self.sql", ".read " + file + "\n");
    const Finished run = shell(".read " + file + "\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + file + " line 1: files that read files go too deep\n");
}

TEST_F(Shell, QuitEndsItAndWordsWithoutADotWorkToo) {
    for (const char* word : {".quit", ".exit", "quit", "exit;", "quit;"}) {
        const Finished run = shell(std::string(word) + "\nselct;\n");
        EXPECT_EQ(run.status, 0) << word;
        EXPECT_EQ(run.out + run.err, "") << word;
    }
}

TEST_F(Shell, HelpListsCommandsAndDescribesMethods) {
    const Finished run = shell(".help\n.help istable\n");
    EXPECT_EQ(run.status, 0);
    for (const char* word : {".mode", ".timer", ".read", ".quit", ".tables", ".struct", ".locks"}) {
        EXPECT_NE(run.out.find(std::string("\n") + word), std::string::npos) << word;
    }
    EXPECT_NE(run.out.find("istable(tbl: table): logical\nWhether a table or view exists, exported\n"),
              std::string::npos);
}

TEST_F(Shell, CommandsWithABackslashAreThoseThatMeanTheSame) {
    const std::pair<const char*, const char*> cases[] = {{"\\d", ".tables"},
                                                         {"\\dt", ".tables"},
                                                         {"\\d t", ".struct t"},
                                                         {" \\d  T ;", ".struct T"},
                                                         {"\\?", ".help"},
                                                         {"\\q\nselct;", ".quit"},
                                                         {"\\x\n.mode", ".mode line\n.mode"},
                                                         {"\\x\n\\x\n.mode", ".mode"},
                                                         {"\\x on\n.mode", ".mode line\n.mode"},
                                                         {"\\x auto\n.mode", ".mode auto\n.mode"},
                                                         {"\\x on\n\\x off;\n.mode", ".mode"},
                                                         {"\\nosuch", ".nosuch"}};
    for (const auto& [typed, meant] : cases) {
        const Finished one = shell(std::string(typed) + "\n"), other = shell(std::string(meant) + "\n");
        EXPECT_EQ(one.out, other.out) << typed;
        EXPECT_EQ(one.err, other.err) << typed;
        EXPECT_EQ(one.status, other.status) << typed;
    }
}

TEST_F(Shell, TimerTellsHowLongItTook) {
    const Finished run = shell(".timer\n.timer on\n.timer\nselect 1 as n from rdb$database;\n");
    EXPECT_EQ(run.out, "off\non\nN\n-\n1\n(1 row)\n");
    EXPECT_TRUE(run.err.starts_with("time: 0.") && run.err.ends_with(" s\n")) << run.err;
}

TEST_F(Shell, OptionsOfOneCommandDoNotCountForTheNext) {
    EXPECT_EQ(shell(".unlock t --yes\n.unlock t\nn\n").status, 1);
}

TEST_F(Shell, CommandOfTheCommandLineIsToldApartFromATypo) {
    EXPECT_EQ(shell(".import x.dbf\n").err,
              "error: line 1: there is no command .import\n  It is one of the command line: zmfb import\n");
}

TEST_F(Shell, NeedsADatabaseThatIsThere) {
    EXPECT_EQ(zmfb({"shell"}, "isconnected()\n").status, 2);
    EXPECT_EQ(on(file("nosuch.fdb"), {"shell"}, "isconnected()\n").status, 3);
}

TEST_F(Shell, QuotesOfEitherKindHoldAWordOfACommandTogether) {
    const std::string name = write_file("two words 'n more.sql", "istable(\"T\")\n");
    const Finished run = shell(".read \"" + name + "\"\n.read '" + file("two words ") + "'\"'n more.sql\"\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, ".T.\n.T.\n");
}

TEST_F(Shell, WrongWordsBehindACommandAreSaidAndHelpIsShown) {
    const Finished wrong = shell(".log --count x\n.struct\nistable(\"T\")\n");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.out, ".T.\n");
    EXPECT_NE(wrong.err.find("hint: zmfb log --help says more\n"), std::string::npos) << wrong.err;
    EXPECT_NE(wrong.err.find("hint: zmfb struct --help says more\n"), std::string::npos) << wrong.err;
    const Finished help = shell(".struct --help\n");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("TABLE"), std::string::npos);
}

}  // namespace
}  // namespace zmfb::test
