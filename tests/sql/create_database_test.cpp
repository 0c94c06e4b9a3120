// CREATE DATABASE as a statement: the client library would do it by itself, and nobody could close the
// attachment that it makes.
#include "tests/support/database.h"
#include "tests/support/environment.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

class CreateDatabase : public Database {
  protected:
    std::string update(const std::string& stmt) { return call("executeupdate", stmt).string(); }
};

constexpr const char* refused = "[ERROR] SQLCODE=-104 (Invalid token)";
constexpr const char* reason =
    "SQL error code = -104\nCREATE DATABASE is not for a database that is attached; \"zmfb create\" makes "
    "one";

// What may stand before the name of the file.
const std::vector<std::string> spellings{
    "create database ",
    "CREATE DATABASE",
    "Create Schema ",
    " \t\r\n create\tdatabase\n",
    "/* a comment */create database",
    "-- a comment\ncreate database ",
    "--create\n--\ncreate database ",
    "/*/*twice begun*/create database ",
    "/**/ /* */ create database ",
    "create/* a comment */ database ",
    "create/* a comment */database ",
    "create -- a comment\ndatabase ",
    "create database--\n",
    "cre/* the client library goes on behind it */ate database ",
    "create da/**/ta/**/base/**/",
};

TEST_F(CreateDatabase, IsRefusedHoweverItIsWritten) {
    const std::string path = file("made.fdb");
    for (const std::string& spelling : spellings) {
        for (const char* quote : {"'", "\""}) {
            const std::string statement = spelling + quote + path + quote;
            SCOPED_TRACE(statement);
            EXPECT_EQ(update(statement), refused);
            EXPECT_EQ(last_engine_message(), reason);
            call("starttransaction");
            EXPECT_EQ(call("cachedupdate", statement).string(), refused);
            call("commitchanges");
            EXPECT_EQ(show(call("executequery", statement)), "{}");
            EXPECT_EQ(run_script(database(), sysdba, sysdba_password, statement).message(), reason);
            ASSERT_FALSE(std::filesystem::exists(path));
        }
    }
}

TEST_F(CreateDatabase, IsLoggedAsAnyStatementThatFails) {
    connection();
    log_at(7);
    update("create database 'x.fdb'");
    EXPECT_EQ(log_lines(),
              (std::vector<LogEntry>{{7, "[UPDT] Statement: create database 'x.fdb'"}, {1, refused}}));
}

TEST_F(CreateDatabase, IsNotSeenInStatementsThatOnlyHaveItsWords) {
    EXPECT_EQ(update("-- create database\ncreate table \"DATABASE\" (A varchar(30))"), "");
    EXPECT_EQ(update("/* create database */insert into \"DATABASE\" values ('create database')"), "");
    EXPECT_EQ(update("create sequence CREATE_DATABASE"), "");
    EXPECT_EQ(rows("select A from \"DATABASE\""), (Rows{{"create database"}}));
}

}  // namespace
}  // namespace zmfb::test
