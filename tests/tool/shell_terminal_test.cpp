// The shell as a person meets it: on a terminal.
#include <sys/stat.h>

#include <algorithm>
#include <span>
#include <utility>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* prompt = "zmfb> ";
constexpr const char* control_c = "\x03";
constexpr const char* control_d = "\x04";
constexpr const char* up = "\x10";

class ShellOnATerminal : public Tool {
  protected:
    ShellOnATerminal() {
        on(path, {"exec", "create table customers (a integer, b varchar(10))"});
        on(path, {"exec", "insert into customers values (1, 'ação')"});
    }
    [[nodiscard]] std::vector<std::string> shell() const {
        return command({"--db", path, "shell"}, {"NO_COLOR=", "LC_ALL=C", "PAGER=cat"});
    }
    [[nodiscard]] std::string history() const { return file("state/zmfbconn/history"); }
    // Types a call into the shell that the words start.
    static void remember_one(const std::vector<std::string>& words) {
        Dialogue talk(words);
        talk.expect_prompt(prompt);
        talk.type("isconnected()\n");
        talk.expect(".T.\r\n");
        talk.expect_prompt(prompt);
        talk.type(control_d);
        EXPECT_EQ(talk.end(), 0);
    }
    // Types keys that end inputs, and finds in the history what they were completed to.
    void expect_remembered(std::span<const std::pair<const char*, const char*>> cases) const {
        Dialogue talk(shell());
        talk.expect_prompt(prompt);
        for (const auto& [keys, line] : cases) {
            talk.type(keys);
            std::string shown = talk.expect_prompt(prompt);
            for (std::size_t i; (i = shown.find('\a')) != std::string::npos;) shown.erase(i, 1);
            EXPECT_EQ(shown.find("error"), std::string::npos) << shown;
        }
        talk.type(control_d);
        EXPECT_EQ(talk.end(), 0);
        const std::string remembered = read_file(history());
        for (const auto& [keys, line] : cases) {
            std::string written = line;
            for (std::size_t i; (i = written.find(' ')) != std::string::npos;) written.replace(i, 1, "\\040");
            EXPECT_NE(remembered.find(written), std::string::npos) << remembered;
        }
    }
    const std::string path = database();
};

TEST_F(ShellOnATerminal, GreetsRunsWhatIsTypedAndEndsWithControlD) {
    Dialogue talk(shell());
    EXPECT_NE(talk.expect_prompt(prompt).find(".help shows what can be typed"), std::string::npos);
    talk.type("select b, cast(null as integer) as n\n");
    talk.expect_prompt("  ...> ");
    talk.type("from customers;\n");
    EXPECT_NE(talk.expect("(1 row)").find("B        N\r\n----  ----\r\nação  \x1b[2mNULL\x1b[0m\r\n"),
              std::string::npos);
    talk.expect_prompt(prompt);
    talk.type("update customers set a = 2;\n");
    talk.expect("done: update, 1 row, 0.");
    talk.expect_prompt(prompt);
    talk.type("selct 1;\n");
    talk.expect("error: \"selct\" begins neither SQL nor a call; did you mean \"select\"?");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, QuitEndsItWithNothingOnceMoreRaised) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("looptest(\"X\")\n");
    talk.expect("raised: ");
    talk.expect_prompt(prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, ControlCForgetsTheLineAndTheStatementBegun) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("select nosuch");
    talk.expect("nosuch");
    talk.type(control_c);
    talk.expect("^C");
    talk.expect_prompt(prompt);
    talk.type("select\n");
    talk.expect_prompt("  ...> ");
    talk.type(control_c);
    talk.expect_prompt(prompt);
    talk.type("select 7 as n from rdb$database;\n");
    EXPECT_EQ(talk.expect("(1 row)").find("error"), std::string::npos);
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, ControlDEndsItBehindControlCToo) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type(control_c);
    talk.expect("^C");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

