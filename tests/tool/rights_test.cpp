// The tool for a user who does not own the database.
#include <nlohmann/json.hpp>
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
    const Finished listed = as_anna({"tables"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.out.substr(0, listed.out.find("RDDSYS")),
              "table       kind    records\n"
              "----------  ------  -------\n"
              "CLIENT      driver        ?\n");
    const auto json = nlohmann::json::parse(as_anna({"--json", "tables"}).out);
    EXPECT_EQ(json[0], nlohmann::json::parse(R"({"table": "CLIENT", "kind": "driver", "records": null})"));
}

TEST_F(Rights, AnImportKeepsATableItMayNotReplace) {
    const std::string dbf = file("client.dbf");
    DbfBuilder().field("N", 'N', 4).record({"   1"}).write(dbf);
    const Finished run = as_anna({"import", "--drop-existing", "--yes", dbf});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("CREATE TABLE Z$CLIENT failed\n"), std::string::npos) << run.err;
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select name from client"}).out, "NAME\r\nAna\r\n");
}

TEST_F(Rights, DoctorSaysWhatAUserMayNotDo) {
    const Finished run = as_anna({"doctor"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("failed: no permission for EXECUTE access to FUNCTION "), std::string::npos);
    EXPECT_NE(run.out.find("\n[note] external tables: unsuccessful metadata update CREATE TABLE EXT_DOCTOR_"),
              std::string::npos);
    EXPECT_NE(
        run.out.find(" failed There is no privilege for this operation\n       only bringdbf and exiletable "
                     "use them: the owner of the database gives rights; docs/rights.md says which are "
                     "needed\n"),
        std::string::npos)
        << run.out;
}

// On a server, where users have passwords and the engine looks at all of their rights.
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
    // Runs the commands of a page, with its databases on that server.
    Finished run_page(const std::string& page, const Server& server) const {
        return run({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "python3", "-B",
                    ZMFB_SOURCE "/tests/docs/commands.py", ZMFB_SOURCE, folder(), ZMFB_TOOL, page},
                   "",
                   {"ZMFB_DOCS_SERVER=127.0.0.1/" + std::to_string(server.port()),
                    std::string("ISC_USER=") + sysdba, std::string("ISC_PASSWORD=") + sysdba_password});
    }
    // What doctor says of the rights of a user.
    std::string rights_of(const std::string& user) const {
        const std::string all = as(user, {"doctor"}).out;
        const std::size_t start = all.rfind('\n', all.find("] rights: ")) + 1;
        return all.substr(start, all.find("\n[", start) + 1 - start);
    }

  private:
    static std::set<std::string>& made_users() {
        static std::set<std::string> users;
        return users;
    }
};

TEST_F(RightsOnAServer, WhoWasGrantedReadingReadsAndCannotUnlock) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}).status, 0);
    ASSERT_EQ(as(sysdba, {"exec", "insert into client (name) values ('Eva')"}).status, 0);
    EXPECT_NE(as("otto", {"query", "select name from client"}).status, 0);
    const Finished granted = as(sysdba, {"grant", "otto"});
    EXPECT_EQ(granted.status, 0) << granted.err;
    EXPECT_EQ(lines(granted.out).size(), 12U) << granted.out;
    EXPECT_TRUE(granted.out.starts_with("EXECUTE on FUNCTION ZMBLOBSUBSTR to PUBLIC\n")) << granted.out;
    EXPECT_TRUE(granted.out.ends_with("\nSELECT on TABLE CLIENT to USER OTTO\n")) << granted.out;
    EXPECT_EQ(as("otto", {"tables"}).status, 0);
    EXPECT_EQ(as("otto", {"query", "--mode", "csv", "select name from client"}).out, "NAME\r\nEva\r\n");
    EXPECT_EQ(as("otto", {"exec", "insert into client (name) values ('Ida')"}).status, 1);
    ASSERT_EQ(as(sysdba, {"call", "settableaslocked('CLIENT', 'CLIENT:A:1:here')"}).out, ".T.\n");
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"unlock", "--yes", "client"}, {"clear", "--yes"}}) {
        EXPECT_EQ(as("otto", words).status, 1);
        EXPECT_EQ(lines(as(sysdba, {"locks"}).out).size(), 3U);  // the lock below the head
    }
}

TEST_F(RightsOnAServer, WhoWasGrantedWritingWritesAndLocks) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}).status, 0);
    ASSERT_EQ(as(sysdba, {"grant", "anna", "--level", "write"}).err, "");
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
    EXPECT_EQ(as("anna", {"unlock", "client", "--yes"}).status, 0) << "as the page says";
    EXPECT_EQ(as("anna", {"clear", "--yes"}).status, 0) << "as the page says";
    EXPECT_EQ(as("anna", {"call", "createtable('HERS', {{'NAME', 'C', 10, 0}})"}).out, ".F.\n");
    EXPECT_EQ(as("anna", {"drop", "client", "--yes"}).status, 1);
}

