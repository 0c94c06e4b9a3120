// Every method of the table is called with every hostile value in every place, on a real database.
//
// What comes of such a call is for the tests of the methods to say. Here nothing may crash or reach beyond
// its memory, and the object goes on working.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "tests/hostile/values.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

using host::array_of;
using host::Value;

// ZMFB_SWEEP=long makes the run that takes minutes: longer texts, deeper arrays, twice the combinations.
bool is_long_run() {
    const char* const wanted = std::getenv("ZMFB_SWEEP");
    return wanted != nullptr && std::string_view(wanted) == "long";
}

// A server of Firebird 3.0 gives no answer at all to some statements of more than 64 KB that it refuses, and
// its client waits for one: 66,000 quotes are such a statement.
std::size_t longest_text() {
    if (on_server()) return 60'000;
    return is_long_run() ? 4'000'000 : 100'000;
}

// Methods that attach and detach have tests of their own below.
bool is_swept(const MethodRow& row) {
    return row.kind != MethodKind::assign && row.name != "init" && row.name != "disconnect" &&
           row.name != "axit";
}

class HostileSweep : public Database {
  protected:
    HostileSweep() : before_(std::filesystem::current_path()) { std::filesystem::current_path(folder()); }
    ~HostileSweep() override { std::filesystem::current_path(before_); }

    // What stands in the places beside a hostile value.
    std::vector<std::vector<Value>> companions() const {
        const Value field = array_of("NAME", "C", 10, 0);
        std::vector<std::vector<Value>> sets{{"CLIENT", "NAME", 1, 1, "1", "1"}};
        if (is_long_run()) sets.push_back({"CLIENT", array_of(field), array_of(field), "CLIENT:1:1:x", 1, 1});
        return sets;
    }

    void call_with_every_value(zmFBConn& object, const MethodRow& row) {
        const auto count = std::max<std::size_t>(row.parameters.size(), 1);
        for (const HostileValue& hostile : values_) {
            SCOPED_TRACE(std::string(row.name) + " with " + hostile.name);
            for (const std::vector<Value>& companion : companions()) {
                for (std::size_t place = 0; place < count; ++place) {
                    std::vector<Value> args = companion;
                    args[place] = hostile.value;
                    args.resize(count);
                    object.call_with(row.name, host::Args(args));
                    ++calls_;
                }
            }
            object.call_with(row.name, host::Args(std::vector<Value>(count + 1, hostile.value)));
            ++calls_;
        }
    }

    // Makes the object as it was, and the table too when it is gone.
    void tidy_up() {
        call("commitchanges");
        call("setloglevel", 0);
        call("setfullpathdatfile", file("data.dat"));
        call("setrddactive", false);
        if (!call("istable", "CLIENT").logical()) {
            call("createtable", "CLIENT", array_of(array_of("NAME", "C", 10, 0)));
        }
    }

    const std::vector<HostileValue> values_ =
        hostile_values(longest_text(), is_long_run() ? 1'000'000 : 100'000);
    std::size_t calls_ = 0;

  private:
    std::filesystem::path before_;
};

TEST_F(HostileSweep, EveryMethodStandsEveryValue) {
    tidy_up();
    for (const MethodRow& row : methods()) {
        if (!is_swept(row)) continue;
        call_with_every_value(connection(), row);
        tidy_up();
        EXPECT_EQ(row_texts(call("executequery", "select 1 from rdb$database")), (Rows{{"1"}})) << row.name;
    }
    std::printf("%zu calls with %zu values, %zu errors raised\n", calls_, values_.size(), raised().size());
    EXPECT_GT(calls_, methods().size() * values_.size());
    EXPECT_FALSE(raised().empty());
}

TEST_F(HostileSweep, AnObjectWithoutADatabaseStandsEveryValue) {
    zmFBConn object;
    for (const MethodRow& row : methods()) {
        if (is_swept(row)) call_with_every_value(object, row);
    }
    std::printf("%zu calls with %zu values, %zu errors raised\n", calls_, values_.size(), raised().size());
    EXPECT_FALSE(object.isconnected());
    EXPECT_TRUE(call("istable", "RDDSYS_OPN").logical()) << "another object is not touched";
}

TEST_F(HostileSweep, AttachingStandsEveryValue) {
    for (const HostileValue& hostile : values_) {
        SCOPED_TRACE(hostile.name);
        const Value& value = hostile.value;
        const Value sets[][4] = {{value, sysdba, sysdba_password, {}},
                                 {database(), value, sysdba_password, {}},
                                 {database(), sysdba, value, {}},
                                 {database(), sysdba, sysdba_password, value},
                                 {value, value, value, value}};
        for (const auto& args : sets) {
            zmFBConn object;
            object.call_with("init", host::Args(args));
            object.call("disconnect");
            EXPECT_FALSE(object.isconnected());
            ++calls_;
        }
    }
    std::printf("%zu calls, %zu errors raised\n", calls_, raised().size());
    EXPECT_TRUE(call("istable", "RDDSYS_OPN").logical());
}

// A number of a real handle would be that handle: what an application assigns is its own affair.
TEST_F(HostileSweep, AssignedHandlesOfAnyValueAreRefused) {
    for (const HostileValue& hostile : values_) {
        SCOPED_TRACE(hostile.name);
        zmFBConn object;
        object.set("bconn", hostile.value);
        object.set("dbhndl", hostile.value);
        EXPECT_EQ(object.call("executequery", "select 1 from rdb$database").size(), 0U);
        object.call("executeupdate", "delete from RDDSYS_OPN");
        object.set("dbhndl", 0);
    }
    EXPECT_TRUE(call("istable", "RDDSYS_OPN").logical());
}

}  // namespace
}  // namespace zmfb::test
