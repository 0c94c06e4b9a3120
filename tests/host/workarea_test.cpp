#include "host/workarea.h"

#include <stdexcept>

#include "errors.h"
#include "folder.h"
#include "host/settings.h"
#include "memory_driver.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::expect_argument_error;
using host_test::is_same;
using host_test::MemoryDriver;

using Asked = std::vector<std::string>;

class WorkArea : public ::testing::Test {
  protected:
    WorkArea() {
        register_driver("ZmRddFire", driver_);
        driver_->create("customer", structure);
        driver_->create("path/to/orders.tab", structure);
    }
    ~WorkArea() override {
        while (dbselectarea("CUSTOMER") || dbselectarea("ORDERS") || dbselectarea("OTHER")) dbclosearea();
        rddsetdefault("DBFIDX");
        set(8, Value());
    }
    static void use(const Value& file, const Value& alias = {}) { dbusearea(true, "ZMRDDFIRE", file, alias); }
    static Value rddname(const Value& alias = {}) { return dbobject(alias).object()->get("rddname"); }

    const std::vector<Field> structure{
        {"NAME", 'C', 20, 0}, {"AGE", 'N', 3, 0}, {"BORN", 'D', 8, 0}, {"OK", 'L', 1, 0}};
    std::shared_ptr<MemoryDriver> driver_ = std::make_shared<MemoryDriver>();
};

TEST_F(WorkArea, TheDefaultDriverIsGivenBackWhenAnotherIsSet) {
    EXPECT_TRUE(is_same(rddsetdefault(), "DBFIDX"));
    EXPECT_TRUE(is_same(rddsetdefault("zmrddfire"), "DBFIDX"));
    EXPECT_TRUE(is_same(rddsetdefault({}), "ZMRDDFIRE"));
    EXPECT_TRUE(is_same(rddsetdefault(""), "ZMRDDFIRE"));
    EXPECT_TRUE(is_same(rddsetdefault("NOWHERE"), ""));
    EXPECT_TRUE(is_same(rddsetdefault(), "NOWHERE"));
}

TEST_F(WorkArea, ADriverIsFoundInAnyLetterCaseAndReportedAsItWasWritten) {
    dbusearea(true, "zmRddfire", "customer");
    EXPECT_TRUE(is_same(rddname("customer"), "zmRddfire"));
    EXPECT_TRUE(is_same(rddname(), "zmRddfire"));
    EXPECT_TRUE(is_same(dbobject().object()->get("alias"), "CUSTOMER"));
}

TEST_F(WorkArea, WithoutADriverTheDefaultOneIsTaken) {
    rddsetdefault("zmrddfire");
    dbusearea(true, {}, "customer");
    EXPECT_TRUE(is_same(rddname(), "ZMRDDFIRE"));
}

TEST_F(WorkArea, AnUnknownDriverIsRaisedAndNamed) {
    CaughtErrors caught;
    dbusearea(true, "DBFNTX", "customer");
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.number("gencode"), 21);
    EXPECT_EQ(caught.number("severity"), 2);
    EXPECT_EQ(caught.text("description"), "No driver of the name DBFNTX: customer");
    EXPECT_EQ(caught.text("operation"), "DBUSEAREA");
    EXPECT_TRUE(is_same(used(), false));
    EXPECT_TRUE(is_same(dbcreate("x", array_of(array_of("A", "C", 1, 0)), "DBFNTX"), false));
    EXPECT_EQ(caught.number("gencode"), 20);
}

TEST_F(WorkArea, TheDataServerKnowsNothingButItsAliasAndDriver) {
    use("customer");
    CaughtErrors caught;
    dbobject().object()->get("recno");
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.text("description"), "No exported variable: recno");
}

TEST_F(WorkArea, NoDataServerWhereNoTableIsOpen) {
    EXPECT_TRUE(is_same(dbobject(), Value()));
    EXPECT_TRUE(is_same(dbobject("customer"), Value()));
    EXPECT_EQ(table_of(), nullptr);
    EXPECT_EQ(table_of("customer"), nullptr);
    use("customer");
    EXPECT_TRUE(is_same(dbobject("orders"), Value()));
    EXPECT_TRUE(is_same(dbobject(5), Value()));
    EXPECT_TRUE(is_same(dbobject(""), Value()));
}

