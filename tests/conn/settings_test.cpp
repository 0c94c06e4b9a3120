#include <limits>

#include "host/date.h"
#include "host/workarea.h"
#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

class Settings : public Runtime {
  protected:
    Settings() { host::rddsetdefault("DBFIDX"); }
    zmFBConn object;
};

struct SkipCase {
    Value given;
    std::string kept;
};

TEST_F(Settings, SkipModesOutsideZeroToTwoBecomeOne) {
    for (const auto& [given, kept] :
         {SkipCase{0, "0"}, {1, "1"}, {2, "2"}, {3, "1"}, {-1, "1"}, {Value(), "1"}, {1.5, "1.5"}}) {
        object.call("setglbskipmode", 2);
        object.call("setglbskipmode", given);
        EXPECT_EQ(show(object.call("getglbskipmode")), kept) << show(given);
    }
}

TEST_F(Settings, SkipCacheSizesThatAreEmptyOrNegativeBecomeEleven) {
    for (const auto& [given, kept] :
         {SkipCase{500, "500"}, {0, "11"}, {-5, "11"}, {Value(), "11"}, {1, "1"}, {1e9, "1000000000"}}) {
        object.call("setglbskipcachesize", 7);
        object.call("setglbskipcachesize", given);
        EXPECT_EQ(show(object.call("getglbskipcachesize")), kept) << show(given);
    }
}

// Values that are no number a setting could have.
std::vector<Value> no_numbers() {
    return {"2",
            "",
            true,
            false,
            host::date(),
            host::array_of(2),
            Value::block([](Args) { return Value(2); }),
            zmFBConn().value(),
            std::numeric_limits<double>::quiet_NaN()};
}

TEST_F(Settings, SkipSettingsThatAreNoNumbersBecomeTheDefaults) {
    for (const Value& given : no_numbers()) {
        object.call("setglbskipmode", 2);
        object.call("setglbskipmode", given);
        EXPECT_EQ(show(object.call("getglbskipmode")), "1") << show(given);
        object.call("setglbskipcachesize", 7);
        object.call("setglbskipcachesize", given);
        EXPECT_EQ(show(object.call("getglbskipcachesize")), "11") << show(given);
    }
}

TEST_F(Settings, TheSkipSettersLogAtLevelSix) {
    log_at(5);
    object.call("setglbskipmode", 2);
    EXPECT_EQ(log_text(), "");
    log_at(6);
    object.call("setglbskipmode", 2);
    object.call("setglbskipcachesize", 500);
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{{6, "[SET] Global SkipMode now is: 2 for: "},
                                                  {6, "[SET] Global SkipCacheSize now is: 500 for: "}}));
}

TEST_F(Settings, TheDataFileIsAFreshNameUnderTmpEachTime) {
    const std::string first = object.call("setfullpathdatfile").string();
    const std::string second = object.call("setfullpathdatfile", "").string();
    EXPECT_NE(first, second);
    for (const std::string& path : {first, second}) {
        EXPECT_EQ(path.substr(0, 10), "/tmp/zmrdd");
        EXPECT_EQ(path.substr(path.size() - 4), ".dat");
        EXPECT_EQ(path.find('/', 5), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    EXPECT_EQ(object.call("getfullpathdatfile").string(), second);
}

TEST_F(Settings, ADataFileThatIsGivenIsKeptAsItStands) {
    EXPECT_EQ(show(object.call("setfullpathdatfile", "/data/x")), "\"/data/x\"");
    EXPECT_EQ(show(object.call("getfullpathdatfile")), "\"/data/x\"");
}

TEST_F(Settings, ADataFileThatIsNoTextBecomesAFreshName) {
    for (const Value& given : {Value(5), Value(true), Value(host::date()), host::array_of("/data/x")}) {
        object.call("setfullpathdatfile", "/data/x");
        EXPECT_TRUE(object.call("setfullpathdatfile", given).string().starts_with("/tmp/zmrdd"))
            << show(given);
        EXPECT_TRUE(object.call("getfullpathdatfile").string().starts_with("/tmp/zmrdd")) << show(given);
    }
}

TEST_F(Settings, TheDriverSwitchIsStoredUnchecked) {
    object.call("setrddactive", true);
    EXPECT_EQ(show(object.call("isrddactive")), ".T.");
    object.call("setrddactive", "maybe");
    EXPECT_EQ(show(object.call("isrddactive")), "\"maybe\"");
}

TEST_F(Settings, TheDriverBecomesTheDefaultAndThePreviousOneComesBack) {
    object.call("savepreviousrdd");
    EXPECT_EQ(show(host::rddsetdefault()), "\"ZMRDDFIRE\"");
    object.call("restorepreviousrdd");
    EXPECT_EQ(show(host::rddsetdefault()), "\"DBFIDX\"");
}

TEST_F(Settings, RestoringWithoutSavingSetsTheEmptyName) {
    object.call("restorepreviousrdd");
    EXPECT_EQ(show(host::rddsetdefault()), "\"\"");
}

TEST_F(Settings, SetibrddOnAnUnattachedObjectLeavesTheDefault) {
    EXPECT_EQ(show(object.call("setibrdd")), ".F.");
    EXPECT_EQ(show(host::rddsetdefault()), "\"DBFIDX\"");
}

TEST_F(Settings, SetibrddOfAnAttachedObjectMakesTheDriverTheDefault) {
    object.set("bconn", true);
    EXPECT_EQ(show(object.call("setibrdd")), ".T.");
    EXPECT_EQ(show(host::rddsetdefault()), "\"ZMRDDFIRE\"");
    object.set("bconn", false);
}

TEST_F(Settings, SetibrddTakesAFlagThatIsNoLogicalForUnattached) {
    for (const Value& given : {Value(), Value(1), Value("T"), host::array_of(true)}) {
        object.set("bconn", given);
        EXPECT_EQ(show(object.call("setibrdd")), ".F.") << show(given);
        EXPECT_FALSE(object.isconnected()) << show(given);
    }
}

TEST_F(Settings, AnAreaThatDoesNotExistIsNotTheDrivers) {
    EXPECT_EQ(show(object.call("isfirebirdarea", "NOSUCH")), ".F.");
}

}  // namespace
}  // namespace zmfb::test
