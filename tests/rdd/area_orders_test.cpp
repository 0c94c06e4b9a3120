// Areas that follow orders: walks, seeks, and what others do meanwhile.
#include <fmt/format.h>

#include "tests/rdd/area_test.h"

namespace zmfb::test {
namespace {

using Numbers = std::vector<std::int64_t>;

// With the skip mode as the parameter.
class AreaOrders : public AreaTest, public ::testing::WithParamInterface<int> {
  protected:
    AreaOrders() {
        connection()(m::setglbskipmode, GetParam());
        connection()(m::setglbskipcachesize, 2);
    }
    // Records with these codes and as many on hand as given.
    void add(std::initializer_list<std::pair<const char*, int>> records) const {
        for (const auto& [code, onhand] : records)
            execute(fmt::format("insert into STOCK (CODE, ONHAND) values ('{}', {})", code, onhand));
    }
    Area by(const char* expression, bool unique = false) {
        Area area = stock();
        area.create_order("MAIN", expression, unique);
        area.order("main");
        return area;
    }
    static Numbers walked_back(Area& area) {
        Numbers met;
        for (bool there = area.bottom(); there; there = area.skip(-1)) met.push_back(area.recno());
        return met;
    }
};

INSTANTIATE_TEST_SUITE_P(Mode, AreaOrders, ::testing::Values(0, 1, 2));

TEST_P(AreaOrders, AreWalkedBothWays) {
    add({{"d", 5}, {"b", 4}, {"a", 3}, {"b", 2}, {"c", 1}, {"b", 0}});
    Area area = by("CODE");
    EXPECT_EQ(area.order(), "MAIN");
    EXPECT_EQ(walked(area), (Numbers{3, 2, 4, 6, 5, 1}));
    EXPECT_EQ(walked_back(area), (Numbers{1, 5, 6, 4, 2, 3}));
    area.order("");
    EXPECT_EQ(area.order(), "");
    EXPECT_EQ(walked(area), (Numbers{1, 2, 3, 4, 5, 6}));
}

TEST_P(AreaOrders, AreReadOnIn) {
    add({{"d", 0}, {"b", 0}, {"a", 0}});
    Area area = by("CODE");
    area.go(2);
    execute("insert into STOCK (CODE) values ('c')");
    execute("update STOCK set CODE = 'e' where RECNO = 1");
    EXPECT_GT(area.read_on(), 0u);
    Numbers met{area.recno()};
    while (area.skip()) met.push_back(area.recno());
    EXPECT_EQ(met, (Numbers{2, 4, 1}));
}

TEST_P(AreaOrders, LeaveTheAreaWhereItStands) {
    add({{"c", 0}, {"a", 0}, {"b", 0}});
    Area area = stock();
    area.create_order("CODE", "CODE");
    area.go(3);
    area.order("code");
    EXPECT_EQ(area.recno(), 3);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 1);
    area.go(2);
    EXPECT_FALSE(area.skip(-1));
    EXPECT_TRUE(area.bof());
}

TEST_P(AreaOrders, AreTwoOrMoreOfATable) {
    add({{"a", 2}, {"b", 1}, {"c", 3}});
    Area area = stock();
    area.create_order("CODE", "CODE");
    area.create_order("HAND", "ONHAND");
    area.order("hand");
    EXPECT_EQ(walked(area), (Numbers{2, 1, 3}));
    area.order("code");
    EXPECT_EQ(walked(area), (Numbers{1, 2, 3}));
}

TEST_P(AreaOrders, AreFoundWhenTheTableIsOpenedAgain) {
    add({{"b", 0}, {"a", 0}});
    stock().create_order("code", "UPPER(STOCK->CODE)", true);
    zmFBConn other = connect();
    Area area(other, "STOCK");
    const auto orders = area.orders();
    ASSERT_EQ(orders.size(), 1u);
    EXPECT_EQ(orders[0].name, "CODE");
    EXPECT_EQ(orders[0].expression, "UPPER(STOCK->CODE)");
    EXPECT_TRUE(orders[0].unique && orders[0].complete);
    area.order("CODE");
    EXPECT_EQ(walked(area), (Numbers{2, 1}));
}

TEST_P(AreaOrders, FindKeys) {
    add({{"b2", 0}, {"a1", 0}, {"b1", 0}, {"b1", 0}, {"d", 0}});
    Area area = by("CODE");
    EXPECT_TRUE(area.seek("b1"));
    EXPECT_EQ(area.recno(), 3);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 4);
    EXPECT_TRUE(area.seek("b1", {.last = true}));
    EXPECT_EQ(area.recno(), 4);
    EXPECT_TRUE(area.skip(-1));
    EXPECT_EQ(area.recno(), 3);
    EXPECT_TRUE(area.seek("b", {.last = true}));
    EXPECT_EQ(area.recno(), 1);
    EXPECT_TRUE(area.seek(""));
    EXPECT_EQ(area.recno(), 2);
}

