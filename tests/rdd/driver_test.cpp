// The driver ZMRDDFIRE: which object serves areas, what others see of them, and what is written.
#include "host/error.h"
#include "host/text.h"
#include "host/workarea.h"
#include "tests/host/errors.h"
#include "tests/rdd/area_test.h"
#include "tests/support/show.h"

namespace zmfb::test {
namespace {

using host_test::CaughtErrors;

class AreaDriver : public AreaTest {
  protected:
    AreaDriver() {
        fill(3);
        call("setibrdd");
    }
    ~AreaDriver() override {
        const CaughtErrors whatever_closing_raises;
        host::dbcloseall();
        host::rddsetdefault("DBFIDX");
    }
    static void use(const char* alias = "STOCK", bool shared = true) {
        host::dbusearea(true, {}, "stock", alias, shared);
    }
    [[nodiscard]] std::string locks() const {
        std::string all;
        for (const auto& row : rows("select cast(RLK_RECNO as integer) from RDDSYS_RLK order by 1"))
            all += row[0] + " ";
        return all + std::to_string(rows("select * from RDDSYS_FLK").size());
    }
};

TEST_F(AreaDriver, IsTheDefaultFromSetibrddOnAndOpensTablesOfThatObject) {
    EXPECT_EQ(show(host::rddsetdefault()), "\"ZMRDDFIRE\"");
    use("GOODS");
    EXPECT_EQ(show(host::alias()), "\"GOODS\"");
    EXPECT_TRUE(call("isfirebirdarea", "goods").logical());
    EXPECT_EQ(show(host::dbstruct()),
              R"({{"CODE", "C", 5, 0}, {"ONHAND", "N", 8, 0}, )"
              R"({"PRICE", "N", 10, 2}, {"SINCE", "D", 8, 0}, {"LISTED", "L", 1, 0}})");
}

TEST_F(AreaDriver, RegistersAnnouncesAndTakesBothBackAtTheClose) {
    use("GOODS");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    EXPECT_EQ(rows("select OPN_AREAID from RDDSYS_OPN")[0][0].substr(0, 12), "STOCK:GOODS~");
    CaughtErrors caught;
    call("clearsystemtables");
    EXPECT_EQ(caught.take_count(), 1) << "an alias is announced";
    host::dbclosearea();
    EXPECT_EQ(system_tables(), "");
    call("clearsystemtables");
    EXPECT_EQ(caught.take_count(), 0);
}

TEST_F(AreaDriver, DisconnectingWritesAndClosesItsAreas) {
    use();
    host::rlock();
    host::fieldput("CODE", "new");
    use("OTHER");
    host::flock();
    call("disconnect");
    EXPECT_FALSE(host::used().logical());
    EXPECT_EQ(host::table_of("STOCK"), nullptr);
    EXPECT_EQ(system_tables(), "");
    EXPECT_EQ(stored(1, "CODE"), "new");
    CaughtErrors caught;
    use();
    EXPECT_EQ(caught.number("gencode"), 21);
    EXPECT_EQ(caught.text("description"), "The connection that serves ZMRDDFIRE is not attached: stock");
}

TEST_F(AreaDriver, TheLastHandleOfTheObjectClosesItsAreas) {
    use();
    host::rlock();
    disconnect();
    EXPECT_FALSE(host::used().logical());
    EXPECT_EQ(system_tables(), "");
    CaughtErrors caught;
    use();
    EXPECT_EQ(caught.text("description"), "No connection serves ZMRDDFIRE: call setibrdd on one: stock");
    EXPECT_EQ(caught.text("subsystem"), "ZMRDDFIRE");
    EXPECT_FALSE(host::neterr().logical());
}

TEST_F(AreaDriver, NoAreaOutlivesItsObjectWhateverAnErrorBlockThrows) {
    execute("alter table STOCK add check (ONHAND < 100)");
    for (const char* alias : {"FIRST", "SECOND", "THIRD"}) {
        use(alias);
        host::dbgoto(host::select());
        host::rlock();
        host::fieldput("ONHAND", 100);  // what the close is to write is refused
    }
    {
        const host::ThrowingErrors thrown;
        disconnect();
    }
    for (const char* alias : {"FIRST", "SECOND", "THIRD"}) EXPECT_EQ(host::table_of(alias), nullptr) << alias;
    EXPECT_EQ(system_tables(), "");
}

TEST_F(AreaDriver, AnAreaThatItsObjectForgotIsAtItsEndAndRefusesMoves) {
    use();
    call("removealias", "STOCK");
    disconnect();
    ASSERT_NE(host::table_of("STOCK"), nullptr);
    EXPECT_TRUE(host::eof() && host::bof());
    EXPECT_EQ(host::recno() + host::lastrec() + host::reccount() + host::indexord(), 1);
    EXPECT_EQ(show(host::fieldget("ONHAND")), "0");
    EXPECT_EQ(show(host::dbrlocklist()), "{}");
    CaughtErrors caught;
    EXPECT_FALSE(host::rlock() || host::dbrlock(1) || host::flock() || host::dbappend() || host::dbdelete());
    EXPECT_EQ(caught.take_count(), 1) << "of the append";
    host::dbgotop();
    host::dbskip();
    host::dbgoto(1);
    EXPECT_EQ(caught.take_count(), 3);
    EXPECT_EQ(caught.number("gencode"), 35);
    host::dbunlock();
    caught.take_count();
    host::dbclosearea();
    EXPECT_EQ(caught.take_count(), 0);
}

TEST_F(AreaDriver, AnObjectThatIsNotActiveOpensNone) {
    call("setrddactive", false);
    CaughtErrors caught;
    use();
    EXPECT_FALSE(host::used().logical());
    EXPECT_EQ(caught.text("description"), "The connection that serves ZMRDDFIRE is not active: stock");
    EXPECT_FALSE(host::dbcreate("other", host::array_of(host::array_of("A", "C", 1, 0))).logical());
    EXPECT_EQ(caught.number("gencode"), 20);
}

TEST_F(AreaDriver, TheObjectThatAskedLastServesWhatIsOpenedFromThenOn) {
    use("FIRST");
    zmFBConn other = connect();
    other.call("savepreviousrdd");
    use("SECOND");
    connection().call("disconnect");
    EXPECT_EQ(host::table_of("FIRST"), nullptr);
    ASSERT_NE(host::table_of("SECOND"), nullptr);
    host::dbselectarea("SECOND");
    EXPECT_TRUE(host::rlock());
    host::dbclosearea();
    other.call("restorepreviousrdd");
}

TEST_F(AreaDriver, WhoIsInTheWayOfAnOpenIsTold) {
    const zmFBConn other = connect();
    zmFBConn handle = other;
    const Area theirs(handle, "STOCK", {.mode = OpenMode::exclusive, .alias = "DESK"});
    CaughtErrors caught;
    use();
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.number("gencode"), 21);
    EXPECT_EQ(caught.number("oscode"), 32);
    EXPECT_EQ(show(caught.field("candefault")), ".T.");
    EXPECT_TRUE(host::neterr().logical());
    EXPECT_FALSE(host::used().logical());
    EXPECT_EQ(host::neterrholder().string().substr(0, 13), "DESK, process");
    EXPECT_EQ(system_tables(), "STOCK F ; STOCK ; ") << "nothing of the open that failed is left";
}

TEST_F(AreaDriver, WhoHasALockIsToldWhenItIsNotGivenBackInTime) {
    Area theirs = stock({.alias = "TILL"});
    const Held held = theirs.lock();
    use();
    EXPECT_FALSE(host::rlock(std::chrono::milliseconds(100)));
    EXPECT_EQ(host::neterrholder().string().substr(0, 13), "TILL, process");
    EXPECT_FALSE(host::neterr().logical());
    EXPECT_FALSE(host::flock());
    EXPECT_EQ(host::neterrholder().string().substr(0, 13), "TILL, process");
    EXPECT_TRUE(host::dbrlock(2));
    EXPECT_EQ(show(host::neterrholder()), "\"\"");
}

TEST_F(AreaDriver, FieldsThatWereNotAssignedAreNotWritten) {
    use();
    host::rlock();
    execute("update STOCK set PRICE = 7 where RECNO = 1");  // by a program that asks for no lock
    host::fieldput("CODE", "x");
    host::fieldput("ONHAND", 9);
    host::dbunlock();
    EXPECT_EQ(stored(1, "trim(CODE) || ONHAND || ' ' || PRICE"), "x9 7.00");
}

TEST_F(AreaDriver, AllFieldsOfARecordAreWrittenInOneUpdate) {
    execute("create table UPDATES (N integer)");
    execute(
        "create trigger COUNT_UPDATES for STOCK after update as begin insert into UPDATES values (1); end");
    use();
    host::rlock();
    for (int round = 0; round < 3; ++round) {
        host::fieldput("CODE", std::to_string(round));
        host::fieldput("ONHAND", round);
        host::fieldput("LISTED", true);
    }
    EXPECT_EQ(rows("select * from UPDATES").size(), 0U);
    host::dbskip();
    EXPECT_EQ(rows("select * from UPDATES").size(), 1U);
    host::dbcommit();
    host::dbunlock();
    host::dbgotop();
    EXPECT_EQ(rows("select * from UPDATES").size(), 1U) << "nothing changed since";
}

TEST_F(AreaDriver, WhatTheDatabaseRefusesIsRaisedAndForgotten) {
    execute("alter table STOCK add check (ONHAND < 100)");
    use();
    host::rlock();
    host::fieldput("ONHAND", 100);
    CaughtErrors caught;
    EXPECT_FALSE(host::dbcommit());
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.number("gencode"), 24);
    EXPECT_EQ(show(host::fieldget("ONHAND")), "1");
    host::fieldput("ONHAND", 99);
    host::dbskip();
    EXPECT_EQ(host::recno(), 2);
    EXPECT_EQ(caught.take_count(), 0);
    EXPECT_EQ(stored(1, "ONHAND"), "99");
}