TEST_F(WorkArea, TheAliasIsTheGivenOneOrTheFilesName) {
    use("customer", " Other ");
    EXPECT_TRUE(is_same(alias(), "OTHER"));
    use("path/to/orders.tab");
    EXPECT_TRUE(is_same(alias(), "ORDERS"));
    EXPECT_EQ(driver_->asked,
              (Asked{"open customer as OTHER exclusive", "open path/to/orders.tab as ORDERS exclusive"}));
}

TEST_F(WorkArea, AnAliasInUseIsRaised) {
    use("customer", "other");
    CaughtErrors caught;
    use("path/to/orders.tab", "OTHER");
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.number("gencode"), 19);
    EXPECT_EQ(caught.text("description"), "Alias already in use: OTHER: path/to/orders.tab");
    EXPECT_TRUE(is_same(used(), false));
    EXPECT_NE(table_of("other"), nullptr);
    EXPECT_EQ(driver_->asked.size(), 1U);
}

TEST_F(WorkArea, ANewAreaLeavesTheOthersOpen) {
    use("customer");
    use("path/to/orders.tab");
    EXPECT_TRUE(is_same(alias(), "ORDERS"));
    EXPECT_TRUE(dbselectarea("customer"));
    EXPECT_TRUE(is_same(alias(), "CUSTOMER"));
    EXPECT_FALSE(dbselectarea("nobody"));
    EXPECT_TRUE(is_same(alias(), "CUSTOMER"));
}

TEST_F(WorkArea, WithoutANewAreaTheCurrentTableIsClosedFirst) {
    use("customer");
    dbusearea(false, "ZMRDDFIRE", "path/to/orders.tab");
    EXPECT_TRUE(is_same(alias(), "ORDERS"));
    EXPECT_EQ(table_of("customer"), nullptr);
    dbusearea({}, "ZMRDDFIRE", "missing");
    EXPECT_TRUE(is_same(used(), false));
    EXPECT_EQ(driver_->asked, (Asked{"open customer as CUSTOMER exclusive", "close CUSTOMER",
                                     "open path/to/orders.tab as ORDERS exclusive", "close ORDERS",
                                     "open missing as MISSING exclusive"}));
}

TEST_F(WorkArea, ClosingByAliasSelectsThatArea) {
    use("customer");
    use("path/to/orders.tab");
    dbclosearea("nobody");
    EXPECT_TRUE(is_same(alias(), "ORDERS"));
    dbclosearea(" Customer");
    EXPECT_TRUE(is_same(alias(), ""));
    EXPECT_TRUE(is_same(used(), false));
    dbclosearea();
    EXPECT_TRUE(dbselectarea("orders"));
    dbclosearea();
    EXPECT_EQ(driver_->asked.back(), "close ORDERS");
}

TEST_F(WorkArea, AnAreaIsFreeEvenWhenItsTableThrowsInClosing) {
    use("customer");
    driver_->on_close = [](std::string_view) { throw std::runtime_error("the table would not close"); };
    EXPECT_THROW(dbclosearea(), std::runtime_error);
    EXPECT_TRUE(is_same(used(), false));
    EXPECT_EQ(table_of("customer"), nullptr);
    driver_->on_close = [](std::string_view) {};
    dbusearea(false, "ZMRDDFIRE", "customer");
    EXPECT_TRUE(is_same(alias(), "CUSTOMER"));
}

TEST_F(WorkArea, SharedUseIsAskedForOrFollowsSetExclusive) {
    const auto asked_for = [&](const Value& shared, const Value& readonly) {
        dbusearea(true, "ZMRDDFIRE", "customer", {}, shared, readonly);
        dbclosearea();
        return driver_->asked[driver_->asked.size() - 2].substr(
            std::string("open customer as CUSTOMER ").size());
    };
    EXPECT_EQ(asked_for({}, {}), "exclusive");
    EXPECT_EQ(asked_for(true, false), "shared");
    EXPECT_EQ(asked_for(false, true), "exclusive readonly");
    set(8, false);
    EXPECT_EQ(asked_for({}, true), "shared readonly");
    EXPECT_EQ(asked_for(false, {}), "exclusive");
    set(8, "off");
    EXPECT_EQ(asked_for({}, {}), "shared");
    set(8, "ON");
    EXPECT_EQ(asked_for({}, {}), "exclusive");
}

TEST_F(WorkArea, OpeningWithoutIndexFilesIsAllThatSetIndexDoes) {
    CaughtErrors caught;
    dbsetindex();
    dbsetindex("");
    EXPECT_EQ(caught.take_count(), 0);
    dbsetindex("names.idx");
    EXPECT_EQ(caught.number("gencode"), 30);
    EXPECT_EQ(caught.text("description"), "No index files in this driver: names.idx");
}

