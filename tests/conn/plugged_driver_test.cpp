// A table-level driver that a program plugs in, and what the connection object sees of its work areas.
#include "host/workarea.h"
#include "tests/host/memory_driver.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

class PluggedDriver : public Runtime {
  protected:
    PluggedDriver() {
        driver_->on_open = [this](std::string_view alias) { object.call("announcealias", alias); };
        driver_->on_close = [this](std::string_view alias) { object.call("removealias", alias); };
        for (const char* table : {"customer", "orders"}) {
            driver_->create(table, std::vector<host::Field>{{"NAME", 'C', 20, 0}});
        }
        host::register_driver("ZMRDDFIRE", driver_);
    }
    ~PluggedDriver() override {
        host::register_driver("ZMRDDFIRE", nullptr);
        host::rddsetdefault("DBFIDX");
    }
    // The aliases that are announced, as closealltables() closes them: it logs each.
    std::vector<std::string> closed_by_force() {
        clear_log();
        log_at(5);
        object.call("closealltables");
        std::vector<std::string> lines;
        for (const LogEntry& entry : log_lines()) lines.push_back(entry.text);
        return lines;
    }

    zmFBConn object;
    std::shared_ptr<host_test::MemoryDriver> driver_ = std::make_shared<host_test::MemoryDriver>();
};

using Lines = std::vector<std::string>;

TEST_F(PluggedDriver, ItsAreasAreToldFromOthers) {
    host::dbusearea(true, "ZMRDDFIRE", "customer");
    host::dbusearea(true, "zmrddfire", "orders");
    host::dbcreate(file("native"), host::array_of(host::array_of("A", "C", 1, 0)), "DBFIDX");
    host::dbusearea(true, "DBFIDX", file("native"));
    for (const auto& [alias, is_its] :
         {std::pair{"customer", ".T."}, {"ORDERS", ".T."}, {"native", ".F."}, {"nobody", ".F."}}) {
        EXPECT_EQ(show(object.call("isfirebirdarea", alias)), is_its) << alias;
    }
    host::dbclosearea("native");
    object.call("closealltables");
}

TEST_F(PluggedDriver, EveryAnnouncedAreaIsClosedAndForgotten) {
    host::dbusearea(true, "ZMRDDFIRE", "customer");
    host::dbusearea(true, "ZMRDDFIRE", "orders");
    EXPECT_EQ(closed_by_force(),
              (Lines{"[FORCED] Trying close alias: CUSTOMER", "[FORCED] Trying close alias: ORDERS"}));
    EXPECT_EQ(host::table_of("customer"), nullptr);
    EXPECT_EQ(host::table_of("orders"), nullptr);
    EXPECT_EQ(closed_by_force(), Lines{});
}

TEST_F(PluggedDriver, AnAreaThatWasClosedBeforeIsNotClosedAgain) {
    host::dbusearea(true, "ZMRDDFIRE", "customer");
    host::dbusearea(true, "ZMRDDFIRE", "orders");
    host::dbclosearea("customer");
    EXPECT_EQ(closed_by_force(), Lines{"[FORCED] Trying close alias: ORDERS"});
}

TEST_F(PluggedDriver, DisconnectingClosesItsAreas) {
    host::dbusearea(true, "ZMRDDFIRE", "customer");
    object.call("disconnect");
    EXPECT_EQ(host::table_of("customer"), nullptr);
    EXPECT_EQ(driver_->asked.back(), "close CUSTOMER");
}

TEST_F(PluggedDriver, SavedAsTheDefaultItOpensTablesWithoutBeingNamed) {
    object.call("savepreviousrdd");
    host::dbusearea(true, {}, "customer");
    EXPECT_EQ(show(object.call("isfirebirdarea", "customer")), ".T.");
    object.call("closealltables");
    object.call("restorepreviousrdd");
    EXPECT_EQ(show(host::rddsetdefault()), "\"DBFIDX\"");
}

}  // namespace
}  // namespace zmfb::test
