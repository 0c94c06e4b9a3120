// Moving about in a table, in each skip mode, alone and while others change it.
#include <limits>

#include "tests/rdd/area_test.h"
#include "tests/sql/sql_error_of.h"
#include "tests/support/heap.h"

namespace zmfb::test {
namespace {

using Numbers = std::vector<std::int64_t>;

// With the skip mode as the parameter.
class AreaWalk : public AreaTest, public ::testing::WithParamInterface<int> {
  protected:
    AreaWalk() {
        connection()(m::setglbskipmode, GetParam());
        connection()(m::setglbskipcachesize, 3);
    }
};

INSTANTIATE_TEST_SUITE_P(Mode, AreaWalk, ::testing::Values(0, 1, 2));

TEST_P(AreaWalk, BeginsOnTheFirstRecord) {
    fill(2);
    const Area area = stock();
    EXPECT_EQ(area.recno(), 1);
    EXPECT_EQ(area["CODE"].as<std::string>(), "A1");
    EXPECT_FALSE(area.eof());
    EXPECT_FALSE(area.bof());
}

TEST_P(AreaWalk, OfAnEmptyTableIsAtBothEnds) {
    Area area = stock();
    for (const bool moved : {false, area.top(), area.bottom(), area.skip(), area.skip(-1), area.go(1)}) {
        EXPECT_FALSE(moved);
        EXPECT_TRUE(area.eof());
    }
    EXPECT_FALSE(area.top());
    EXPECT_TRUE(area.bof());
    EXPECT_EQ(walked(area), Numbers());
    EXPECT_EQ(area.count(), 0);
    EXPECT_EQ(reason_of([&] { (void)area.recno(); }), Reason::no_record);
    EXPECT_EQ(reason_of([&] { (void)area["CODE"]; }), Reason::no_record);
    EXPECT_EQ(reason_of([&] { (void)area.lock(); }), Reason::no_record);
}

TEST_P(AreaWalk, ReadsOnFromItsRecordOrTheNextOne) {
    fill(4);
    Area area = stock();
    area.skip();
    execute("update STOCK set CODE = 'B' where RECNO in (2, 3)");
    EXPECT_EQ(area.read_on(), GetParam() == 0 ? 1u : 3u);
    EXPECT_EQ(area.recno(), 2);
    EXPECT_EQ(area["CODE"].as<std::string>(), "B");
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area["CODE"].as<std::string>(), "B");
    EXPECT_TRUE(area.skip(-1));
    execute("delete from STOCK where RECNO in (2, 3)");
    EXPECT_EQ(area.read_on(), 1u);
    EXPECT_EQ(area.recno(), 4);
    execute("delete from STOCK where RECNO = 4");
    EXPECT_EQ(area.read_on(), 0u);
    EXPECT_TRUE(area.eof());
    EXPECT_EQ(area.read_on(), 0u);
}

TEST_P(AreaWalk, MeetsEachRecordOnceInBothDirections) {
    fill(50);
    Area area = stock();
    Numbers all;
    for (int i = 1; i <= 50; ++i) all.push_back(i);
    EXPECT_EQ(walked(area), all);
    EXPECT_TRUE(area.eof());
    Numbers back;
    while (area.skip(-1)) back.insert(back.begin(), area.recno());
    EXPECT_EQ(back, all);
    EXPECT_TRUE(area.bof());
    EXPECT_EQ(area.recno(), 1);
    EXPECT_EQ(area.count(), 50);
}

TEST_P(AreaWalk, TurnsAroundAnywhere) {
    fill(20);
    Area area = stock();
    for (int at = 1; at < 20; ++at) {
        EXPECT_TRUE(area.skip());
        EXPECT_EQ(area.recno(), at + 1);
        EXPECT_TRUE(area.skip(-1));
        EXPECT_EQ(area.recno(), at);
        EXPECT_TRUE(area.skip());
    }
    EXPECT_TRUE(area.skip(-15));
    EXPECT_EQ(area.recno(), 5);
    EXPECT_TRUE(area.skip(12));
    EXPECT_EQ(area.recno(), 17);
    EXPECT_EQ(area["ONHAND"].as<int>(), 17);
}

TEST_P(AreaWalk, StaysOnTheFirstRecordBeforeIt) {
    fill(5);
    Area area = stock();
    EXPECT_FALSE(area.skip(-1));
    EXPECT_TRUE(area.bof());
    EXPECT_EQ(area.recno(), 1);
    EXPECT_TRUE(area.skip(0));
    EXPECT_FALSE(area.bof());
    area.go(3);
    EXPECT_FALSE(area.skip(-10));
    EXPECT_TRUE(area.bof());
    EXPECT_EQ(area.recno(), 1);
    EXPECT_TRUE(area.skip());
    EXPECT_FALSE(area.bof());
    EXPECT_EQ(area.recno(), 2);
}

TEST_P(AreaWalk, ComesBackFromBehindTheLastRecord) {
    fill(5);
    Area area = stock();
    EXPECT_FALSE(area.skip(100));
    EXPECT_TRUE(area.eof());
    EXPECT_FALSE(area.skip());
    EXPECT_TRUE(area.skip(-1));
    EXPECT_EQ(area.recno(), 5);
    EXPECT_FALSE(area.eof());
    EXPECT_TRUE(area.bottom());
    EXPECT_EQ(area.recno(), 5);
    EXPECT_FALSE(area.skip());
    EXPECT_TRUE(area.skip(-5));
    EXPECT_EQ(area.recno(), 1);
}

TEST_P(AreaWalk, GoesToARecordByItsNumber) {
    fill(9);
    Area area = stock();
    EXPECT_TRUE(area.go(7));
    EXPECT_EQ(area["CODE"].as<std::string>(), "A7");
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 8);
    using Limits = std::numeric_limits<std::int64_t>;
    for (const std::int64_t none : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{10},
                                    std::int64_t{1000000}, Limits::min(), Limits::max()}) {
        EXPECT_FALSE(area.go(none));
        EXPECT_TRUE(area.eof());
    }
    EXPECT_TRUE(area.skip(-1));
    EXPECT_EQ(area.recno(), 9);
}

