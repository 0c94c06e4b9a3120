// Editing cells in place: what is locked, checked, written and given back.
#include "tests/tool/browse/editing.h"

namespace zmfb::test {
namespace {

TEST_F(Editing, OfACellIsOneCommittedStatement) {
    execute("create table WRITES (N integer)");
    execute("create trigger COUNTING for CUSTOMERS after update as begin insert into WRITES values (1); end");
    const auto shown = at_column("NAME");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    EXPECT_EQ(locked(), "1 ");
    shown->type(" é€");
    shown->press({"BSpace", "Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "NAME"), "Ana Conceição é");
    EXPECT_EQ(rows("select count(*) from WRITES")[0][0], "1");
    EXPECT_EQ(locked(), "");
}

TEST_F(Editing, IsGivenUpWithEsc) {
    const auto shown = at_column("CREDIT");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("9");
    shown->press({"BSpace", "BSpace", "Escape"});
    shown->expect("given up, nothing was changed");
    EXPECT_EQ(stored(1, "CREDIT"), "1250.50");
    EXPECT_EQ(locked(), "");
    shown->expect(" 1250.50");
}

TEST_F(Editing, ReadsTheRecordAnewOnceItIsLocked) {
    const auto shown = at_column("CREDIT", {"--refresh", "0"});
    execute("update CUSTOMERS set CREDIT = 7, CITY = 'Porto' where RECNO = 1");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->expect("Porto");
    shown->press({"Home"});
    shown->type("1");
    shown->press({"Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "CREDIT"), "17.00");
}

TEST_F(Editing, TakesOnlyWhatTheColumnTakes) {
    const auto shown = at_column("CREDIT");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("x");
    shown->expect("a number is digits");
    shown->type("1");
    shown->expect("the column has 2 decimals");
    shown->press({"F4"});
    shown->expect("the column takes no NULL");
    for (int i = 0; i < 7; ++i) shown->press({"BSpace"});
    shown->type("-");
    shown->press({"Enter"});
    shown->expect("- is no number");
    EXPECT_EQ(stored(1, "CREDIT"), "1250.50");
    shown->type("3");
    shown->press({"Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "CREDIT"), "-3.00");
}

TEST_F(Editing, KeepsNullApart) {
    const auto shown = at_column("SINCE");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->press({"F4", "Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "SINCE"), "NULL");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("2026-02-3");
    shown->expect("2026-02-3");
    shown->press({"Enter"});
    shown->expect("a date is YYYY-MM-DD");
    shown->press({"BSpace"});
    shown->type("28");
    shown->press({"Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "cast(SINCE as date)"), "2026-02-28");
}

TEST_F(Editing, ThatTheDatabaseRefusesKeepsWhatWasTyped) {
    execute("alter table CUSTOMERS add constraint FEW check (CREDIT < 2000000)");
    const auto shown = at_column("CREDIT");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    for (int i = 0; i < 7; ++i) shown->press({"BSpace"});
    shown->type("2000000");
    shown->press({"Enter"});
    shown->expect("CHECK constraint FEW");
    shown->expect("2000000 ");
    EXPECT_EQ(stored(1, "CREDIT"), "1250.50");
    EXPECT_EQ(locked(), "1 ");
    shown->press({"BSpace", "Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "CREDIT"), "200000.00");
}

TEST_F(Editing, ThatWaitsForATransactionOfAnotherIsGivenUpWithCtrlC) {
    const auto shown = at_column("CREDIT", {"--refresh", "0"});
    shown->press({"Enter"});
    shown->expect("Enter writes");
    Transaction other(connection());
    other.execute("update CUSTOMERS set CITY = 'Porto' where RECNO = 1");  // which asks for no locks
    shown->type("7");
    shown->expect("the column has 2 decimals");
    shown->press({"BSpace"});
    shown->type("7");
    shown->press({"Enter"});
    wait_until([&] {
        return rows(
                   "select count(*) from mon$statements where mon$state <> 0 and mon$sql_text starting with "
                   "'update \"CUSTOMERS\"'")[0][0] != "0";
    });
    shown->press({"C-c"});
    shown->expect("given up");
    EXPECT_EQ(locked(), "1 ");
    other.roll_back();
    shown->press({"Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "CREDIT"), "1250.57");
}

TEST_F(Editing, OfARecordThatWentMeanwhileSaysSo) {
    const auto shown = at_column("NAME", {"--refresh", "0"});
    shown->press({"Enter"});
    shown->expect("Enter writes");
    execute("delete from CUSTOMERS where RECNO = 1");  // by a program that asks for no locks
    shown->type("!");
    shown->press({"Enter"});
    shown->expect("Record 1 of CUSTOMERS was deleted");
    shown->expect("o! ");
    shown->press({"Escape"});
    shown->expect("given up");
    EXPECT_EQ(locked(), "");
    shown->press({"Enter"});
    shown->expect("record 1 was deleted");
    shown->expect("record 2 ");
}

TEST_F(Editing, SaysWhoHasTheRecordAndWaitsForItIfWanted) {
    Area till(connection(), "CUSTOMERS", {.alias = "TILL"});
    std::optional<Held> held = till.lock();
    const auto shown = at_column("NAME", {}, 200);
    shown->press({"Enter"});
    shown->expect("record 1 is in use by " + Holder(till.id()).words() + ", seen since ");
    shown->resize(60, 15);  // where the words take two lines
    shown->expect("record 1 is in use by TILL");
    shown->expect(" not\n");
    shown->resize(200, 24);
    shown->expect("w waits, Esc does not");
    shown->press({"Escape"});
    shown->expect("F1 keys");
    shown->press({"Enter"});
    shown->expect("w waits, Esc does not");
    shown->press({"w"});
    shown->expect("waiting, Esc stops");
    shown->press({"Escape"});
    shown->expect("F1 keys");
    shown->press({"Enter"});
    shown->expect("w waits");
    shown->press({"w"});
    shown->expect("waiting, Esc stops");
    held.reset();
    shown->expect("Enter writes");
    EXPECT_EQ(locked(), "1 ");
    shown->type("!");
    shown->press({"Enter"});
    shown->expect("written");
    EXPECT_EQ(locked(), "");
}

TEST_F(Editing, SaysOfARecordThatADeadProcessHasHowToFreeIt) {
    const auto first = at_column("NAME");
    first->press({"Enter"});
    first->expect("Enter writes");
    const pid_t process = browsing_process();
    kill(process, SIGKILL);
    wait_until([&] { return kill(process, 0) != 0; });
    const auto shown = at_column("NAME", {}, 200);
    shown->press({"Enter"});
    shown->expect("; that process is dead, and \"zmfb unlock CUSTOMERS\" frees it   w waits");
    shown->press({"w"});
    shown->expect("; that process is dead, and \"zmfb unlock CUSTOMERS\" frees it   waiting, Esc stops");
    EXPECT_EQ(run({ZMFB_TOOL, "--db", database(), "unlock", "CUSTOMERS", "--yes"}).status, 0);
    shown->expect("Enter writes");
    EXPECT_EQ(locked(), "1 ");
}

TEST_F(Editing, OfATableThatADeadProcessHasForItselfIsRefusedWithWhatFreesIt) {
    const Finished left =
        run({ZMFB_TOOL, "--db", database(), "call",
             "settableusedbyarea(.T., 'CUSTOMERS', getuniqueareaid('CUSTOMERS', 'TILL'), .F.)"});
    ASSERT_EQ(left.out, ".T.\n") << left.err;
    const std::string told = "; that process is dead, and \"zmfb clear\" frees it";
    const auto alone = browse({"customers"}, 200);
    alone->expect(told);
    alone->expect(Tmux::ended(1));
    const auto list = browse({}, 200);
    list->expect("CUSTOMERS");
    list->press({"Enter"});
    list->expect(told);
    EXPECT_EQ(run({ZMFB_TOOL, "--db", database(), "clear", "--yes"}).status, 0);
    list->press({"Enter"});
    list->expect("record 1 ");
}

TEST_F(Editing, NamesTheColumnOfACharacterThatTheDatabaseDoesNotHave) {
    const auto shown = at_column("CITY");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("\u65e5");
    shown->press({"Enter"});
    shown->expect("In field CITY there is '\u65e5', a character that ISO-8859-1 does not have");
    shown->press({"Escape"});
    shown->expect("given up");
    EXPECT_EQ(locked(), "");
}

TEST_F(Editing, AddsARecordThatTheFilterLeavesOutAndSaysSo) {
    const auto shown = at_column("CODE");
    shown->press({"f"});
    shown->expect("Only rows where:");
    shown->type("name = 'nobody'");
    shown->press({"Enter"});
    shown->expect(" no rows\n");
    shown->press({"IC"});
    shown->expect("New record");
    shown->press({"F2"});
    shown->expect("record 11 is added, and the filter leaves it out   u takes it back");
    shown->expect(" no rows\n");
    shown->press({"g", "1", "1", "Enter"});
    shown->expect("the filter leaves record 11 out");
    shown->expect(" no rows\n");
    EXPECT_EQ(stored(11, "1"), "1");
    shown->press({"u"});
    shown->expect("record 11, which was added, is deleted");
    EXPECT_EQ(stored(11, "1"), "gone");
}

TEST_F(Editing, IsNotDisturbedByWhatOthersDo) {
    const auto shown = at_column("NAME", {"--refresh", "1"});
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("QQ");
    execute("update CUSTOMERS set CITY = 'Porto' where RECNO = 2");
    execute("insert into CUSTOMERS (NAME) values ('the newest one')");
    shown->expect("Porto");
    EXPECT_NE(shown->expect("the newest one").find("oQQ"), std::string::npos);
    shown->press({"Enter"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "NAME"), "Ana ConceiçãoQQ");
}

TEST_F(Editing, IsRefusedInWordsWhereRowsAreOnlyRead) {
    execute("create view RICH as select NAME, CREDIT from CUSTOMERS where CREDIT > 1000");
    struct Case {
        std::vector<std::string> words, keys;
        std::string refusal;
    };
    const std::string rows_only = "only records of the driver's tables are changed here";
    for (const auto& [words, keys, refusal] : std::vector<Case>{
             {{"customers", "--readonly"}, {"Enter", "DC", "IC"}, "CUSTOMERS is open to read"},
             {{"rich"}, {"DC", "IC", "F3", "u"}, rows_only},
             {{"--query", "select NAME from CUSTOMERS"}, {"DC", "IC", "F3", "u"}, rows_only},
         }) {
        const auto shown = browse(words);
        shown->expect("F1 keys");
        for (const std::string& key : keys) {
            shown->press({key});
            shown->expect(refusal);
            shown->press({"End"});
            shown->expect("F1 keys");
        }
    }
    EXPECT_EQ(rows("select count(*) from CUSTOMERS")[0][0], "10");
}

TEST_F(Editing, LeavesNothingHalfWrittenWhenItIsKilled) {
    const auto shown = at_column("NAME");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("QQ");
    shown->expect("QQ");
    const pid_t process = browsing_process();
    kill(process, SIGKILL);
    wait_until([&] { return kill(process, 0) != 0; });
    EXPECT_EQ(stored(1, "NAME"), "Ana Conceição");
    EXPECT_EQ(locked(), "1 ") << "a lock stays until it is cleared";
    EXPECT_NE(run({ZMFB_TOOL, "--db", database(), "locks"}).out.find("dead"), std::string::npos);
}

TEST_F(Editing, GivesTerminalAndLocksBackWhenItIsToEnd) {
    const auto shown = at_column("NAME");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("QQ");
    shown->expect("QQ");
    kill(browsing_process(), SIGTERM);
    shown->expect(Tmux::ended(143));
    EXPECT_EQ(stored(1, "NAME"), "Ana Conceição");
    EXPECT_EQ(locked(), "");
    EXPECT_EQ(rows("select count(*) from RDDSYS_OPN")[0][0], "0");
}

TEST_F(Editing, OverAConnectionThatBreaksSaysWhatWasTyped) {
    if (!on_server()) GTEST_SKIP() << "nothing breaks the connection of an embedded engine";
    const auto shown = at_column("NAME", {"--refresh", "0"});
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("QQ");
    shown->expect("QQ");
    break_connection();
    shown->press({"Enter"});
    shown->expect("not written: NAME = Ana ConceiçãoQQ");
    shown->expect(Tmux::ended(1));
    EXPECT_EQ(stored(1, "NAME"), "Ana Conceição");
}

}  // namespace
}  // namespace zmfb::test
