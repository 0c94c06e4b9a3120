// The tool for a user who does not own the database.
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* hint =
    "hint: the owner of the database gives rights; docs/rights.md says which are needed\n";

class Rights : public Tool {
  protected:
    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "only the embedded engine takes any user name";
        path = database();
        on(path, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"});
        on(path, {"exec", "insert into client (name) values ('Ana')"});
    }
    Finished as_anna(const std::vector<std::string>& words) const {
        std::vector<std::string> all{"--user", "anna"};
        all.insert(all.end(), words.begin(), words.end());
        return on(path, all);
    }
    std::string path;
};

TEST_F(Rights, TablesThatMayNotBeReadHaveNoCount) {
    const Finished refused = as_anna({"tables"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, std::string("error: cannot read the engine's tables\n"
                                       "  no permission for EXECUTE access to FUNCTION ZMBLOBSUBSTR\n") +
                               hint);
    on(path, {"exec", "grant execute on function zmblobsubstr to public"});
    const Finished listed = as_anna({"tables"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out.substr(0, listed.out.find("RDDSYS")),
              "table       kind    records\n"
              "----------  ------  -------\n"
              "CLIENT      driver        ?\n");
    const auto json = nlohmann::json::parse(as_anna({"--json", "tables"}).out);
    EXPECT_EQ(json[0], nlohmann::json::parse(R"({"table": "CLIENT", "kind": "driver", "records": null})"));
}

TEST_F(Rights, AnImportKeepsATableItMayKnowNothingOf) {
    const std::string dbf = file("client.dbf");
    DbfBuilder().field("N", 'N', 4).record({"   1"}).write(dbf);
    const Finished run = as_anna({"import", "--drop-existing", "--yes", dbf});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("no permission for EXECUTE access to FUNCTION ZMBLOBSUBSTR\n"), std::string::npos);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select name from client"}).out, "NAME\r\nAna\r\n");
}

TEST_F(Rights, DoctorSaysWhatAUserMayNotDo) {
    const Finished run = as_anna({"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("failed: no permission for EXECUTE access to FUNCTION "), std::string::npos);
    EXPECT_NE(run.out.find("\n[bad] external tables: unsuccessful metadata update CREATE TABLE EXT_DOCTOR_"),
              std::string::npos);
    EXPECT_NE(run.out.find(" failed There is no privilege for this operation\n       the owner of the "
                           "database gives rights; docs/rights.md says which are needed\n"),
              std::string::npos)
        << run.out;
}

/// On a server, where users have passwords and the engine looks at all of their rights.
class RightsOnAServer : public Tool {
  protected:
    RightsOnAServer() {
        unsetenv("ISC_USER");
        unsetenv("ISC_PASSWORD");
        for (const char* user : {"ANNA", "OTTO"}) {
            if (made_users().insert(user).second) Server::shared().create_user(user, sysdba_password);
        }
    }
    Finished as(const std::string& user, std::vector<std::string> words,
                const std::string& database = "shop.fdb") const {
        words.insert(words.begin(), {"--db", Server::shared().name_of(file(database)), "--user", user});
        return zmfb(words, "", {std::string("ISC_PASSWORD=") + sysdba_password});
    }

  private:
    static std::set<std::string>& made_users() {
        static std::set<std::string> users;
        return users;
    }
};

/// The statements that docs/rights.md shows over several lines, as the shell hands them on.
std::vector<std::string> blocks_of_the_page(const std::string& page) {
    static const std::regex block(R"re(\$ zmfb exec "(execute block[^"]*)")re");
    std::vector<std::string> blocks;
    for (std::sregex_iterator found(page.begin(), page.end(), block), none; found != none; ++found) {
        blocks.push_back(std::regex_replace(std::regex_replace((*found)[1].str(), std::regex("\n> "), "\n"),
                                            std::regex(R"(\\\$)"), "$$"));
    }
    return blocks;
}

TEST_F(RightsOnAServer, TheGrantsOfThePageAreEnoughAndReadersCannotUnlock) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}).status, 0);
    const std::vector<std::string> blocks = blocks_of_the_page(read_file(ZMFB_RIGHTS_PAGE));
    ASSERT_EQ(blocks.size(), 2U);
    for (const std::string& block : blocks) {
        const Finished run = as(sysdba, {"exec", block});
        ASSERT_EQ(run.status, 0) << block << run.err;
    }
    ASSERT_EQ(as(sysdba, {"call", "grantaccess('SELECT', 'CLIENT', 'OTTO')",
                          "grantaccess('SELECT, INSERT, UPDATE, DELETE', 'CLIENT', 'ANNA')",
                          "grantaccess('SELECT, INSERT, DELETE', 'RDDSYS_OPN', 'ANNA')",
                          "grantaccess('SELECT, INSERT, DELETE', 'RDDSYS_FLK', 'ANNA')",
                          "grantaccess('SELECT, INSERT, DELETE', 'RDDSYS_RLK', 'ANNA')"})
                  .out,
              ".T.\n.T.\n.T.\n.T.\n.T.\n");
    const std::string area = "'CLIENT', 'CLIENT:A:1:here'";
    EXPECT_EQ(as("anna", {"exec", "insert into client (name) values ('Ana')"}).err, "");
    EXPECT_EQ(as("anna", {"call", "settableusedbyarea(.T., " + area + ", .T.)"}).out, ".T.\n");
    EXPECT_EQ(
        as("anna", {"exec", "insert into client (name, rdd_areaid) values ('Eva', 'CLIENT:A:1:here')"}).err,
        "");
    EXPECT_EQ(as("anna", {"call", "getapprecnofromarea(" + area + ")", "setrecordaslocked(" + area + ", '2')",
                          "settableaslocked(" + area + ")", "deleterecord('CLIENT', '1')"})
                  .out,
              "2\n.T.\n.T.\n.T.\n");
    EXPECT_EQ(as("otto", {"query", "--mode", "csv", "select name from client"}).out, "NAME\r\nEva\r\n");
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"unlock", "--yes", "client"}, {"clear", "--yes"}}) {
        EXPECT_EQ(as("otto", words).status, 1);
        EXPECT_EQ(lines(as(sysdba, {"locks"}).out).size(), 4U);  // two locks below the head
    }
    EXPECT_EQ(as("anna", {"clear", "--yes"}).status, 0) << "as the page says";
}

TEST_F(RightsOnAServer, CreatingADatabaseTakesARightThatTheHintNames) {
    const Finished refused = as("otto", {"create"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("\n  no permission for CREATE access to DATABASE "), std::string::npos)
        << refused.err;
    EXPECT_TRUE(
        refused.err.ends_with("\nhint: SYSDBA gives the right to make databases; docs/rights.md says how\n"))
        << refused.err;
    ASSERT_EQ(as(sysdba, {"create"}, "other.fdb").status, 0);
    ASSERT_EQ(as(sysdba, {"exec", "grant create database to user otto"}, "other.fdb").status, 0);
    EXPECT_EQ(as("otto", {"create"}).err, "");
}

}  // namespace
}  // namespace zmfb::test