TEST_P(AreaWalk, LeavesOutWhatOthersDeleteAheadAndMeetsWhatTheyAdd) {
    fill(30);
    Area area = stock();
    area.go(5);
    execute("delete from STOCK where RECNO in (5, 6, 20)");
    execute("insert into STOCK (CODE) values ('NEW')");
    Numbers met;
    while (area.skip()) met.push_back(area.recno());
    Numbers expected;
    for (int i = 6; i <= 31; ++i) {
        if (i != 6 && i != 20) expected.push_back(i);
    }
    EXPECT_EQ(met, expected);
}

TEST_P(AreaWalk, GoesOnFromARecordThatIsDeletedUnderItsFeet) {
    fill(9);
    Area area = stock();
    area.go(5);
    execute("delete from STOCK where RECNO = 5");
    EXPECT_EQ(area["CODE"].as<std::string>(), "A5");
    EXPECT_FALSE(area.refresh());
    EXPECT_EQ(area["CODE"].as<std::string>(), "A5");
    EXPECT_TRUE(area.skip(-1));
    EXPECT_EQ(area.recno(), 4);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 6);
}

TEST_P(AreaWalk, LeavesInWhatTheFilterSays) {
    fill(30);
    Area area = stock();
    area.go(10);
    area.filter("mod(ONHAND, 7) = 0");
    EXPECT_EQ(area.recno(), 10);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 14);
    EXPECT_EQ(walked(area), (Numbers{7, 14, 21, 28}));
    EXPECT_EQ(area.count(), 4);
    EXPECT_TRUE(area.bottom());
    EXPECT_EQ(area.recno(), 28);
    EXPECT_TRUE(area.go(3));
    EXPECT_EQ(state_of([&] { area.filter("NOBODY = 3"); }), "42S22");
    EXPECT_EQ(area.count(), 4);
    area.filter("CODE = 'A3' or CODE = 'A5'");
    EXPECT_EQ(walked(area), (Numbers{3, 5}));
    area.filter("");
    EXPECT_EQ(area.count(), 30);
}