// The terminal throws away what was typed before Ctrl-C, also when the shell has just been told that it is
// there.
TEST_F(ShellOnATerminal, ControlCRightBehindOtherKeysIsNeverMissed) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    for (int round = 0; round < 500; ++round) {
        talk.type("select 1");
        talk.type(control_c);
        talk.expect("^C");
        talk.expect_prompt(prompt);
    }
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, ControlCEndsTheRowsOfAQueryAndNotTheShell) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type(
        "with recursive r as (select 1 as n from rdb$database union all select n + 1 from r where n < 1000) "
        "select a.n from r a, r b, r c;\n");
    talk.expect("\r\n1\r\n");
    talk.type(control_c);
    talk.expect("rows, interrupted)");
    talk.expect_prompt(prompt);
    talk.type("select 7 as n from rdb$database;\n");
    talk.expect("(1 row)\r\n");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, TabCompletesMethodsTablesWordsAndCommands) {
    const std::pair<const char*, const char*> cases[] = {
        {"istab\t(\"cust\t\")\n", "istable(\"customers\")"},
        {"select a from CUST\t;\n", "select a from CUSTOMERS;"},
        {"sel\t 1 as n from rdb$database;\n", "select 1 as n"},
        {".str\t cust\t\n", ".struct customers"},
        {"\\d cust\t\n", "\\134d customers"},
        {".mode cs\t\n", ".mode csv"},
        {".help gettablerecc\t\n", ".help gettablereccount"},
    };
    expect_remembered(cases);
}

TEST_F(ShellOnATerminal, TabCompletesColumnsOfTheTablesOfTheStatement) {
    exec(path, "create table orders (buyer varchar(10), amount integer)");
    exec(path, "create table noises (amplitude integer)");
    const std::pair<const char*, const char*> cases[] = {
        {"update orders set am\t = 1;\n", "update orders set amount = 1;"},
        {"select * from orders o where o.AM\t > 0;\n", "select * from orders o where o.AMOUNT > 0;"},
        {"select ampl\t from noises;\n", "select amplitude from noises;"},
        {"delete from ord\t where bu\t is null;\n", "delete from orders where buyer is null;"}};
    expect_remembered(cases);
}

TEST_F(ShellOnATerminal, TabOffersNoNameThatNeedsQuotes) {
    for (const std::string name : {"CUSTOMERS --", "Custom", "CUSTARD; drop table CUSTOMERS"}) {
        exec(path, "create table \"" + name + "\" (a integer)");
    }
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("select a from CUST\t;\n");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
    EXPECT_NE(read_file(history()).find("CUSTOMERS;"), std::string::npos) << read_file(history());
}

TEST_F(ShellOnATerminal, HistoryIsNotKeptInAFolderOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a folder of another user";
    constexpr uid_t somebody_else = 12345;
    const std::string own = write_file("precious", "precious");
    std::filesystem::create_directories(file("state/zmfbconn"));
    std::filesystem::create_symlink(own, history());
    for (const std::string& theirs : {file("state/zmfbconn"), history()}) {
        ASSERT_EQ(::lchown(theirs.c_str(), somebody_else, somebody_else), 0);
    }
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type("select 1 from rdb$database;\n");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
    EXPECT_EQ(read_file(own), "precious");
}