TEST_F(WorkArea, GoingToTheTopNeedsATable) {
    CaughtErrors caught;
    dbgotop();
    EXPECT_EQ(caught.number("gencode"), 35);
    EXPECT_EQ(caught.number("subcode"), 2001);
    EXPECT_EQ(caught.text("description"), "Work area not in use");
    caught.take_count();
    use("customer");
    table_of()->append();
    table_of()->append();
    EXPECT_EQ(table_of()->record_number(), 2);
    dbgotop();
    EXPECT_EQ(table_of()->record_number(), 1);
    EXPECT_EQ(caught.take_count(), 0);
}

TEST_F(WorkArea, AStructureIsHandedToTheDriver) {
    const Value given = array_of(array_of(" name ", "c", 40.9, 0), array_of("AMOUNT", "Numeric", 10, 2),
                                 array_of("BORN", "D", 8));
    EXPECT_TRUE(is_same(dbcreate(" new.tab ", given, "zmrddfire"), true));
    EXPECT_EQ(driver_->tables.at("new.tab").fields,
              (std::vector<Field>{{"name", 'C', 40, 0}, {"AMOUNT", 'N', 10, 2}, {"BORN", 'D', 8, 0}}));
}

TEST_F(WorkArea, WhatIsNoStructureRaisesAnArgumentError) {
    const Value good = array_of(array_of("A", "C", 1, 0));
    for (const Value& structure :
         {Value(), Value("A"), array_of(1), array_of(array_of("A", "C")), array_of(array_of("A", "", 1, 0)),
          array_of(array_of(1, "C", 1, 0)), array_of(array_of("A", "C", "1", 0))}) {
        expect_argument_error(Subcode::structure, "DBCREATE", [&] {
            EXPECT_TRUE(is_same(dbcreate("x", structure, "ZMRDDFIRE"), false));
            return Value("what the handler returned");
        });
    }
    CaughtErrors caught;
    dbcreate({}, good);
    dbcreate("  ", good);
    dbusearea(true, "ZMRDDFIRE", {});
    EXPECT_EQ(caught.take_count(), 3);
    EXPECT_EQ(driver_->tables.count("x"), 0U);
}

TEST_F(WorkArea, ADriverNeedNotCreateTables) {
    class Reader final : public Driver {
        std::unique_ptr<Table> open(const OpenRequest&) override { return nullptr; }
    };
    register_driver("reader", std::make_shared<Reader>());
    CaughtErrors caught;
    EXPECT_TRUE(is_same(dbcreate("x", array_of(array_of("A", "C", 1, 0)), "READER"), false));
    EXPECT_EQ(caught.number("gencode"), 30);
}

TEST_F(WorkArea, ATableStaysOpenWhenItsDriverIsReplaced) {
    use("customer");
    auto second = std::make_shared<MemoryDriver>();
    register_driver("ZMRDDFIRE", second);
    table_of()->append();
    dbclosearea();
    EXPECT_EQ(driver_->asked.back(), "close CUSTOMER");
    use("customer");
    EXPECT_EQ(second->asked, Asked{"open customer as CUSTOMER exclusive"});
}

TEST_F(WorkArea, TextColumnsBecomeValuesOfTheFieldsType) {
    use("customer");
    Table& table = *table_of();
    table.append();
    EXPECT_TRUE(table.put_columns(0, "Ana  "));
    EXPECT_TRUE(table.put_columns(1, " 42"));
    EXPECT_TRUE(table.put_columns(2, "20070301"));
    EXPECT_TRUE(table.put_columns(3, "y"));
    EXPECT_FALSE(table.put_columns(4, "x"));
    EXPECT_EQ(test::show(array_of(table.get(0), table.get(1), table.get(2), table.get(3))),
              "{\"Ana  \", 42, {^2007-03-01}, .T.}");
}

using AtProgramEnd = host_test::FolderTest;

TEST_F(AtProgramEnd, OpenTablesAreClosed) {
    const std::string file = path("open.dbf");
    const int status = host_test::in_child([&]() -> int {
        dbcreate(file, array_of(array_of("A", "C", 3, 0)), "DBFIDX");
        dbusearea(true, "DBFIDX", file);
        table_of()->append();
        table_of()->put(0, "end");
        std::exit(0);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(content(file).substr(4, 4), std::string("\1\0\0\0", 4));
    EXPECT_EQ(content(file).substr(65), " end\x1A");
}

}  // namespace
}  // namespace zmfb::host