TEST_F(AreaDriver, ARecordThatWasDeletedUnderItsLockIsRaisedWhenItIsWritten) {
    use();
    host::rlock();
    execute("delete from STOCK where RECNO = 1");  // by a program that asks for no lock
    host::fieldput("ONHAND", 5);
    CaughtErrors caught;
    host::dbskip();
    EXPECT_EQ(caught.number("gencode"), 24);
    EXPECT_EQ(caught.text("description"), "Record 1 of STOCK was deleted: STOCK");
    host::dbskip();
    EXPECT_EQ(host::recno(), 2);
}

TEST_F(AreaDriver, AnAppendedRecordIsSeenByOthersUnderItsLockOnly) {
    use();
    EXPECT_TRUE(host::dbappend());
    EXPECT_EQ(host::recno(), 4);
    EXPECT_EQ(locks(), "4 0");
    EXPECT_EQ(stored(4, "RDD_AREAID"), "NULL");
    host::fieldput("CODE", "new");
    host::dbappend();
    EXPECT_EQ(locks(), "5 0");
    EXPECT_EQ(stored(4, "CODE"), "new");
    host::dbunlock();
    EXPECT_EQ(locks(), "0");
}

TEST_F(AreaDriver, AFileLockStandsInPlaceOfRecordLocks) {
    use();
    host::rlock();
    host::dbrlock(3);
    EXPECT_EQ(locks(), "1 3 0");
    EXPECT_TRUE(host::flock());
    EXPECT_EQ(locks(), "1");
    EXPECT_TRUE(host::rlock() && host::dbappend());
    EXPECT_EQ(show(host::dbrlocklist()), "{}");
    host::dbunlock();
    EXPECT_EQ(locks(), "0");
}

