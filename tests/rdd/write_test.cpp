// What is written, and what is not.
#include "host/date.h"
#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

class AreaWrite : public AreaTest {
  protected:
    AreaWrite() { fill(5); }
};

TEST_F(AreaWrite, IsOneStatementOfWhatWasAssigned) {
    Area area = stock();
    const auto onhand = area.field<std::int64_t>("ONHAND");
    Held held = area.lock();
    execute("update STOCK set PRICE = 9.99 where RECNO = 1");  // by one that asks for no locks
    held[onhand] = held[onhand] + 6;
    held[onhand] -= 2;
    held["code"] = "B1";
    EXPECT_EQ(held[onhand], 5);
    EXPECT_EQ(stored(1, "ONHAND"), "1");
    held.write();
    EXPECT_EQ(stored(1, "CODE || '/' || ONHAND || '/' || PRICE"), "B1   /5/9.99");
    EXPECT_EQ(area[onhand], 5);
    EXPECT_EQ(area["PRICE"].as<Decimal>(), Decimal("9.99"));
    held[onhand] = 9;
    held.write();
    EXPECT_EQ(stored(1, "ONHAND"), "9");
}

TEST_F(AreaWrite, OfNothingIsNothing) {
    execute("create exception REFUSED 'no'");
    Area area = stock();
    execute("create trigger REFUSING for STOCK before update as begin exception REFUSED; end");
    Held held = area.lock();
    held.write();
}

TEST_F(AreaWrite, IsNotDoneByAGuardThatGoes) {
    Area area = stock();
    {
        Held held = area.lock();
        held["ONHAND"] = 50;
    }
    EXPECT_EQ(stored(1, "ONHAND"), "1");
    EXPECT_EQ(area["ONHAND"].as<int>(), 1);
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    {
        Held added = area.append();
        added["CODE"] = "NEW";
    }
    EXPECT_EQ(rows("select count(*) from STOCK")[0][0], "5");
}

TEST_F(AreaWrite, IsNotForgottenByAMove) {
    Area area = stock();
    Held held = area.lock();
    held["ONHAND"] = 50;
    EXPECT_EQ(reason_of([&] { area.skip(); }), Reason::unwritten);
    EXPECT_EQ(reason_of([&] { area.top(); }), Reason::unwritten);
    EXPECT_EQ(reason_of([&] { area.go(2); }), Reason::unwritten);
    EXPECT_EQ(reason_of([&] { (void)area.append(); }), Reason::unwritten);
    held.write();
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 2);
}

TEST_F(AreaWrite, NeedsALock) {
    Area area = stock();
    EXPECT_EQ(reason_of([&] { (void)area.edit(); }), Reason::not_locked);
    area.lock_record(1);
    {
        Held held = area.edit();
        held["ONHAND"] = 50;
        held.write();
        area.unlock_record(1);
        held["ONHAND"] = 60;
        held.write();  // the guard has a share in the lock
    }
    EXPECT_EQ(stored(1, "ONHAND"), "60");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    EXPECT_EQ(reason_of([&] { (void)area.edit(); }), Reason::not_locked);
}

TEST_F(AreaWrite, OfARecordThatIsGoneIsThrown) {
    Area area = stock();
    Held held = area.lock();
    execute("delete from STOCK where RECNO = 1");
    held["ONHAND"] = 50;
    EXPECT_EQ(reason_of([&] { held.write(); }), Reason::gone);
    EXPECT_EQ(reason_of([&] { held.remove(); }), Reason::gone);
}

TEST_F(AreaWrite, ThatTheDatabaseRefusesStaysAssigned) {
    Area area = stock();
    Held held = area.lock();
    held["CODE"] = "TOO LONG";
    held["ONHAND"] = 50;
    EXPECT_EQ(state_of([&] { held.write(); }), "22001");
    EXPECT_EQ(held["CODE"].as<std::string>(), "TOO LONG");
    held["CODE"] = std::string("B1");
    held.write();
    EXPECT_EQ(stored(1, "CODE || ONHAND"), "B1   50");
}

TEST_F(AreaWrite, RoundsToTheDecimalsOfAField) {
    Area area = stock();
    Held held = area.lock();
    held["PRICE"] = 10.5;
    held.write();
    EXPECT_EQ(stored(1, "PRICE"), "10.50");
    held["PRICE"] = 0.126;
    held["ONHAND"] = 6.7;
    held.write();
    EXPECT_EQ(stored(1, "PRICE || '/' || ONHAND"), "0.13/7");
    held["PRICE"] = Decimal("1.5");
    held.write();
    EXPECT_EQ(stored(1, "PRICE"), "1.50");
}