TEST_F(RightsOnAServer, WhoWasGrantedMakingImportsAndOwnsWhatCameIn) {
    const std::string dbf = file("ours.dbf");
    DbfBuilder().field("N", 'N', 4).record({"   1"}).write(dbf);
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"grant", "anna", "--level", "make"}).err, "");
    EXPECT_EQ(as("anna", {"import", dbf}).err, "");
    EXPECT_EQ(as("anna", {"exec", "insert into ours (n) values (2)"}).err, "");
    EXPECT_EQ(as("anna", {"call", "alterfield('OURS', {'N', 'N', 6, 0}, {'N', 'N', 4, 0})"}).out, ".T.\n");
    EXPECT_EQ(as("otto", {"query", "select n from ours"}).status, 1);
    EXPECT_EQ(as(sysdba, {"grant", "otto", "ours"}).err, "");
    EXPECT_EQ(as("otto", {"query", "--mode", "csv", "select n from ours"}).out, "N\r\n1\r\n2\r\n");
    EXPECT_EQ(as("anna", {"drop", "ours", "--yes"}).err, "");
}

TEST_F(RightsOnAServer, WhoWasGrantedAdministrationChangesTablesOfOthers) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}).status, 0);
    ASSERT_EQ(as(sysdba, {"exec", "insert into client (name) values ('Eva')"}).status, 0);
    ASSERT_EQ(as(sysdba, {"grant", "anna", "--level", "admin"}).err, "");
    EXPECT_EQ(as("anna", {"call", "alterfield('CLIENT', {'NAME', 'C', 20, 0}, {'NAME', 'C', 10, 0})"}).out,
              ".T.\n");
    EXPECT_EQ(as("anna", {"query", "--mode", "csv", "select name from client"}).out, "NAME\r\nEva\r\n");
    EXPECT_EQ(as("anna", {"drop", "client", "--yes"}).err, "");
    EXPECT_EQ(as(sysdba, {"doctor"}).out.find("[note] generators"), std::string::npos);
}

TEST_F(RightsOnAServer, WhoMayNotGiveGivesNothing) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"grant", "anna"}).err, "");
    const Finished refused = as("anna", {"grant", "otto"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_TRUE(refused.err.starts_with("error: OTTO was given nothing\n")) << refused.err;
    EXPECT_EQ(as(sysdba, {"grant", "otto", "nosuch"}).status, 1);
    EXPECT_EQ(as(sysdba, {"grant", "otto", "--level", "all"}).status, 2);
}

TEST_F(RightsOnAServer, DoctorSaysWhichRightIsMissing) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}).status, 0);
    EXPECT_EQ(rights_of("SYSDBA"), "[ok] rights: SYSDBA may do everything here\n");
    ASSERT_EQ(as(sysdba, {"grant", "otto"}).err, "");
    ASSERT_EQ(as(sysdba, {"exec", "revoke select on client from otto"}).err, "");
    const std::string nothing = rights_of("otto");
    EXPECT_TRUE(nothing.starts_with("[bad] rights: OTTO lacks to read SELECT access to TABLE CLIENT; "))
        << nothing;
    ASSERT_EQ(as(sysdba, {"grant", "otto"}).err, "");
    const std::string writing = rights_of("otto");
    EXPECT_TRUE(writing.starts_with("[note] rights: OTTO lacks to write and lock ")) << writing;
    for (const char* right : {" SELECT access to TABLE RDDSYS_OPN, ", " UPDATE access to TABLE CLIENT, ",
                              " USAGE access to GENERATOR G_CLIENT_D, "}) {
        EXPECT_NE(writing.find(right), std::string::npos) << right << " is not in\n" << writing;
    }
    ASSERT_EQ(as(sysdba, {"grant", "otto", "--level", "write"}).err, "");
    EXPECT_EQ(rights_of("otto"),
              "[note] rights: OTTO lacks to make tables CREATE TABLE, CREATE SEQUENCE\n"
              "       the owner gives them as far as they are wanted: zmfb grant \"OTTO\" --level make\n");
    ASSERT_EQ(as(sysdba, {"exec", "revoke usage on generator g_client_i from trigger t_client_recno"}).err,
              "");
    EXPECT_NE(rights_of("otto").find("lacks to write and lock USAGE access to GENERATOR G_CLIENT_I; "),
              std::string::npos)
        << rights_of("otto");
    ASSERT_EQ(as(sysdba, {"grant", "otto", "--level", "make"}).err, "");
    EXPECT_EQ(rights_of("otto"), "[ok] rights: OTTO reads, writes and makes tables\n");
}