TEST_F(AreaDriver, ATableThatGoesWithoutACloseIsWrittenAndUnregistered) {
    const CaughtErrors caught;
    auto table = host::find_driver("ZMRDDFIRE")->open({.file = "stock", .alias = "A", .shared = true});
    ASSERT_NE(table, nullptr);
    table->lock_record(1, {});
    table->put(0, "kept");
    table.reset();
    EXPECT_EQ(stored(1, "CODE"), "kept");
    EXPECT_EQ(system_tables(), "");
}

class AreaDriverSkipMode : public AreaDriver, public ::testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Modes, AreaDriverSkipMode, ::testing::Values(0, 1, 2));

TEST_P(AreaDriverSkipMode, ShowsChangesOfOthersWhenItReadsThemAndUnderALockAlways) {
    call("setglbskipmode", GetParam());
    use();
    host::dbgotop();
    execute("update STOCK set ONHAND = 20 where RECNO = 2");
    host::dbskip();
    EXPECT_EQ(show(host::fieldget("ONHAND")), GetParam() == 0 ? "20" : "2");
    host::dbskip(0);
    EXPECT_EQ(show(host::fieldget("ONHAND")), "20");
    execute("update STOCK set ONHAND = ONHAND + 1");
    EXPECT_TRUE(host::rlock());
    EXPECT_EQ(show(host::fieldget("ONHAND")), "21");
    host::dbskip();
    EXPECT_EQ(show(host::fieldget("ONHAND")), "4") << "what was read ahead of the lock is given up";
}