TEST_F(ShellOnATerminal, HistoryIsKeptForItsOwnerWithoutPasswords) {
    {
        Dialogue talk(shell());
        talk.expect_prompt(prompt);
        talk.type("select 41 + 1 as n\n");
        talk.expect_prompt("  ...> ");
        talk.type("from rdb$database;\n");
        talk.expect_prompt(prompt);
        talk.type("create user u Password 'secret';\n");
        talk.expect_prompt(prompt);
        talk.type(control_d);
        EXPECT_EQ(talk.end(), 0);
    }
    struct stat about {};
    ASSERT_EQ(::stat(history().c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0600u);
    EXPECT_EQ(read_file(history()).find("secret"), std::string::npos);
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type(up);
    talk.expect("select 41 + 1 as n from rdb$database;");
    talk.type("\n");
    talk.expect("42\r\n");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

// A shell that is killed while it writes.
TEST_F(ShellOnATerminal, HistoryIsReplacedWhole) {
    const std::string before = "_HiStOrY_V2_\nbefore\n";
    std::filesystem::create_directories(file("state/zmfbconn"));
    write_file("state/zmfbconn/history", before);
    std::filesystem::create_hard_link(history(), file("before"));
    remember_one(shell());
    EXPECT_EQ(read_file(history()), before + "isconnected()\n");
    EXPECT_EQ(read_file(file("before")), before);
}

TEST_F(ShellOnATerminal, HistoryStaysAsItWasWhereThereIsNoRoom) {
    if (run({"unshare", "-m", "mount", "-t", "tmpfs", "none", "/mnt"}).status != 0)
        GTEST_SKIP() << "only root can make a small file system";
    // The one line more does not go into a page.
    const std::string before = "_HiStOrY_V2_\n" + std::string(4070, 'x') + "\n";
    write_file("before", before);
    std::filesystem::create_directories(file("state/zmfbconn"));
    const std::string on_a_full_disk =
        "cd \"$1\" && shift && mount -t tmpfs -o size=4k,mode=700 none state/zmfbconn && "
        "cp before state/zmfbconn/history && \"$@\" && cp state/zmfbconn/history after";
    std::vector<std::string> words{"unshare", "-m", "sh", "-c", on_a_full_disk, "sh", file("")};
    for (const std::string& word : shell()) words.push_back(word);
    remember_one(words);
    EXPECT_EQ(read_file(file("after")), before);
}

TEST_F(ShellOnATerminal, AccentedLettersAreEditedAsOneEach) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    // Two letters are taken back, and the cursor goes back over one.
    talk.type("select 'aéü\x7f\x7fão\x1b[D\x1b[Dç\x05' as t from rdb$database;\n");
    talk.expect("\r\n----\r\nação\r\n");
    talk.expect_prompt(prompt);
    // Of three and of four bytes: whole characters, though not ones that the database has.
    for (const char* letters : {"5 €", "5 😀"}) {
        talk.type("select '" + std::string(letters) + "\x7fx' as t from rdb$database;\n");
        talk.expect("\r\n5 x\r\n");
        talk.expect_prompt(prompt);
    }
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, BytesThatAreNoUtf8TakeNoOtherKeyWithThem) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    // From a terminal that speaks ISO-8859-1; then what no character has, and an end too early.
    for (const auto& [typed, shown] : {std::pair{"a\xE3", "a\uFFFD"},
                                       {"a\x80", "a\uFFFD"},
                                       {"a\xFF", "a\uFFFD"},
                                       {"a\xC0\xAF", "a\uFFFD\uFFFD"},
                                       {"a\xED\xA0\x80", "a\uFFFD\uFFFD"},
                                       {"a\xF0\x9F\x98", "a\uFFFD"}}) {
        talk.type("select '" + std::string(typed) + "' as t from rdb$database;\n");
        const std::string answer = talk.expect("error: the statement has a character outside ISO-8859-1\r\n");
        EXPECT_NE(answer.find("select '" + std::string(shown) + "' as t from rdb$database;"),
                  std::string::npos)
            << answer;
        talk.expect_prompt(prompt);
    }
    talk.type("select '\xE3");
    talk.type(control_c);
    talk.expect("^C");
    talk.expect_prompt(prompt);
    talk.type(control_d);
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(ShellOnATerminal, HistoryIsBelowTheHomeWhereNoOtherPlaceIsNamed) {
    const std::filesystem::path home = file("home");
    for (const std::string& place : {"HOME=" + home.string(), std::string("HOME=")}) {
        std::vector<std::string> words = shell();
        std::ranges::replace(words, "XDG_STATE_HOME=" + file("state"), place);
        words.insert(words.begin() + 1, {"-u", "XDG_STATE_HOME"});
        remember_one(words);
    }
    EXPECT_NE(read_file(home / ".local/state/zmfbconn/history").find("isconnected()\n"), std::string::npos);
}

}  // namespace
}  // namespace zmfb::test