TEST_F(RightsOnAServer, DoctorSaysWhatAUserWithoutAnyRightLacks) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"call", "createtable('CLIENT', {{'NAME', 'C', 10, 0}})"}).status, 0);
    const Finished doctor = as("otto", {"doctor"});
    EXPECT_EQ(doctor.status, 1);
    EXPECT_EQ(doctor.err, "");
    EXPECT_NE(doctor.out.find("ZMPADL failed: no permission for EXECUTE access to FUNCTION "),
              std::string::npos)
        << doctor.out;
    const std::string rights = rights_of("otto");
    EXPECT_TRUE(rights.starts_with(
        "[bad] rights: OTTO lacks to read SELECT access to TABLE CLIENT; to write and lock SELECT "
        "access to TABLE RDDSYS_OPN, "))
        << rights;
    EXPECT_TRUE(rights.ends_with(
        "; to make tables CREATE TABLE, CREATE SEQUENCE\n       the owner gives them as far as "
        "they are wanted: zmfb grant \"OTTO\" --level make\n"))
        << rights;
    for (const std::string& line : lines(doctor.out)) {
        if (line.starts_with("[bad] database: ")) {
            EXPECT_NE(doctor.out.find(
                          line + "\n       the owner of the database gives rights; docs/rights.md says which "
                                 "are needed\n"),
                      std::string::npos)
                << line;
        }
    }
}

TEST_F(RightsOnAServer, DoctorIsContentWithWhatAUserNeedNotHave) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    ASSERT_EQ(as(sysdba, {"grant", "otto", "--level", "write"}).err, "");
    const Finished doctor = as("otto", {"doctor"});
    EXPECT_EQ(doctor.status, 0) << doctor.out;
    EXPECT_NE(doctor.out.find("\n[note] rights: OTTO lacks to make tables "), std::string::npos)
        << doctor.out;
}

TEST_F(RightsOnAServer, WhoMayNotMakeUsersIsToldWhoMay) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    const Finished refused = as("otto", {"exec", "create user berta password 'paper'"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(
        refused.err.ends_with("\nhint: SYSDBA makes the users of a server; docs/rights.md says how\n"))
        << refused.err;
}

TEST_F(RightsOnAServer, WhatWasGivenIsAListAsJson) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    const auto json = nlohmann::json::parse(as(sysdba, {"--json", "grant", "otto"}).out);
    EXPECT_EQ(json["given"].size(), 11U) << "the functions; there is no table";
}

TEST_F(RightsOnAServer, ThePageHoldsThere) {
    if (!setup_of_this_run().firebird.empty()) GTEST_SKIP() << "the page has the words of Firebird 3.0";
    const Finished page = run_page("docs/rights.md", Server::shared());
    EXPECT_EQ(page.status, 0) << page.out << page.err;
}

TEST_F(RightsOnAServer, ThePageOfAServerAsItWasInstalledHolds) {
    ServerSetup setup = setup_of_this_run();
    setup.as_it_comes = true;
    const Server server(setup);
    const Finished page = run_page("docs/server.md", server);
    EXPECT_EQ(page.status, 0) << page.out << page.err;
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

// Nobody but SYSDBA and the owner may see what other programs have in use.
TEST_F(RightsOnAServer, ADryRunSaysWhichRightAnImportMisses) {
    ASSERT_EQ(as(sysdba, {"create"}).status, 0);
    const std::string dbf = file("client.dbf"), other = file("other.dbf");
    DbfBuilder().field("NAME", 'C', 10).record({"Ana"}).write(dbf);
    DbfBuilder().field("NAME", 'C', 10).record({"Ana"}).write(other);
    ASSERT_EQ(as(sysdba, {"import", dbf}).status, 0);
    ASSERT_EQ(as(sysdba, {"exec", "grant execute on function zmblobsubstr to public"}).status, 0);
    const auto refused = [&](const std::vector<std::string>& words, const std::string& reason) {
        std::vector<std::string> dry = words;
        dry.insert(dry.begin(), {"import", "--dry-run"});
        const Finished said = as("otto", dry);
        EXPECT_EQ(said.status, 1) << said.out;
        EXPECT_NE(said.err.find(reason), std::string::npos) << said.err;
        std::vector<std::string> real = words;
        real.insert(real.begin(), {"import", "--yes"});
        EXPECT_EQ(as("otto", real).status, 1);
    };
    refused({other}, "CREATE");
    refused({dbf, "--append"}, "no permission for ");
    refused({dbf, "--replace"}, "DROP");
    EXPECT_EQ(as(sysdba, {"query", "--mode", "csv", "select trim(name) from client"}).out, "TRIM\r\nAna\r\n");
}

}  // namespace
}  // namespace zmfb::test