TEST_P(AreaOrders, SoughtForWhatIsNotThereStandAtTheEndOrSoftlyBehindIt) {
    add({{"b", 0}, {"d", 0}});
    Area area = by("CODE");
    for (const bool last : {false, true}) {
        EXPECT_FALSE(area.seek("c", {.last = last}));
        EXPECT_TRUE(area.eof());
        EXPECT_FALSE(area.seek("c", {.soft = true, .last = last}));
        EXPECT_EQ(area.recno(), 2);
        EXPECT_FALSE(area.seek("a", {.soft = true, .last = last}));
        EXPECT_EQ(area.recno(), 1);
        EXPECT_FALSE(area.skip(-1));
        EXPECT_FALSE(area.seek("e", {.soft = true, .last = last}));
        EXPECT_TRUE(area.eof());
    }
    EXPECT_FALSE(area.seek("e"));
    EXPECT_TRUE(area.skip(-1));
    EXPECT_EQ(area.recno(), 2);
}

TEST_P(AreaOrders, OfAnEmptyTableFindNothing) {
    Area area = by("CODE");
    EXPECT_EQ(walked(area), Numbers());
    EXPECT_FALSE(area.seek("a", {.soft = true}));
    EXPECT_FALSE(area.seek("", {.last = true}));
    EXPECT_TRUE(area.eof());
}

TEST_P(AreaOrders, FindNumbersDatesAndLogicals) {
    execute("insert into STOCK (ONHAND, PRICE, SINCE, LISTED) values (-3, 1.5, '2001-02-03 10:00', 'T')");
    execute("insert into STOCK (ONHAND, PRICE, SINCE, LISTED) values (10, -0.05, null, 'F')");
    execute("insert into STOCK (ONHAND, PRICE, SINCE, LISTED) values (9, 100, '1999-12-31', 'F')");
    Area area = stock();
    const struct {
        const char* expression;
        Numbers order;
        Parameter key;
    } cases[] = {{"ONHAND", {1, 3, 2}, -3},
                 {"PRICE", {2, 1, 3}, Decimal("1.50")},
                 {"SINCE", {2, 3, 1}, std::chrono::year(2001) / 2 / 3},
                 {"LISTED", {2, 3, 1}, true},
                 {"DTOS(SINCE) + STR(ONHAND, 4)", {2, 3, 1}, "20010203"}};
    int made = 0;
    for (const auto& [expression, order, key] : cases) {
        SCOPED_TRACE(expression);
        const std::string name = fmt::format("O{}", ++made);
        area.create_order(name, expression);
        area.order(name);
        EXPECT_EQ(walked(area), order);
        EXPECT_TRUE(area.seek(key));
        EXPECT_EQ(area.recno(), 1);
    }
    area.order("O1");
    EXPECT_EQ(reason_of([&] { (void)area.seek("9"); }), Reason::no_order);
    area.order("");
    EXPECT_EQ(reason_of([&] { (void)area.seek(9); }), Reason::no_order);
}

TEST_P(AreaOrders, OfFloatingNumbersGoByTheirTexts) {
    execute("alter table STOCK add RATE double precision default 0 not null");
    execute("insert into STOCK (RATE) values (10.5)");
    execute("insert into STOCK (RATE) values (9.75)");
    EXPECT_EQ(reason_of([this] { by("RATE"); }), Reason::no_order);
    EXPECT_EQ(reason_of([this] { by("RATE + ONHAND"); }), Reason::no_order);
    Area area = by("STR(RATE, 10, 2)");
    EXPECT_EQ(walked(area), (Numbers{2, 1}));
}