TEST_F(AreaDriver, TypesThatTheDriverMakesNoTablesOfAreReadAndWritten) {
    execute(
        "create table WIDE (I integer, B bigint, F double precision, V varchar(6), D date, T timestamp, "
        "M blob sub_type text, X boolean, RDD_AREAID varchar(50), RECNO double precision not null primary "
        "key)");
    execute("insert into WIDE (RECNO, I, V, M) values (1, 5, 'ab', 'a long text')");
    host::dbusearea(true, {}, "wide");
    EXPECT_EQ(
        show(host::dbstruct()),
        R"({{"I", "N", 19, 0}, {"B", "N", 19, 0}, {"F", "N", 15, 0}, {"V", "C", 6, 0}, {"D", "D", 8, 0}, )"
        R"({"T", "D", 8, 0}, {"M", "M", 10, 0}, {"X", "L", 1, 0}})");
    EXPECT_EQ(show(host::fieldget("V")), "\"ab    \"");
    EXPECT_EQ(show(host::fieldget("M")), "\"a long text\"");
    EXPECT_EQ(show(host::fieldget("B")), "0") << "NULL is the empty value";
    host::rlock();
    const Value day = host::fieldput("D", host::Date{2460000});
    host::fieldput("T", day);
    host::fieldput("B", 4503599627370497.0);
    host::fieldput("F", 0.1);
    host::fieldput("X", true);
    host::fieldput("M", "another");
    host::dbunlock();
    EXPECT_EQ(rows("select B, X, D, cast(T as date), M, F from WIDE")[0],
              (std::vector<std::string>{"4503599627370497", "TRUE", "2023-02-24", "2023-02-24", "another",
                                        "0.1000000000000000"}));
}

TEST_F(AreaDriver, TextsOfADatabaseOfSeveralBytesACharacterAreItsBytes) {
    execute("alter database set default character set UTF8");
    disconnect();
    call("setibrdd");
    host::dbcreate("people", host::array_of(host::array_of("NAME", "C", 10, 0)));
    host::dbusearea(true, {}, "people");
    EXPECT_EQ(show(host::dbstruct()), R"({{"NAME", "C", 40, 0}})");
    host::dbappend();
    host::fieldput("NAME", "Jo\xC3\xA3o");
    host::dbcommit();
    EXPECT_EQ(rows("select char_length(trim(NAME)) from PEOPLE")[0][0], "4");
    EXPECT_EQ(host::trim(host::fieldget("NAME")).string(), "Jo\xC3\xA3o");
    EXPECT_TRUE(host::ordcreate("name", "NAME") && host::dbseek("Jo\xC3\xA3"));
    CaughtErrors caught;
    host::fieldput("NAME", "twelve bytes");
    EXPECT_FALSE(host::dbcommit());
    EXPECT_EQ(caught.number("gencode"), 24) << "more characters than the field has";
    EXPECT_EQ(host::trim(host::fieldget("NAME")).string(), "Jo\xC3\xA3o");
}

TEST_F(AreaDriver, WhatIsNoTableOfTheDriverIsRefused) {
    CaughtErrors caught;
    for (const char* name : {"nosuch", "RDB$RELATIONS"}) {
        host::dbusearea(true, {}, name, "X");
        EXPECT_EQ(caught.take_count(), 1) << name;
        EXPECT_EQ(caught.number("gencode"), 21) << name;
        EXPECT_FALSE(host::used().logical());
        EXPECT_FALSE(host::neterr().logical());
    }
    EXPECT_EQ(system_tables(), "");
}

TEST_F(AreaDriver, ADriverThatTheProgramBroughtInUnderTheNameStays) {
    class Nothing final : public host::Driver {
        std::unique_ptr<host::Table> open(const host::OpenRequest&) override { return nullptr; }
    };
    const auto before = host::find_driver("ZMRDDFIRE");
    host::register_driver("ZMRDDFIRE", std::make_shared<Nothing>());
    call("setibrdd");
    use();
    EXPECT_FALSE(host::used().logical());
    host::register_driver("ZMRDDFIRE", before);
}

}  // namespace
}  // namespace zmfb::test
