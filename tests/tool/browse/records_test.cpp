// Records as forms, added, deleted, and brought back.
#include "tests/tool/browse/editing.h"

namespace zmfb::test {
namespace {

using EditingRecords = Editing;

TEST_F(EditingRecords, AsFormsAreWrittenInOneStatement) {
    execute("create table WRITES (N integer)");
    execute("create trigger COUNTING for CUSTOMERS after update as begin insert into WRITES values (1); end");
    const auto shown = at_column("CODE");
    shown->press({"F3"});
    shown->expect("Record 1");
    EXPECT_EQ(locked(), "") << "nothing is edited yet";
    shown->press({"Down", "Enter"});
    shown->expect("Enter writes");
    EXPECT_EQ(locked(), "1 ");
    shown->type("!");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    shown->press({"Down", "Enter"});
    shown->expect("Enter writes");
    shown->type("?");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    EXPECT_EQ(rows("select count(*) from WRITES")[0][0], "0");
    shown->press({"F2"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "trim(NAME) || trim(CITY)"), "Ana Conceição!São Paulo?");
    EXPECT_EQ(rows("select count(*) from WRITES")[0][0], "1");
    EXPECT_EQ(locked(), "");
    shown->press({"u"});
    shown->expect("record 1 is as it was");
    EXPECT_EQ(stored(1, "trim(NAME) || trim(CITY)"), "Ana ConceiçãoSão Paulo");
}

TEST_F(EditingRecords, AsFormsAskBeforeWhatWasTypedIsGivenUp) {
    const auto shown = at_column("CODE");
    shown->press({"F3", "Down", "Enter"});
    shown->expect("Enter writes");
    shown->type("!");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    shown->press({"Escape"});
    shown->expect("Give up what was typed?");
    shown->press({"n"});
    shown->expect("F2 writes");
    shown->press({"Escape"});
    shown->expect("Give up what was typed?");
    shown->press({"y"});
    shown->expect("given up, nothing was changed");
    EXPECT_EQ(stored(1, "NAME"), "Ana Conceição");
    EXPECT_EQ(locked(), "");
}

TEST_F(EditingRecords, KeepTextsThatAreLongerThanWhatIsShown) {
    execute("alter table CUSTOMERS add NOTE varchar(500) default '' not null");
    execute("update CUSTOMERS set NOTE = rpad('', 400, 'long ') where RECNO = 1");
    const auto shown = at_column("CODE");
    shown->press({"F3", "End", "Enter"});
    shown->expect("Enter writes");
    shown->type("END");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("!");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    shown->press({"F2"});
    shown->expect("written");
    EXPECT_EQ(stored(1, "char_length(NOTE) || right(NOTE, 5)"), "404 END!");
}

TEST_F(EditingRecords, OverAConnectionThatBreaksSayAllThatWasTyped) {
    if (!on_server()) GTEST_SKIP() << "nothing breaks the connection of an embedded engine";
    const auto shown = at_column("CODE", {"--refresh", "0"});
    shown->press({"F3", "Down", "Enter"});
    shown->expect("Enter writes");
    shown->type("QQ");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    break_connection();
    shown->press({"F2"});
    shown->expect("not written: NAME = Ana ConceiçãoQQ");
    shown->expect(Tmux::ended(1));
}

TEST_F(EditingRecords, AreAddedAsForms) {
    execute("alter table CUSTOMERS add constraint NAMED check (NAME <> '')");
    const auto shown = at_column("CODE");
    shown->press({"IC"});
    shown->expect("New record");
    shown->press({"F2"});
    shown->expect("CHECK constraint NAMED");
    shown->press({"Down", "Enter"});
    shown->expect("Enter writes");
    shown->type("Zara");
    shown->press({"Enter"});
    shown->expect("F2 writes");
    shown->press({"F2"});
    shown->expect(" is added");
    const std::string screen = shown->expect("Zara");
    const std::string number = rows("select cast(RECNO as integer) from CUSTOMERS where NAME = 'Zara'")[0][0];
    EXPECT_NE(screen.find("record " + number + " is added"), std::string::npos) << screen;
    EXPECT_EQ(stored(std::stoi(number), "CREDIT"), "0.00") << "its default";
    EXPECT_EQ(locked(), "");
    shown->press({"u"});
    shown->expect("record " + number + ", which was added, is deleted");
    EXPECT_EQ(stored(std::stoi(number), "NAME"), "gone");
}

TEST_F(EditingRecords, AreDeletedAfterAQuestionAndComeBackUnderANewNumber) {
    const auto shown = at_column("CODE");
    shown->press({"DC"});
    shown->expect("Delete record 1?");
    EXPECT_EQ(locked(), "1 ");
    shown->press({"n"});
    shown->expect("F1 keys");
    EXPECT_EQ(locked(), "");
    EXPECT_NE(stored(1, "NAME"), "gone");
    shown->press({"DC"});
    shown->expect("Delete record 1?");
    shown->press({"y"});
    shown->expect("record 1 is deleted");
    shown->expect("record 2 ");
    EXPECT_EQ(stored(1, "NAME"), "gone");
    EXPECT_EQ(locked(), "");
    shown->press({"u"});
    shown->expect("record 1 is back as record 11: no number is given twice");
    shown->expect("record 11   row 10 of 10");
    EXPECT_EQ(stored(11, "NAME || CREDIT"), "Ana Conceição           1250.50");
    shown->press({"u"});
    shown->expect("there is nothing to undo");
}

TEST_F(EditingRecords, ThatCannotComeBackAreDeletedAfterAQuestionThatSaysSo) {
    execute("alter table CUSTOMERS add PICTURE blob");
    const auto shown = at_column("CODE");
    shown->press({"DC"});
    shown->expect("Delete record 1? It cannot be taken back.");
    shown->press({"y"});
    shown->expect("record 1 is deleted");
    shown->press({"u"});
    shown->expect("it cannot be made again");
}

TEST_F(EditingRecords, ThatOthersTouchedAreLeftAsTheyAre) {
    const auto shown = at_column("NAME");
    shown->press({"Enter"});
    shown->expect("Enter writes");
    shown->type("!");
    shown->press({"Enter"});
    shown->expect("written");
    execute("update CUSTOMERS set CITY = 'Porto' where RECNO = 1");
    shown->press({"u"});
    shown->expect("record 1 was changed by others since: it is left as it is");
    EXPECT_EQ(stored(1, "trim(NAME)"), "Ana Conceição!");
}

}  // namespace
}  // namespace zmfb::test