TEST_P(AreaOrders, GoWithTheFilter) {
    add({{"a", 1}, {"b", 2}, {"c", 1}, {"d", 2}});
    Area area = by("CODE");
    area.filter("ONHAND = 2");
    EXPECT_EQ(walked(area), (Numbers{2, 4}));
    EXPECT_FALSE(area.seek("a", {.soft = true}));
    EXPECT_EQ(area.recno(), 2);
    EXPECT_FALSE(area.seek("c", {.soft = true, .last = true}));
    EXPECT_EQ(area.recno(), 4);
}

TEST_P(AreaOrders, ThatAreUniqueMeetTheFirstRecordOfEachKey) {
    add({{"b", 0}, {"a", 0}, {"b", 0}, {"a", 0}});
    Area area = by("CODE", true);
    EXPECT_EQ(walked(area), (Numbers{2, 1}));
    EXPECT_TRUE(area.seek("b", {.last = true}));
    EXPECT_EQ(area.recno(), 1);
}

TEST_P(AreaOrders, MeetUnchangedRecordsOnceWhateverOthersChange) {
    add({{"b", 0}, {"d", 0}, {"f", 0}, {"h", 0}, {"j", 0}});
    Area area = by("CODE");
    area.top();
    Numbers met{area.recno()};
    execute("update STOCK set CODE = 'z' where RECNO = 1");  // the one it stands on, behind all
    execute("update STOCK set CODE = 'a' where RECNO = 3");  // to before it
    execute("delete from STOCK where RECNO = 4");
    while (area.skip()) met.push_back(area.recno());
    for (const std::int64_t unchanged : {2, 5}) EXPECT_EQ(std::ranges::count(met, unchanged), 1);
    EXPECT_EQ(walked(area), (Numbers{3, 2, 5, 1}));
}

TEST_P(AreaOrders, GoOnFromTheNewKeyAfterAWriteOfTheArea) {
    add({{"a", 0}, {"b", 0}, {"c", 0}, {"d", 0}});
    Area area = by("CODE");
    area.top();
    {
        auto held = area.lock();
        held["CODE"] = "cc";
        held.write();
    }
    EXPECT_EQ(area.recno(), 1);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 4);
}

TEST_P(AreaOrders, AreDroppedWhileTheAreaFollowsThem) {
    add({{"b", 0}, {"a", 0}});
    Area area = by("CODE");
    EXPECT_EQ(walked(area), (Numbers{2, 1}));
    area.rebuild_order("MAIN");
    EXPECT_EQ(walked(area), (Numbers{2, 1}));
    area.drop_order("main");
    EXPECT_EQ(area.order(), "");
    EXPECT_TRUE(area.orders().empty());
    EXPECT_EQ(walked(area), (Numbers{1, 2}));
    EXPECT_EQ(reason_of([&] { area.order("MAIN"); }), Reason::no_order);
    EXPECT_EQ(reason_of([&] { area.create_order("X", "SOUNDEX(CODE)"); }), Reason::no_order);
    EXPECT_EQ(reason_of([&] { area.create_order("X", "OTHER->CODE"); }), Reason::no_order);
}

TEST_P(AreaOrders, OfTextsBeyondAsciiFindThemInUtf8) {
    add({{"z", 0}, {"\xE9t\xE9", 0}});
    Area area = by("CODE");
    EXPECT_EQ(walked(area), (Numbers{1, 2}));
    EXPECT_TRUE(area.seek("été"));
    EXPECT_TRUE(area.seek("é"));
    EXPECT_EQ(area.recno(), 2);
    EXPECT_FALSE(area.seek("è", {.soft = true}));
    EXPECT_EQ(area.recno(), 2);
}

class OrderInUse : public AreaTest {};

TEST_F(OrderInUse, IsNotDroppedAndStaysThatOfItsArea) {
    for (const char* code : {"b", "a"}) execute(fmt::format("insert into STOCK (CODE) values ('{}')", code));
    Area area = stock();
    area.create_order("MAIN", "CODE");
    area.order("main");
    area.go(2);
    zmFBConn other = connect();
    Area there(other, "STOCK");
    there.order("main");
    EXPECT_EQ(walked(there), (Numbers{2, 1}));
    EXPECT_EQ(reason_of([&] { area.drop_order("main"); }), Reason::no_order);
    EXPECT_EQ(area.order(), "MAIN");
    EXPECT_EQ(area.recno(), 2);
    EXPECT_TRUE(area.skip());
    EXPECT_EQ(area.recno(), 1);
    there.close();
    area.drop_order("main");
    EXPECT_EQ(area.order(), "");
}

}  // namespace
}  // namespace zmfb::test
