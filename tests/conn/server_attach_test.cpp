// Attaching to a server: passwords, users, roles.
#include <optional>

#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

using host::Value;

class ServerAttach : public Database {
  protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(on_server());
        Server::shared().create_user("CLERK", "paper");
    }

    // The object that an attach which the server refuses leaves behind.
    void expect_refused(const Value& user, const Value& password) {
        clear_log();
        zmFBConn object(database(), user, password);
        EXPECT_FALSE(object.isconnected());
        EXPECT_EQ(object.get("dbhndl").number(), 0);
        ASSERT_EQ(log_lines().size(), 1u) << log_text();
        EXPECT_EQ(log_lines()[0].level, 0);
        EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-902 (")) << log_text();
        EXPECT_EQ(raised(), std::vector<std::string>{});
        EXPECT_EQ(show(object.call("executequery", "select 1 from rdb$database")), "{}");
    }

    std::string identity(zmFBConn& object) {
        return show(object.call("executequery",
                                "select trim(current_user) || '/' || trim(current_role), "
                                "current_connection from rdb$database")[2][1]);
    }
};

TEST_F(ServerAttach, WrongPasswordIsLoggedAndNotRaised) {
    expect_refused(sysdba, "wrong");
    EXPECT_EQ(last_engine_message().substr(0, 46), "Your user name and password are not defined. A")
        << last_engine_message();
}

TEST_F(ServerAttach, UnknownUserIsLoggedAndNotRaised) { expect_refused("NOBODY", sysdba_password); }

TEST_F(ServerAttach, EmptyPasswordIsRefused) { expect_refused(sysdba, ""); }

TEST_F(ServerAttach, DatabaseNameAloneIsTriedAndRefused) { expect_refused("", ""); }

TEST_F(ServerAttach, PasswordIsNeverLogged) {
    log_at(10);
    zmFBConn refused(database(), sysdba, "wrong-secret");
    zmFBConn attached(database(), sysdba, sysdba_password);
    EXPECT_EQ(log_text().find("wrong-secret"), std::string::npos);
    EXPECT_EQ(log_text().find(sysdba_password), std::string::npos);
}

TEST_F(ServerAttach, RefusedAttachCanBeRepeatedWithTheRightPassword) {
    expect_refused("CLERK", "wrong");
    zmFBConn object(database(), "CLERK", "paper");
    EXPECT_TRUE(object.isconnected());
    EXPECT_TRUE(identity(object).starts_with("\"CLERK/NONE")) << identity(object);
}

TEST_F(ServerAttach, RoleIsTaken) {
    execute("create role CLERKS");
    execute("grant CLERKS to CLERK");
    zmFBConn object(database(), "CLERK", "paper", "CLERKS");
    EXPECT_TRUE(object.isconnected());
    EXPECT_TRUE(identity(object).starts_with("\"CLERK/CLERKS")) << identity(object);
    EXPECT_EQ(show(object.get("srolename")), "\"CLERKS\"");
}

TEST_F(ServerAttach, RoleDecidesWhatTheUserMayDo) {
    execute("create table T (A integer)");
    execute("create role CLERKS");
    execute("grant CLERKS to CLERK");
    execute("grant insert on T to CLERKS");
    zmFBConn without(database(), "CLERK", "paper");
    EXPECT_TRUE(without.call("executeupdate", "insert into T values (1)")
                    .string()
                    .starts_with("[ERROR] SQLCODE=-551 ("));
    zmFBConn with(database(), "CLERK", "paper", "CLERKS");
    EXPECT_EQ(show(with.call("executeupdate", "insert into T values (1)")), "\"\"");
    EXPECT_EQ(rows("select count(*) from T"), (Rows{{"1"}}));
}

TEST_F(ServerAttach, RoleThatIsNotGrantedIsNone) {
    execute("create role OTHERS");
    zmFBConn object(database(), "CLERK", "paper", "OTHERS");
    EXPECT_TRUE(object.isconnected());
    EXPECT_TRUE(identity(object).starts_with("\"CLERK/NONE")) << identity(object);
}

TEST_F(ServerAttach, AUserNameThatWouldEndTheServerIsRefusedBeforeItGetsThere) {
    for (const std::size_t length : {32U, 33U, 255U}) {
        clear_log();
        zmFBConn object(database(), std::string(length, 'U'), sysdba_password);
        EXPECT_FALSE(object.isconnected());
        EXPECT_EQ(
            last_engine_message(),
            "SQL error code = -901\nThe user name is longer than 31 characters, and a server of Firebird "
            "3.0 would end over it");
        ASSERT_EQ(log_lines().size(), 1U) << log_text();
        EXPECT_TRUE(log_lines()[0].text.starts_with("[ERROR] SQLCODE=-901 (")) << log_text();
    }
    EXPECT_EQ(rows("select 1 from rdb$database"), (Rows{{"1"}})) << "the server is there";
}

TEST_F(ServerAttach, TheLongestUserNameIsTaken) {
    const std::string longest(31, 'U');
    Server::shared().create_user(longest, "paper");
    zmFBConn object(database(), longest, "paper");
    EXPECT_TRUE(object.isconnected()) << last_engine_message();
}

TEST_F(ServerAttach, LongestPasswordThatFitsReachesTheServer) {
    expect_refused(sysdba, std::string(255, 'p'));
}

TEST(ServerGone, AttachSaysSoAndOneThatComesBackIsUsed) {
    Server server;
    const std::string name = server.name_of(process_folder() / "gone.fdb");
    ASSERT_EQ(create_database(name, sysdba, sysdba_password).message(), "");
    server.kill();
    EXPECT_NE(run_script(name, sysdba, sysdba_password, "create table T (A integer);").message(), "");
    EXPECT_NE(last_engine_message().find("127.0.0.1"), std::string::npos) << last_engine_message();
    server.start();
    EXPECT_EQ(run_script(name, sysdba, sysdba_password, "create table T (A integer);").message(), "");
}

TEST(Servers, TwoSideBySideHaveTheirOwnPortsAndUsers) {
    Server& first = Server::shared();
    Server second;
    EXPECT_NE(first.port(), second.port());
    second.create_user("ONLYSECOND", "secret");
    for (const Server* server : {&first, &second}) {
        const std::string name =
            server->name_of(process_folder() / ("side" + std::to_string(server->port())));
        ASSERT_EQ(create_database(name, sysdba, sysdba_password).message(), "");
        EXPECT_EQ(run_script(name, "ONLYSECOND", "secret", "").ok(), server == &second);
    }
}

}  // namespace
}  // namespace zmfb::test
