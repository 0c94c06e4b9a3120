// The driver ZMRDDFIRE runs the programs over work areas.
#include "tests/host/area_programs.h"

#include "host/error.h"
#include "host/settings.h"
#include "host/workarea.h"
#include "tests/support/database.h"

namespace zmfb::test {
namespace {

class AreaPrograms : public Database {
  protected:
    AreaPrograms() { connection().call("setibrdd"); }
    ~AreaPrograms() override {
        const host::ScopedErrorBlock whatever_closing_raises(Value::block([](Args) { return Value(); }));
        host::dbcloseall();
        host::rddsetdefault("DBFIDX");
        host::set(8, Value());
    }
    // A table as the one program left it is filled anew, its record numbers from 1.
    void prepare(std::string_view table) {
        host::set(8, Value(false));
        host::set(9, Value());
        if (call("istable", "OTHER").logical()) call("droptable", "OTHER");
        if (call("istable", "STAFF").logical()) {
            execute("delete from STAFF");
            execute("set generator G_STAFF_I to 0");
        } else {
            host::dbcreate("staff", host_test::staff_structure());
        }
        host::dbusearea(false, {}, "staff");
        while (host::ordname(1).size() > 0) host::orddestroy(1);
        if (table != "empty") host_test::append_staff();
        if (table == "closed") host::dbcloseall();
    }
};

TEST_F(AreaPrograms, PrintTheSameOnTablesOfADatabase) {
    host_test::run_area_programs("ZMRDDFIRE", [this](std::string_view table) { prepare(table); });
}

}  // namespace
}  // namespace zmfb::test
