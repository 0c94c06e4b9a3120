// What a user who is not SYSDBA does against a server as it was installed, whose disk the user cannot see.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "sql/database.h"
#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

constexpr int other_user = 4711;

ServerSetup as_it_comes() {
    ServerSetup setup = setup_of_this_run();
    setup.as_it_comes = true;
    return setup;
}

class OrdinaryUser : public Tool {
  protected:
    void SetUp() override {
        if (const std::string reason = why_no_other_user(); !reason.empty()) GTEST_SKIP() << reason;
        fs::create_directory(file("disk"));
        fs::permissions(file("disk"), fs::perms::owner_all);
        for (const fs::path& folder_of_anna : {home_, home_ / "out"}) {
            fs::create_directory(folder_of_anna);
            ASSERT_EQ(::chown(folder_of_anna.c_str(), other_user, other_user), 0);
        }
        fs::copy_file(ZMFB_EXAMPLE_DBF, home_ / "customers.dbf");
        fs::permissions(folder(), fs::perms::owner_all | fs::perms::others_exec, fs::perm_options::add);
        server_.create_user("ANNA", "paper");
        BareClient(server_.name_of(server_.folder() / "any.fdb"))
            .execute("grant create database to user ANNA");
    }
    // zmfb as another user of the system and of the server, in a folder of that user's.
    Finished as_anna(const std::vector<std::string>& words) const {
        std::vector<std::string> command = as_user(other_user);
        command.insert(command.end(),
                       {"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "-C", home_, "HOME=" + home_.string(),
                        "XDG_CACHE_HOME=" + (home_ / "cache").string(), "ISC_USER=anna", "ISC_PASSWORD=paper",
                        "ZMFB_DB=" + database_, ZMFB_TOOL});
        command.insert(command.end(), words.begin(), words.end());
        return run(command);
    }
    std::string in_home(const std::string& name) const { return home_ / name; }

    Server server_{as_it_comes()};
    const fs::path home_ = file("home");
    const std::string database_ = server_.name_of(file("disk/shop.fdb"));
};

TEST_F(OrdinaryUser, MakesADatabaseAndImportsQueriesChangesExportsAndLocks) {
    ASSERT_EQ(as_anna({"create"}).err, "");
    EXPECT_TRUE(fs::exists(file("disk/shop.fdb")));
    const Finished imported = as_anna({"import", "customers.dbf"});
    EXPECT_TRUE(imported.out.starts_with("customers.dbf -> CUSTOMERS: 10 records"))
        << imported.out << imported.err;
    EXPECT_EQ(as_anna({"query", "--mode", "csv", "select code, credit from customers where code = 1"}).out,
              "CODE,CREDIT\r\n1,1250.50\r\n");
    ASSERT_EQ(as_anna({"matrix", "extract", "customers", "-o", "customers.tf"}).err, "");
    std::string matrix = read_file(in_home("customers.tf"));
    const std::string before = "=> 003::CITY::C::16::0";
    ASSERT_NE(matrix.find(before), std::string::npos) << matrix;
    matrix.replace(matrix.find(before), before.size(), "=> 003::TOWN::C::20::0");
    std::ofstream(in_home("changed.tf")) << matrix;
    const Finished applied = as_anna({"matrix", "apply", "changed.tf", "--yes"});
    EXPECT_EQ(applied.status, 0) << applied.out << applied.err;
    EXPECT_EQ(as_anna({"query", "--mode", "csv", "select count(town) as n from customers"}).status, 0);
    const Finished exported = as_anna({"export", "customers", "-o", "out"});
    EXPECT_TRUE(exported.out.starts_with("CUSTOMERS -> out/customers.dbf: 10 records"))
        << exported.out << exported.err;
    ASSERT_EQ(as_anna({"import", "out/customers.dbf", "--table", "again"}).err, "");
    const std::string names = "select name, town, credit from ";
    EXPECT_EQ(as_anna({"query", "--mode", "csv", names + "again order by recno"}).out,
              as_anna({"query", "--mode", "csv", names + "customers order by recno"}).out);
    EXPECT_EQ(as_anna({"call", "setrecordaslocked('CUSTOMERS', 'CUSTOMERS:A:1:here', '2')",
                       "setrecordaslocked('CUSTOMERS', 'CUSTOMERS:B:1:here', '2')",
                       "settableaslocked('CUSTOMERS', 'CUSTOMERS:A:1:here')"})
                  .out,
              ".T.\n.F.\n.T.\n");
    EXPECT_EQ(lines(as_anna({"locks"}).out).size(), 4U);
    EXPECT_EQ(as_anna({"unlock", "customers", "--yes"}).status, 0);
    const Finished doctor = as_anna({"doctor"});
    EXPECT_NE(doctor.out.find("[ok] functions callable: "), std::string::npos) << doctor.out;
    EXPECT_NE(doctor.out.find("[ok] rights: ANNA may do everything here"), std::string::npos) << doctor.out;
}

TEST_F(OrdinaryUser, PreparesADatabaseOfAnotherProgram) {
    must_succeed(sql::create_database(database_, "ANNA", "paper"));
    const Finished dry = as_anna({"prepare", "--dry-run"});
    EXPECT_TRUE(dry.out.starts_with("To be made in " + database_ + ":\n  the eleven functions")) << dry.err;
    EXPECT_EQ(as_anna({"tables"}).status, 3) << "nothing was made yet";
    EXPECT_TRUE(as_anna({"prepare", "--yes"}).out.ends_with(database_ + " is ready\n"));
    const Finished doctor = as_anna({"doctor"});
    EXPECT_EQ(doctor.status, 0) << doctor.out;
    EXPECT_NE(doctor.out.find("[note] external tables: "), std::string::npos) << doctor.out;
    EXPECT_EQ(as_anna({"import", "customers.dbf"}).err, "");
}

TEST_F(OrdinaryUser, KeepsStoredFunctionsWhereTheServerLoadsNoModule) {
    const std::string stored =
        "stored: the eleven functions are stored ones, which need nothing on the server\n";
    ASSERT_EQ(as_anna({"create"}).err, "");
    EXPECT_EQ(as_anna({"functions"}).out, stored);
    const Finished refused = as_anna({"functions", "module"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.starts_with("error: the functions stay stored ones\n")) << refused.err;
    EXPECT_NE(refused.err.find("UdfAccess in the engine's firebird.conf"), std::string::npos) << refused.err;
    EXPECT_EQ(as_anna({"exec", "drop function zmpadl"}).err, "");
    EXPECT_EQ(as_anna({"functions", "stored"}).out, stored);
    EXPECT_EQ(as_anna({"call", "isallneededudfsinstalled()"}).out, ".T.\n");
}

}  // namespace
}  // namespace zmfb::test
