// Writes of several areas in one transaction.
#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"

namespace zmfb::test {
namespace {

class AreaTogether : public AreaTest {
  protected:
    AreaTogether() {
        fill(5);
        connection()(m::createtable, "SOLD", Structure{{"CODE", "C", 5, 0}, {"PIECES", "N", 8, 0}});
    }
    static void sell(Area& from, Area& to) {
        Held held = from.lock();
        const int onhand = held["ONHAND"].as<int>();
        held["ONHAND"] = onhand - 1;
        held.write();
        Held added = to.append();
        added["CODE"] = held["CODE"].as<std::string>();
        added["PIECES"] = 1;
        added.write();
    }
    [[nodiscard]] std::string state() const {
        return stored(1, "ONHAND") + " left, " + rows("select count(*) from SOLD")[0][0] + " sold";
    }
};

TEST_F(AreaTogether, IsSeenByOthersAtItsCommitOnly) {
    Area from = stock(), to(connection(), "SOLD");
    Together together(connection());
    sell(from, to);
    EXPECT_EQ(state(), "1 left, 0 sold");
    EXPECT_EQ(from["ONHAND"].as<int>(), 0);
    EXPECT_EQ(to["PIECES"].as<int>(), 1);
    EXPECT_EQ(to.count(), 1);
    together.commit();
    EXPECT_EQ(state(), "0 left, 1 sold");
    EXPECT_EQ(from["ONHAND"].as<int>(), 0);
}

TEST_F(AreaTogether, IsUndoneUnlessItIsCommitted) {
    Area from = stock(), to(connection(), "SOLD");
    {
        const Together together(connection());
        sell(from, to);
    }
    EXPECT_EQ(state(), "1 left, 0 sold");
    EXPECT_EQ(from["ONHAND"].as<int>(), 1);
    EXPECT_EQ(reason_of([&] { (void)to["CODE"]; }), Reason::no_record);
    EXPECT_TRUE(to.eof());
    Together together(connection());
    sell(from, to);
    together.roll_back();
    EXPECT_EQ(state(), "1 left, 0 sold");
    sell(from, to);
    EXPECT_EQ(state(), "0 left, 1 sold");
}

TEST_F(AreaTogether, KeepsLocksToItsEnd) {
    Area from = stock(), to(connection(), "SOLD"), other = stock();
    Together together(connection());
    sell(from, to);
    sell(from, to);
    EXPECT_EQ(system_tables(), "SOLD T ; STOCK T ; STOCK T ; SOLD 1 ; SOLD 2 ; STOCK 1 ; ");
    EXPECT_EQ(holder_of([&] { (void)other.lock(); }).id, from.id());
    together.commit();
    EXPECT_EQ(system_tables(), "SOLD T ; STOCK T ; STOCK T ; ");
    Held held = other.lock();
    EXPECT_EQ(held["ONHAND"].as<int>(), -1);
}

TEST_F(AreaTogether, KeepsALockThatAGuardHasBeyondIt) {
    Area from = stock();
    std::optional<Together> together(std::in_place, connection());
    const Held held = from.lock();
    from.lock_table();
    from.unlock_table();
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK ; STOCK 1 ; ");
    together.reset();
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 1 ; ");
}

TEST_F(AreaTogether, LocksARecordAsItIsThoughItBeganBefore) {
    Area from = stock();
    Together together(connection());
    EXPECT_EQ(from["ONHAND"].as<int>(), 1);
    execute("update STOCK set ONHAND = 77 where RECNO = 1");
    Held held = from.lock();
    EXPECT_EQ(held["ONHAND"].as<int>(), 77);
    held["ONHAND"] = 76;
    held.write();
    together.commit();
    EXPECT_EQ(stored(1, "ONHAND"), "76");
}

TEST_F(AreaTogether, KeepsAnAreaThatGoesToItsEnd) {
    Together together(connection());
    {
        Area from = stock(), to(connection(), "SOLD");
        sell(from, to);
    }
    EXPECT_EQ(system_tables(), "SOLD T ; STOCK T ; SOLD 1 ; STOCK 1 ; ");
    together.commit();
    EXPECT_EQ(system_tables(), "");
    EXPECT_EQ(state(), "0 left, 1 sold");
}

TEST_F(AreaTogether, LeavesNoRecordThatItGotNoLockFor) {
    Area to = stock(), other = stock();
    other.lock_table();
    Together together(connection());
    Held added = to.append();
    added["CODE"] = "NEW";
    (void)holder_of([&] { added.write(); });
    together.commit();
    EXPECT_EQ(rows("select count(*) from STOCK")[0][0], "5");
}

TEST_F(AreaTogether, IsOneAtATimeAndEndsOnce) {
    Together together(connection());
    EXPECT_EQ(reason_of([&] { Together(this->connection()); }), Reason::together);
    together.commit();
    EXPECT_EQ(reason_of([&] { together.commit(); }), Reason::together);
    EXPECT_EQ(reason_of([&] { together.roll_back(); }), Reason::together);
    Together next(connection());
    zmFBConn another = connect();
    const Together beside(another);
}

TEST_F(AreaTogether, IsUndoneWithDisconnect) {
    Area from = stock(), to(connection(), "SOLD");
    Together together(connection());
    sell(from, to);
    connection()(m::disconnect);
    EXPECT_EQ(system_tables(), "");
    EXPECT_EQ(state(), "1 left, 0 sold");
    EXPECT_EQ(reason_of([&] { together.commit(); }), Reason::together);
}

TEST_F(AreaTogether, WithoutAreasOutlivesItsConnection) {
    std::optional<zmFBConn> object(connect());
    Together together(*object);
    object.reset();
    EXPECT_EQ(state_of([&] { together.commit(); }), "25000");
}

}  // namespace
}  // namespace zmfb::test