TEST_P(AreaWalk, RefusesAFilterThatIsNoConditionByItself) {
    fill(6);
    Area area = stock();
    area.filter("ONHAND > 4");
    for (const char* filter : {"1 = 1) or (1 = 1", "1 = 1) --", "CODE = 'A1", "ONHAND > 2 /*"})
        EXPECT_EQ(state_of([&] { area.filter(filter); }), "42000") << filter;
    EXPECT_EQ(state_of([&] { area.filter("ONHAND > ?"); }), "07001");
    EXPECT_EQ(walked(area), (Numbers{5, 6}));
    EXPECT_EQ(area.count(), 2);
}

TEST_P(AreaWalk, OfTwoAreasOfOneTableIsEachItsOwn) {
    fill(9);
    Area one = stock(), two = stock();
    one.go(3);
    two.bottom();
    EXPECT_TRUE(one.skip());
    EXPECT_TRUE(two.skip(-1));
    EXPECT_EQ(one.recno(), 4);
    EXPECT_EQ(two.recno(), 8);
}

TEST_P(AreaWalk, SeesTheRowThatIsReadAnew) {
    fill(3);
    Area area = stock();
    execute("update STOCK set ONHAND = 77 where RECNO = 1");
    EXPECT_EQ(area["ONHAND"].as<int>(), 1);
    EXPECT_TRUE(area.refresh());
    EXPECT_EQ(area["ONHAND"].as<int>(), 77);
}

TEST_P(AreaWalk, MayTakeAModeWhileItGoesOn) {
    fill(40);
    Area area = stock();
    for (int i = 1; i < 40; ++i) {
        if (i % 5 == 0) connection()(m::setglbskipmode, (GetParam() + i / 5) % 3);
        EXPECT_TRUE(area.skip());
        EXPECT_EQ(area.recno(), i + 1);
    }
}

// The first walk fills what the engine keeps.
TEST_P(AreaWalk, TakesMemoryForABlockAndNotForTheTable) {
    connection()(m::createtable, "WIDE", Structure{{"TEXT", "C", 2000, 0}});
    constexpr int records = 10000;
    execute("execute block as declare i integer = 1; begin while (i <= " + std::to_string(records) +
            ") do begin insert into WIDE (TEXT) values (lpad('', 2000, 'x')); i = i + 1; end end");
    Area area(connection(), "WIDE");
    EXPECT_EQ(walked(area).size(), std::size_t{records});
    const std::size_t before = heap_in_use();
    std::size_t most = 0, met = 0;
    for (const Area& at : area) {
        met += at["TEXT"].as<std::string_view>().size() == 2000 ? 1 : 0;
        most = std::max(most, heap_in_use());
    }
    EXPECT_EQ(met, std::size_t{records});
    constexpr std::size_t table_size = std::size_t{2000} * records, some = 4000000;
    static_assert(some < table_size / 4);
    EXPECT_LT(most, before + some);
}

// The rows that are read ahead are as they were; the next block is as it is.
TEST_F(AreaTest, ReadsAheadInBlocksThatDouble) {
    fill(40);
    connection()(m::setglbskipcachesize, 4);
    Area area = stock();
    execute("update STOCK set ONHAND = 0");
    std::string seen;
    for (const Area& at : area) seen += at["ONHAND"].as<int>() == 0 ? '0' : '.';
    EXPECT_EQ(seen, std::string(40, '0'));
    area.top();
    execute("update STOCK set ONHAND = 1");
    seen.clear();
    do seen += area["ONHAND"].as<int>() == 0 ? '0' : '.';
    while (area.skip());
    EXPECT_EQ(seen, "0000" + std::string(36, '.'));
    connection()(m::setglbskipmode, 0);
    area.top();
    execute("update STOCK set ONHAND = 0");
    EXPECT_EQ(area["ONHAND"].as<int>(), 1);
    area.skip();
    EXPECT_EQ(area["ONHAND"].as<int>(), 0);
}

}  // namespace
}  // namespace zmfb::test