TEST_F(AreaWrite, TakesWhatAFieldHolds) {
    using std::chrono::year_month_day;
    Area area = stock();
    Held held = area.lock();
    held["SINCE"] = 2007y / 3 / 1;
    held["LISTED"] = true;
    held["CODE"] = "\xC3\x89";
    held.write();
    EXPECT_EQ(stored(1, "SINCE || LISTED || octet_length(trim(CODE))"), "2007-03-01 00:00:00.0000T1");
    held["SINCE"] = std::nullopt;
    held.write();
    EXPECT_EQ(stored(1, "SINCE"), "NULL");
    EXPECT_EQ(reason_of([&] { held["CODE"] = 5; }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { held["ONHAND"] = "5"; }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { held["ONHAND"] = true; }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { held["SINCE"] = 2007y / 2 / 30; }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { held["PRICE"] = Decimal("0.001"); }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { held["ONHAND"] = 1e30; }), Reason::wrong_type);
    EXPECT_EQ(reason_of([&] { held["LISTED"] = 2007y / 3 / 1; }), Reason::wrong_type);
}

TEST_F(AreaWrite, TakesValuesOfTheRuntime) {
    Area area = stock({.texts = TextForm::as_kept});
    Held held = area.lock();
    held["CODE"].assign("\xC9");
    held["ONHAND"].assign(7);
    held["SINCE"].assign(host::date_of({.year = 2007, .month = 3, .day = 1}));
    held["LISTED"].assign(true);
    held.write();
    EXPECT_EQ(stored(1, "CODE"), "\xC9");
    EXPECT_EQ(stored(1, "ONHAND || SINCE || LISTED"), "72007-03-01 00:00:00.0000T");
    held["SINCE"].assign(host::Date());
    held.write();
    EXPECT_EQ(stored(1, "SINCE"), "NULL");
    EXPECT_EQ(reason_of([&] { held["CODE"].assign(host::Value::array_of_size(1)); }), Reason::wrong_type);
}

TEST_F(AreaWrite, OfADeletionLeavesTheOthers) {
    Area area = stock();
    area.go(3);
    Held held = area.lock();
    held.remove();
    EXPECT_EQ(stored(3, "CODE"), "gone");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    EXPECT_EQ(held.recno(), 0);
    EXPECT_EQ(reason_of([&] { held.write(); }), Reason::no_record);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 4);
    EXPECT_TRUE(area.skip(-1));
    EXPECT_EQ(area.recno(), 2);
}

TEST_F(AreaWrite, OfANewRecordLearnsItsNumberAndHoldsIt) {
    Area area = stock();
    Held added = area.append();
    EXPECT_EQ(added.recno(), 0);
    added["CODE"] = "NEW";
    added.write();
    EXPECT_EQ(added.recno(), 6);
    EXPECT_EQ(area.recno(), 6);
    EXPECT_EQ(area["CODE"].as<std::string>(), "NEW");
    EXPECT_EQ(added["ONHAND"].as<int>(), 0);
    EXPECT_EQ(connection()(m::getapprecnofromarea, "STOCK", AreaId(area.id())).number(), 6);
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 6 ; ");
    EXPECT_EQ(stored(6, "RDD_AREAID"), "NULL");
    added["ONHAND"] = 3;
    added.write();
    EXPECT_EQ(stored(6, "CODE || ONHAND"), "NEW  3");
}

TEST_F(AreaWrite, OfANewRecordMayBeOfNothing) {
    Area area = stock();
    Held added = area.append();
    added.write();
    EXPECT_EQ(stored(6, "CODE || '/' || ONHAND || '/' || LISTED"), "     /0/F");
}

TEST_F(AreaWrite, OfANewRecordIsRefusedWhileAnotherHasTheTable) {
    Area area = stock(), other = stock();
    other.lock_table();
    Held added = area.append();
    added["CODE"] = "NEW";
    EXPECT_EQ(holder_of([&] { added.write(); }).id, other.id());
    EXPECT_EQ(rows("select count(*) from STOCK")[0][0], "5");
    EXPECT_EQ(added["CODE"].as<std::string>(), "NEW");
    other.unlock_table();
    added.write();
    EXPECT_EQ(stored(static_cast<int>(added.recno()), "CODE"), "NEW");
}

TEST_F(AreaWrite, OfManyNewRecordsIsReadBackWhole) {
    Area area = stock();
    const auto onhand = area.field<int>("ONHAND");
    for (int i = 6; i <= 40; ++i) {
        Held added = area.append();
        added[onhand] = i;
        added.write();
        EXPECT_EQ(area[onhand], i);
    }
    int next = 1;
    for (const Area& at : area) EXPECT_EQ(at[onhand], next++);
    EXPECT_EQ(next, 41);
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(AreaWrite, OfAllRecordsNeedsAnExclusiveArea) {
    {
        Area area = stock();
        EXPECT_EQ(reason_of([&] { area.zap(); }), Reason::not_exclusive);
    }
    Area area = stock({.mode = OpenMode::exclusive});
    area.zap();
    EXPECT_TRUE(area.eof());
    EXPECT_EQ(area.count(), 0);
    EXPECT_EQ(connection()(m::gettablereccount, "STOCK"), 0);
}

}  // namespace
}  // namespace zmfb::test
