// Locks: who gets one, who waits and for how long, and when they are given back.
#include <chrono>
#include <thread>

#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"
#include "zmfbconn/cancel.h"

namespace zmfb::test {
namespace {

using namespace std::chrono_literals;

class AreaLock : public AreaTest {
  protected:
    AreaLock() { fill(5); }
    // A program that goes by the same tables.
    const AreaId other_{"STOCK:TILL:1:elsewhere"};
};

TEST_F(AreaLock, IsHeldWhileItsGuardLives) {
    Area area = stock();
    area.go(3);
    {
        const Held held = area.lock();
        EXPECT_EQ(held.recno(), 3);
        EXPECT_EQ(system_tables(), "STOCK T ; STOCK 3 ; ");
        EXPECT_TRUE(connection()(m::isrecordlockedbyuser, "STOCK", AreaId(area.id()), RecordNumber(3)));
    }
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(AreaLock, MovesWithItsGuard) {
    Area area = stock();
    Held one = area.lock();
    Held two = std::move(one);
    EXPECT_EQ(one.recno(), 0);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(reason_of([&] { one.write(); }), Reason::no_record);
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 1 ; ");
    area.go(2);
    two = area.lock();
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 2 ; ");
}

TEST_F(AreaLock, OfOneRecordIsHeldUntilTheLastGuardGoes) {
    Area area = stock();
    std::optional<Held> one(area.lock());
    const Held two = area.lock();
    one.reset();
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 1 ; ");
}

TEST_F(AreaLock, IsRefusedWhileAnotherHasTheRecord) {
    Area mine = stock(), other = stock({.alias = "OTHER"});
    const Held held = other.lock();
    const Holder holder = holder_of([&] { (void)mine.lock(); });
    EXPECT_EQ(holder.id, other.id());
    EXPECT_EQ(holder.area, "OTHER");
    mine.skip();
    EXPECT_EQ(mine.lock().recno(), 2);
}

TEST_F(AreaLock, IsRefusedWhileAnotherHasTheTable) {
    Area mine = stock(), other = stock();
    other.lock_table();
    EXPECT_TRUE(other.is_table_locked());
    EXPECT_EQ(holder_of([&] { (void)mine.lock(); }).id, other.id());
    EXPECT_EQ(holder_of([&] { mine.lock_table(); }).id, other.id());
    EXPECT_FALSE(mine.is_table_locked());
    other.unlock_table();
    EXPECT_EQ(mine.lock().recno(), 1);
}

TEST_F(AreaLock, OfATableIsRefusedWhileAnotherHasARecord) {
    Area mine = stock(), other = stock();
    const Held held = other.lock();
    EXPECT_EQ(holder_of([&] { mine.lock_table(); }).id, other.id());
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK T ; STOCK 1 ; ");
}

TEST_F(AreaLock, ThatIsNotGivenBackIsWaitedForAsLongAsIsSaid) {
    connection()(m::setrecordaslocked, "STOCK", other_, RecordNumber(1));
    Area area = stock();
    const auto begun = std::chrono::steady_clock::now();
    const Holder holder = holder_of([&] { (void)area.lock(300ms); });
    EXPECT_GE(std::chrono::steady_clock::now() - begun, 300ms);
    EXPECT_EQ(holder.area, "TILL");
    EXPECT_EQ(holder.process, "1");
    EXPECT_EQ(holder.host, "elsewhere");
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 1 ; ");
}

TEST_F(AreaLock, ThatIsGivenBackWithinTheTimeIsGotAndTheRecordIsReadThen) {
    connection()(m::setrecordaslocked, "STOCK", other_, RecordNumber(1));
    Area area = stock();
    std::thread till([this] {
        std::this_thread::sleep_for(300ms);
        execute("update STOCK set ONHAND = 77 where RECNO = 1");
        execute("delete from RDDSYS_RLK");
    });
    Held held = area.lock(30s);
    till.join();
    EXPECT_EQ(held["ONHAND"].as<int>(), 77);
    EXPECT_EQ(area["ONHAND"].as<int>(), 77);
}

TEST_F(AreaLock, ShowsNothingFromBeforeIt) {
    Area area = stock();
    EXPECT_EQ(area["ONHAND"].as<int>(), 1);
    execute("update STOCK set ONHAND = 77, CODE = 'NEW'");
    Held held = area.lock();
    EXPECT_EQ(held["ONHAND"].as<int>(), 77);
    EXPECT_EQ(area["ONHAND"].as<int>(), 77);
    area.skip();
    EXPECT_EQ(area["CODE"].as<std::string>(), "NEW");
}

TEST_F(AreaLock, OfARecordThatIsGoneIsGivenBack) {
    Area area = stock();
    execute("delete from STOCK where RECNO = 1");
    EXPECT_EQ(reason_of([&] { (void)area.lock(); }), Reason::gone);
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 2);
}

TEST_F(AreaLock, IsNotTakenByAnAreaThatOnlyReads) {
    Area area = stock({.mode = OpenMode::read_only});
    EXPECT_EQ(reason_of([&] { (void)area.lock(); }), Reason::read_only);
    EXPECT_EQ(reason_of([&] { area.lock_record(1); }), Reason::read_only);
    EXPECT_EQ(reason_of([&] { area.lock_table(); }), Reason::read_only);
    EXPECT_EQ(reason_of([&] { (void)area.append(); }), Reason::read_only);
    EXPECT_EQ(reason_of([&] { (void)area.edit(); }), Reason::read_only);
}

TEST_F(AreaLock, ByNumberIsHeldUntilItIsGivenBackByNumber) {
    Area area = stock();
    area.lock_record(4);
    area.lock_record(2);
    area.lock_record(4);
    EXPECT_EQ(area.locked_records(), (std::vector<std::int64_t>{2, 4}));
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 2 ; STOCK 4 ; ");
    area.go(4);
    { const Held held = area.lock(); }
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 2 ; STOCK 4 ; ");
    area.unlock_record(4);
    area.unlock_record(3);
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 2 ; ");
    const Held held = area.lock();
    area.lock_table();
    area.unlock();
    EXPECT_EQ(area.locked_records(), std::vector<std::int64_t>());
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 4 ; ");
}

TEST_F(AreaLock, OfRecordsIsNotNeededUnderThatOfTheTable) {
    Area area = stock();
    area.lock_table();
    Held held = area.lock();
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK ; ");
    held["ONHAND"] = 50;
    held.write();
    EXPECT_EQ(stored(1, "ONHAND"), "50");
    area.unlock_table();
    held["ONHAND"] = 60;
    EXPECT_EQ(reason_of([&] { held.write(); }), Reason::not_locked);
    EXPECT_EQ(stored(1, "ONHAND"), "50");
}

TEST_F(AreaLock, OfRecordsIsNotNeededByAnExclusiveArea) {
    Area area = stock({.mode = OpenMode::exclusive});
    Held held = area.edit();
    held["ONHAND"] = 50;
    held.write();
    EXPECT_EQ(system_tables(), "STOCK F ; STOCK ; ");
    EXPECT_EQ(stored(1, "ONHAND"), "50");
}

TEST_F(AreaLock, ThatIsGivenBackIsGoneFromTheTableEvenAfterAFailure) {
    Area area = stock();
    std::optional<Held> held(area.lock());
    execute("delete from RDDSYS_RLK");
    held.reset();
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    EXPECT_EQ(area.lock().recno(), 1);
}

TEST_F(AreaLock, IsGivenBackWhileEverythingElseIsCancelled) {
    {
        Area area = stock(), locked = stock();
        const Held held = area.lock();
        area.lock_record(2);
        locked.lock_record(3);
        cancel();
        EXPECT_EQ(state_of([&] { area.top(); }), "HY008");
        cancel();  // which is for a statement that is no longer there
    }
    EXPECT_THROW((void)stock(), std::exception);
    resume();
    EXPECT_EQ(system_tables(), "");
}

TEST_F(AreaLock, ThatTheDatabaseRefusesSaysWhy) {
    execute("create exception REFUSED 'not on Sundays'");
    Area area = stock();
    execute("create trigger REFUSING for RDDSYS_RLK before insert as begin exception REFUSED; end");
    try {
        (void)area.lock();
        FAIL() << "it was locked";
    } catch (const AreaError& error) {
        EXPECT_EQ(error.reason(), Reason::refused);
        EXPECT_NE(std::string(error.what()).find("not on Sundays"), std::string::npos) << error.what();
    }
}

}  // namespace
}  // namespace zmfb::test
