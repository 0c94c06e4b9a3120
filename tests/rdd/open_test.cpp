// Opening and closing: what others see of it, what is in the way, and that nothing is left.
#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"
#include "tests/support/show.h"

namespace zmfb::test {
namespace {

using AreaOpen = AreaTest;

TEST_F(AreaOpen, RegistersAndAnnouncesUntilItIsClosed) {
    {
        Area area = stock();
        EXPECT_TRUE(area.is_open());
        EXPECT_EQ(area.table(), "STOCK");
        EXPECT_EQ(system_tables(), "STOCK T ; ");
        EXPECT_FALSE(connection()(m::istableinexclusivemode, "STOCK"));
        area.close();
        EXPECT_FALSE(area.is_open());
        EXPECT_EQ(system_tables(), "");
    }
    const Area again = stock({.mode = OpenMode::read_only});
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(AreaOpen, HasAnIdThatNoOtherAreaHas) {
    const Area one = stock({.alias = "DESK"}), two = stock({.alias = "DESK"});
    EXPECT_NE(one.id(), two.id());
    const Holder parts(one.id());
    EXPECT_EQ(parts.table, "STOCK");
    EXPECT_EQ(parts.area, "DESK");
    EXPECT_EQ(parts.process, std::to_string(connection()(m::getpid)));
}

TEST_F(AreaOpen, CutsTheAliasAndNotWhatMakesItsIdUnique) {
    const std::string alias(60, 'X');
    const Area one = stock({.alias = alias}), two = stock({.alias = alias});
    EXPECT_LE(one.id().size(), 50u);
    EXPECT_NE(one.id(), two.id());
    EXPECT_EQ(Holder(one.id()).process, std::to_string(connection()(m::getpid)));
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK T ; ");
}

TEST_F(AreaOpen, TakesAnAliasThatWouldEndATextOrAPart) {
    const Area area = stock({.alias = "O'Neill: \xC3\xA9"});
    EXPECT_EQ(Holder(area.id()).area, "O_Neill____");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(AreaOpen, ExclusiveKeepsOthersOutAndSaysWho) {
    const Area mine = stock({.mode = OpenMode::exclusive, .alias = "MINE"});
    EXPECT_EQ(system_tables(), "STOCK F ; STOCK ; ");
    for (const OpenMode mode : {OpenMode::shared, OpenMode::read_only, OpenMode::exclusive}) {
        const Holder holder = holder_of([&] { (void)stock({.mode = mode}); });
        EXPECT_EQ(holder.id, mine.id());
        EXPECT_EQ(holder.area, "MINE");
    }
    EXPECT_EQ(system_tables(), "STOCK F ; STOCK ; ");
}

TEST_F(AreaOpen, ExclusiveIsRefusedWhileOthersHaveItOpen) {
    const Area other = stock();
    EXPECT_EQ(holder_of([&] { (void)stock({.mode = OpenMode::exclusive}); }).id, other.id());
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(AreaOpen, ExclusiveIsRefusedWhileAnotherProgramHasTheTableLocked) {
    connection()(m::settableaslocked, "STOCK", AreaId("STOCK:TILL:1:elsewhere"));
    const Holder holder = holder_of([&] { (void)stock({.mode = OpenMode::exclusive}); });
    EXPECT_EQ(holder.area, "TILL");
    EXPECT_EQ(holder.process, "1");
    EXPECT_EQ(holder.host, "elsewhere");
    EXPECT_EQ(system_tables(), "STOCK ; ");
}

TEST_F(AreaOpen, ThatIsRefusedTellsWhoInWords) {
    connection()(m::settableusedbyarea, true, "STOCK", AreaId("STOCK:TILL~k3j9x2a1:77:shop1"), false);
    try {
        (void)stock();
        FAIL() << "it was opened";
    } catch (const InUse& in_use) {
        EXPECT_STREQ(in_use.what(), "STOCK is in use by TILL, process 77 on shop1");
    }
}

TEST_F(AreaOpen, ThatFailsTakesBackWhatItMade) {
    EXPECT_EQ(state_of([&] { Area(connection(), "NOWHERE"); }), "42S02");
    execute("create table FOREIGNER (A integer)");
    EXPECT_EQ(reason_of([&] { Area(connection(), "FOREIGNER"); }), Reason::no_table);
    EXPECT_EQ(system_tables(), "");
    fill(1);
    execute("alter table STOCK add RATIO computed by (cast(1 / (ONHAND - 1) as integer))");
    EXPECT_EQ(state_of([&] { (void)stock({.mode = OpenMode::exclusive}); }), "22012");
    EXPECT_EQ(system_tables(), "");
    EXPECT_EQ(show(connection().call("clearsystemtables")), ".T.");
}

TEST_F(AreaOpen, ThatTheDatabaseRefusesSaysWhy) {
    execute("create exception REFUSED 'not on Sundays'");
    execute("create trigger REFUSING for RDDSYS_OPN before insert as begin exception REFUSED; end");
    try {
        (void)stock();
        FAIL() << "it was opened";
    } catch (const AreaError& error) {
        EXPECT_EQ(error.reason(), Reason::refused);
        EXPECT_NE(std::string(error.what()).find("not on Sundays"), std::string::npos) << error.what();
    }
}

TEST_F(AreaOpen, NeedsAnObjectThatIsAttachedAndActive) {
    zmFBConn none;
    EXPECT_EQ(reason_of([&] { Area(none, "STOCK"); }), Reason::closed);
    zmFBConn object = connect();
    object(m::setrddactive, false);
    EXPECT_EQ(reason_of([&] { Area(object, "STOCK"); }), Reason::closed);
    object(m::setrddactive, true);
    object(m::disconnect);
    EXPECT_EQ(state_of([&] { Area(object, "STOCK"); }), "08003");
}

TEST_F(AreaOpen, ThatWasMovedFromIsClosed) {
    fill(1);
    Area first = stock();
    Area second = std::move(first);
    EXPECT_TRUE(second.is_open());
    EXPECT_FALSE(first.is_open());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(reason_of([&] { first.top(); }), Reason::closed);
    first.close();
    EXPECT_EQ(second.recno(), 1);
    Area third = stock();
    third = std::move(second);
    EXPECT_EQ(system_tables(), "STOCK T ; ");
    EXPECT_EQ(third.recno(), 1);
}

TEST_F(AreaOpen, EndsWithDisconnectAndGoesAfterIt) {
    fill(3);
    std::optional<Area> area(stock());
    auto held = area->lock();
    EXPECT_EQ(system_tables(), "STOCK T ; STOCK 1 ; ");
    connection()(m::disconnect);
    EXPECT_EQ(system_tables(), "");
    EXPECT_FALSE(area->is_open());
    EXPECT_EQ(reason_of([&] { area->skip(); }), Reason::closed);
    EXPECT_EQ(reason_of([&] { held.write(); }), Reason::closed);
    area.reset();
}

TEST_F(AreaOpen, EndsWithTheLastHandleOfTheConnection) {
    fill(1);
    std::optional<zmFBConn> object(connect());
    Area area(*object, "STOCK");
    auto held = area.lock();
    object.reset();
    EXPECT_EQ(system_tables(), "");
    EXPECT_FALSE(area.is_open());
}

TEST_F(AreaOpen, EndsWithDisconnectThoughItsAliasWasRemoved) {
    Area area = stock();
    const std::string id = area.id();
    const std::size_t alias = id.find(':') + 1;
    connection()(m::removealias, id.substr(alias, id.find(':', alias) - alias));
    connection()(m::disconnect);
    EXPECT_EQ(system_tables(), "");
    EXPECT_FALSE(area.is_open());
}

TEST_F(AreaOpen, EndsWithAnObjectThatTakesItselfForDetached) {
    fill(1);
    std::optional<zmFBConn> object(connect());
    Area area(*object, "STOCK");
    std::optional<Held> held(area.lock());
    object->set("bconn", false);
    object.reset();
    EXPECT_FALSE(area.is_open());
    held.reset();
}

TEST_F(AreaOpen, IsClosedByForceUnderItsAlias) {
    Area one = stock(), two = stock();
    connection()(m::closealltables);
    EXPECT_FALSE(one.is_open());
    EXPECT_FALSE(two.is_open());
    EXPECT_EQ(system_tables(), "");
    EXPECT_TRUE(stock().is_open());
    EXPECT_TRUE(connection()(m::clearsystemtables));
}

TEST_F(AreaOpen, KeepsTheSystemTablesFromBeingCleared) {
    const Area area = stock();
    EXPECT_FALSE(connection()(m::clearsystemtables));
    EXPECT_EQ(raised().size(), 1u);
}

TEST_F(AreaOpen, LeavesNothingOfManyThatAreOpenedAndClosed) {
    for (int i = 0; i < 20; ++i) {
        Area area = stock({.mode = i % 2 == 0 ? OpenMode::shared : OpenMode::exclusive});
        EXPECT_TRUE(area.is_open());
    }
    EXPECT_EQ(system_tables(), "");
    EXPECT_EQ(show(call("clearsystemtables")), ".T.");
}

}  // namespace
}  // namespace zmfb::test
