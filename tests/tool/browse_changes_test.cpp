// Changes of a browser, and how they are taken back.
#include <functional>

#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"
#include "tool/browse/changes.h"
#include "tool/session.h"

namespace zmfb::test {
namespace {

using namespace tool::browse;

constexpr std::size_t code = 0, onhand = 1, since = 3, listed = 4;

class BrowseChanges : public AreaTest {
  protected:
    BrowseChanges() { fill(3); }
    static Changes changes_of(Area& area, zmFBConn& connection) {
        return {area, TableRules(connection, area, connection(m::gettablestruct, area.table()))};
    }
    Changes changes_of(Area& area) { return changes_of(area, connection()); }
    static void set(Changes& changes, Area& area, std::int64_t record, const NewValues& values) {
        area.go(record);
        Held held = area.lock();
        changes.update(held, values);
    }
    static std::string refused(Changes& changes) {
        try {
            return "done: " + changes.undo().words;
        } catch (const tool::Failure& failure) {
            return failure.message;
        }
    }
};

TEST_F(BrowseChanges, AreTakenBackFromTheLastOne) {
    Area area = stock();
    Changes changes = changes_of(area);
    set(changes, area, 2, {{onhand, Decimal(50)}, {listed, true}});
    set(changes, area, 2, {{code, std::string("Z")}, {since, std::monostate()}});
    set(changes, area, 3, {{onhand, Decimal(60)}});
    EXPECT_EQ(changes.undo().words, "record 3 is as it was");
    EXPECT_EQ(stored(3, "ONHAND"), "3");
    EXPECT_EQ(changes.undo().number, 2);
    EXPECT_EQ(stored(2, "CODE || ONHAND || LISTED"), "A2   50T");
    EXPECT_EQ(changes.undo().number, 2);
    EXPECT_EQ(stored(2, "CODE || ONHAND || LISTED"), "A2   2F");
    EXPECT_EQ(refused(changes), "there is nothing to undo");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

// Of types that the driver's own tables have no fields of.
TEST_F(BrowseChanges, OfColumnsOfOtherProgramsAreTypedAndTakenBack) {
    execute(
        "alter table STOCK add B boolean, add F double precision, add D date, add T time, add O varchar(3) "
        "character set octets");
    execute("update STOCK set B = true, F = 0.5, D = '1999-12-31', T = '14:05', O = 'xyz' where RECNO = 2");
    Area area = stock();
    Changes changes = changes_of(area);
    NewValues values;
    std::size_t column = listed;
    for (const char* typed : {"F", "-2.5", "2026-11-23", "09:30:15.1250"}) {
        ++column;
        values.emplace(column, typed_value(changes.rules().columns.at(column), typed));
    }
    const std::string all = "B || ' ' || cast(F as numeric(4, 1)) || ' ' || D || ' ' || T || ' ' || O";
    set(changes, area, 2, values);
    EXPECT_EQ(stored(2, all), "FALSE -2.5 2026-11-23 09:30:15.1250 xyz");
    EXPECT_EQ(changes.undo().words, "record 2 is as it was");
    EXPECT_EQ(stored(2, all), "TRUE 0.5 1999-12-31 14:05:00.0000 xyz");
}

TEST_F(BrowseChanges, AreLeftWhereOthersTouchedTheRecordSince) {
    Area area = stock();
    Changes changes = changes_of(area);
    set(changes, area, 1, {{onhand, Decimal(10)}});
    set(changes, area, 2, {{onhand, Decimal(20)}});
    set(changes, area, 3, {{onhand, Decimal(30)}});
    execute("update STOCK set PRICE = 1 where RECNO = 3");
    execute("delete from STOCK where RECNO = 2");
    EXPECT_EQ(refused(changes), "record 3 was changed by others since: it is left as it is");
    EXPECT_EQ(refused(changes), "record 2 was deleted since: it is left as it is");
    EXPECT_EQ(refused(changes), "done: record 1 is as it was");
    EXPECT_EQ(stored(3, "ONHAND || '/' || PRICE"), "30/1.00");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(BrowseChanges, AreKeptWhileOthersHaveTheRecord) {
    Area area = stock();
    Changes changes = changes_of(area);
    set(changes, area, 1, {{onhand, Decimal(10)}});
    {
        Area other = stock({.alias = "OTHER"});
        const Held held = other.lock();
        EXPECT_EQ(holder_of([&] { changes.undo(); }).area, "OTHER");
    }
    EXPECT_EQ(refused(changes), "done: record 1 is as it was");
}

TEST_F(BrowseChanges, AnAddedRecordIsDeletedAgain) {
    Area area = stock();
    Changes changes = changes_of(area);
    EXPECT_EQ(changes.append({{code, std::string("NEW")}}), 4);
    EXPECT_EQ(stored(4, "CODE || ONHAND"), "NEW  0");
    EXPECT_EQ(changes.undo().words, "record 4, which was added, is deleted");
    EXPECT_EQ(stored(4, "CODE"), "gone");
    EXPECT_EQ(system_tables(), "STOCK T ; ");
}

TEST_F(BrowseChanges, ADeletedRecordComesBackUnderANewNumber) {
    execute("update STOCK set SINCE = '2026-11-22', PRICE = 12345678.91 where RECNO = 2");
    Area area = stock();
    Changes changes = changes_of(area);
    set(changes, area, 2, {{onhand, Decimal(50)}});
    {
        area.go(2);
        Held held = area.lock();
        changes.remove(held);
    }
    EXPECT_EQ(stored(2, "CODE"), "gone");
    EXPECT_EQ(changes.undo().words, "record 2 is back as record 4: no number is given twice");
    EXPECT_EQ(stored(4, "CODE || '/' || ONHAND || '/' || PRICE || '/' || cast(SINCE as date)"),
              "A2   /50/12345678.91/2026-11-22");
    EXPECT_EQ(changes.undo().words, "record 4 is as it was") << "what was done to it before";
    EXPECT_EQ(stored(4, "ONHAND"), "2");
}

TEST_F(BrowseChanges, ARecordThatIsNotReadWholeIsNotMadeAgain) {
    execute("alter table STOCK add PICTURE blob");
    Area area = stock();
    Changes changes = changes_of(area);
    Held held = area.lock();
    changes.remove(held);
    EXPECT_EQ(refused(changes),
              "record 1 had columns of types that are not read here: it cannot be made again");
    EXPECT_EQ(refused(changes), "there is nothing to undo");
}

TEST_F(BrowseChanges, ComputedColumnsTakeNothingAndAreInNobodysWay) {
    execute("alter table STOCK add TWICE computed by (ONHAND * 2)");
    Area area = stock();
    Changes changes = changes_of(area);
    EXPECT_EQ(changes.rules().columns.back().kind, CellRule::Kind::none);
    set(changes, area, 1, {{onhand, Decimal(8)}});
    {
        area.go(1);
        Held held = area.lock();
        changes.remove(held);
    }
    EXPECT_EQ(changes.undo().number, 4);
    EXPECT_EQ(changes.undo().number, 4);
    EXPECT_EQ(stored(4, "ONHAND || '/' || TWICE"), "1/2");
}

TEST_F(BrowseChanges, AreTakenBackBesideATriggerThatCounts) {
    execute("alter table STOCK add STAMP integer default 0");
    execute("create trigger STAMPING for STOCK before update as begin new.STAMP = old.STAMP + 1; end");
    Area area = stock();
    Changes changes = changes_of(area);
    set(changes, area, 1, {{onhand, Decimal(10)}});
    set(changes, area, 1, {{onhand, Decimal(20)}});
    EXPECT_EQ(refused(changes), "done: record 1 is as it was");
    EXPECT_EQ(refused(changes), "done: record 1 is as it was");
    EXPECT_EQ(stored(1, "ONHAND"), "1");
}

TEST_F(BrowseChanges, ThatAreRefusedChangeNothingAndKeepTheRecord) {
    execute("alter table STOCK add constraint FEW check (ONHAND < 100)");
    Area area = stock();
    Changes changes = changes_of(area);
    Held held = area.lock();
    struct Case {
        NewValues values;
        std::string words;
    };
    for (const Case& one : std::vector<Case>{
             {{{onhand, Decimal(100)}}, "CHECK constraint FEW"},
             {{{code, std::monostate()}}, "validation error for column"},
         }) {
        const SqlError error = error_of([&] { changes.update(held, one.values); });
        EXPECT_NE(error.message().find(one.words), std::string::npos) << error.message();
        EXPECT_EQ(system_tables(), "STOCK T ; STOCK 1 ; ");
        EXPECT_TRUE(area.top()) << "nothing is assigned any more";
    }
    changes.update(held, {{onhand, Decimal(99)}});
    EXPECT_EQ(stored(1, "CODE || ONHAND"), "A1   99");
    EXPECT_NE(error_of([&] { changes.append({{onhand, Decimal(100)}}); }).sqlcode(), 0);
    EXPECT_EQ(rows("select count(*) from STOCK")[0][0], "3");
}

TEST_F(BrowseChanges, OfARecordThatWentMeanwhileAreSaid) {
    Area area = stock();
    Changes changes = changes_of(area);
    Held held = area.lock();
    execute("delete from STOCK where RECNO = 1");  // by one that asks for no locks
    EXPECT_EQ(reason_of([&] { changes.update(held, {{onhand, Decimal(5)}}); }), Reason::gone);
    EXPECT_EQ(refused(changes), "there is nothing to undo");
}

TEST_F(BrowseChanges, OfAHundredAreRemembered) {
    Area area = stock();
    Changes changes = changes_of(area);
    for (int i = 1; i <= 103; ++i) set(changes, area, 1, {{onhand, Decimal(1000 + i)}});
    for (int i = 1; i <= 100; ++i) EXPECT_EQ(changes.undo().number, 1);
    EXPECT_EQ(stored(1, "ONHAND"), "1003");
    EXPECT_EQ(refused(changes), "there is nothing to undo");
}

}  // namespace
}  // namespace zmfb::test
