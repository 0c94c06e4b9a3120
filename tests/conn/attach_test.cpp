#include <cerrno>
#include <regex>

#include "tests/support/database.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

class Attach : public Database {};

TEST_F(Attach, AttachingLogsTheHandleAndItsSlot) {
    const zmFBConn object = connect();
    const auto lines = log_lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0].level, 0);
    const std::regex shape(R"(\[CONN\] Connected to: (.*) Pointer DB1: 0x[0-9a-f]+\((-?[0-9]+)\))");
    std::smatch found;
    ASSERT_TRUE(std::regex_match(lines[0].text, found, shape)) << lines[0].text;
    EXPECT_EQ(found[1], database());
    EXPECT_EQ(std::stod(found[2]), zmFBConn(object).get("dbhndl").number());
}

TEST_F(Attach, AnAttachedObjectKnowsItsNamesButNotThePassword) {
    zmFBConn object(database(), sysdba, sysdba_password, "SOMEROLE");
    EXPECT_TRUE(object.isconnected());
    EXPECT_EQ(object.get("sdbname").string(), database());
    EXPECT_EQ(object.call("getdatabasename").string(), database());
    EXPECT_EQ(show(object.get("susername")), "\"SYSDBA\"");
    EXPECT_EQ(show(object.get("srolename")), "\"SOMEROLE\"");
    EXPECT_EQ(object.call("isrddactive").logical(), true);
    EXPECT_EQ(object.call("getfullpathdatfile").string().substr(0, 10), "/tmp/zmrdd");
    EXPECT_EQ(log_text().find(sysdba_password), std::string::npos);
}

TEST_F(Attach, ADatabaseNameAloneIsEnoughToTry) {
    zmFBConn object(file("nowhere.fdb"));
    EXPECT_FALSE(object.isconnected());
    EXPECT_EQ(show(object.get("dbhndl")), "0");
    const auto lines = log_lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, 0);
    EXPECT_TRUE(lines[0].text.starts_with("[ERROR] SQLCODE=-902 (")) << lines[0].text;
    EXPECT_EQ(lines[0].text.back(), ')');
    EXPECT_TRUE(object.call("isrddactive").logical());
    EXPECT_NE(show(object.call("getfullpathdatfile")), "\"\"");
}

TEST_F(Attach, ArgumentsThatAreNoTextsCountAsEmpty) {
    for (const Value& given : {Value(), Value(5), Value(true), host::array_of("x")}) {
        clear_log();
        {
            zmFBConn object(given, sysdba, given, given);
            EXPECT_FALSE(object.isconnected());
            EXPECT_EQ(show(object.get("sdbname")), "\"\"") << show(given);
            EXPECT_EQ(show(object.call("getdatabasename")), "\"\"") << show(given);
            EXPECT_EQ(show(object.get("srolename")), "\"\"") << show(given);
            object.call("init", database(), given, given, given);
            EXPECT_EQ(show(object.get("susername")), "\"\"") << show(given);
            object.call("init", given, sysdba, given, given);
        }
        EXPECT_EQ(log_lines().back(), (LogEntry{0, "[EXIT] Disconnected from: "})) << show(given);
    }
}

TEST_F(Attach, ReleasingAnObjectThatNeverAttachedDoesNotDetach) {
    { const zmFBConn object(file("nowhere.fdb")); }
    const auto lines = log_lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1], (LogEntry{0, "[GONE] Class: zmFBConn no longer exists. DB: " + file("nowhere.fdb")}));
}

TEST_F(Attach, ReleasingAnAttachedObjectDisconnectsIt) {
    {
        const zmFBConn object = connect();
        clear_log();
    }
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{{0, "[GONE] Class: zmFBConn no longer exists. DB: " + database()},
                                     {0, "[EXIT] Disconnected from: " + database()}}));
}

TEST_F(Attach, DisconnectingTwiceDetachesTheDeadHandleAgainAndLogsAgain) {
    zmFBConn object = connect();
    const std::string handle = show(object.get("dbhndl"));
    clear_log();
    object.call("disconnect");
    object.call("disconnect");
    const LogEntry exit{0, "[EXIT] Disconnected from: " + database()};
    EXPECT_EQ(log_lines(), (std::vector<LogEntry>{exit, exit}));
    EXPECT_FALSE(object.isconnected());
    EXPECT_EQ(show(object.get("dbhndl")), handle);
}

// The embedded engine would not come back.
TEST_F(Attach, DisconnectingEndsWhateverASignalLeftBehind) {
    zmFBConn object = connect();
    errno = EINTR;
    object.call("disconnect");
    EXPECT_FALSE(object.isconnected());
}

TEST_F(Attach, InitAgainAttachesAnew) {
    zmFBConn object = connect();
    object.call("init", database(), sysdba, sysdba_password);
    EXPECT_TRUE(object.isconnected());
    EXPECT_TRUE(object.call("istable", "RDDSYS_OPN").logical());
}

TEST_F(Attach, SystemTablesAreCreatedWhenAbsent) {
    execute("drop table rddsys_flk");
    execute("drop generator g_rddsys_flk_i");
    execute("drop generator g_rddsys_flk_d");
    zmFBConn object = connect();
    EXPECT_TRUE(object.call("istable", "RDDSYS_FLK").logical());
    EXPECT_TRUE(object.call("isindex", "I_RDDSYS_FLK").logical());
}

TEST_F(Attach, AMissingFunctionIsLoggedAndRaisedAndTheStartGoesOn) {
    execute("drop function zmpadl");
    execute("drop table rddsys_rlk");
    execute("drop generator g_rddsys_rlk_i");
    execute("drop generator g_rddsys_rlk_d");
    zmFBConn object = connect();
    EXPECT_EQ(raised(), (std::vector<std::string>{"[FBCONN Error];The DataBase:; " + database() +
                                                  "; Does not have all needed UDFs installed!!"}));
    EXPECT_EQ(log_lines().back(), (LogEntry{0, "[FATAL] Missing UDFs in Database."}));
    EXPECT_TRUE(object.call("istable", "RDDSYS_RLK").logical());
}

TEST_F(Attach, SystemTablesThatCannotBeCreatedAreFatal) {
    execute("drop table rddsys_flk");  // its generators stay and stand in the way
    zmFBConn object = connect();
    const auto texts = raised();
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ(texts.back(), "[FBCONN Error];Fatal error on creating system tables. Better to Abort!");
    EXPECT_EQ(log_lines().back(), (LogEntry{0, "[FATAL] Error creating system tables."}));
    EXPECT_TRUE(object.isconnected());
}

TEST_F(Attach, TwoObjectsHaveTheirOwnDatabases) {
    zmFBConn first = connect();
    zmFBConn second = connect();
    EXPECT_NE(show(first.get("dbhndl")), show(second.get("dbhndl")));
    first.call("disconnect");
    EXPECT_TRUE(second.call("istable", "RDDSYS_OPN").logical());
}

}  // namespace
}  // namespace zmfb::test
