// The names of databases on servers, encryption and logins, as the Firebird client has them.
#include <fstream>

#include "tests/support/bare_client.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

ServerSetup with(std::vector<std::string> settings) {
    ServerSetup setup = setup_of_this_run();
    setup.settings = std::move(settings);
    return setup;
}

class WaysIn : public Tool {
  protected:
    WaysIn() {
        unsetenv("ISC_USER");
        unsetenv("ISC_PASSWORD");
    }
    // Runs zmfb with a firebird.conf of its own for the client.
    Finished zmfb_with(const std::vector<std::string>& settings, const std::string& user,
                       const std::string& password, const std::vector<std::string>& words) const {
        const std::string client = file("client");
        must_succeed(make_environment({.folder = client,
                                       .udf_folder = udf_folder(),
                                       .external_file_folders = {},
                                       .extra_settings = settings}));
        return zmfb(words, "",
                    {"FIREBIRD=" + client, "FIREBIRD_LOCK=" + client + "/lock", "ISC_USER=" + user,
                     "ISC_PASSWORD=" + password});
    }
    Finished zmfb_with(const std::vector<std::string>& settings,
                       const std::vector<std::string>& words) const {
        return zmfb_with(settings, sysdba, sysdba_password, words);
    }
    static std::vector<std::string> asking(const std::string& database, const std::string& expression) {
        return {"--db",   database, "query",
                "--mode", "csv",    "select trim(" + expression + ") as x from rdb$database"};
    }
};

void add_alias(const std::filesystem::path& folder, const std::string& name, const std::string& path) {
    std::ofstream(folder / "databases.conf", std::ios::app) << '\n' << name << " = " << path << '\n';
}

TEST_F(WaysIn, EveryFormOfNameMeansTheDatabaseOfTheServer) {
    Server server;
    const std::string path = file("shop.fdb");
    add_alias(server.folder(), "shop", path);
    server.stop();
    server.start();
    const std::string port = std::to_string(server.port());
    const std::vector<std::string> client{"RemoteServicePort = " + port};
    ASSERT_EQ(zmfb_with(client, {"--db", "127.0.0.1:" + path, "create"}).err, "");
    for (const std::string& name :
         {"127.0.0.1:" + path, "127.0.0.1/" + port + ":" + path, "inet://127.0.0.1:" + port + "/" + path,
          "inet4://localhost:" + port + "/" + path, std::string("127.0.0.1:shop"),
          "127.0.0.1/" + port + ":shop", "inet://127.0.0.1:" + port + "/shop",
          std::string("inet://127.0.0.1/shop")}) {
        const Finished run = zmfb_with(client, asking(name, "rdb$get_context('SYSTEM', 'DB_NAME')"));
        EXPECT_EQ(run.out, "X\r\n" + path + "\r\n") << name << '\n' << run.err;
    }
    const std::string name = "inet://127.0.0.1:" + port + "/shop";
    const Finished doctor = zmfb_with(client, {"--db", name, "doctor"});
    EXPECT_NE(doctor.out.find("gfix -v -full -user SYSDBA " + name + "\n"), std::string::npos) << doctor.out;
}

TEST_F(WaysIn, ADatabaseIsMadeUnderAnyOfThem) {
    const Server server;
    const std::string port = std::to_string(server.port());
    for (const std::string& name :
         {"inet://127.0.0.1:" + port + "/" + file("a.fdb"), "localhost/" + port + ":" + file("b.fdb")}) {
        const Finished made = zmfb_with({}, {"--db", name, "create"});
        EXPECT_EQ(made.out, name + " is ready\n") << made.err;
    }
    EXPECT_TRUE(std::filesystem::exists(file("a.fdb")) && std::filesystem::exists(file("b.fdb")));
}

TEST_F(WaysIn, AnAliasOfAnEnvironmentOfOnesOwnMeansAFile) {
    if (on_server()) GTEST_SKIP() << "the environment is the embedded engine's";
    std::filesystem::create_directory(file("client"));
    add_alias(file("client"), "shop", file("shop.fdb"));
    EXPECT_EQ(zmfb_with({}, {"--db", "shop", "create"}).out, "shop is ready\n");
    EXPECT_EQ(zmfb_with({}, asking("shop", "rdb$get_context('SYSTEM', 'DB_NAME')")).out,
              "X\r\n" + file("shop.fdb") + "\r\n");
}

TEST_F(WaysIn, EncryptionIsWhatClientAndServerAgreeOn) {
    struct Case {
        std::string client, encrypted;  // "" when they do not agree
    };
    const std::vector<std::pair<std::string, std::vector<Case>>> servers{
        {"Required", {{"Enabled", "TRUE"}, {"Required", "TRUE"}, {"Disabled", ""}}},
        {"Enabled", {{"Disabled", "FALSE"}, {"Required", "TRUE"}}},
        {"Disabled", {{"Enabled", "FALSE"}, {"Required", ""}}}};
    for (const auto& [wanted, cases] : servers) {
        const Server server(with({"WireCrypt = " + wanted}));
        const std::string name = server.name_of(file("shop.fdb"));
        if (wanted == "Required") {
            ASSERT_EQ(zmfb_with({}, {"--db", name, "create"}).err, "");
        }
        for (const Case& one : cases) {
            SCOPED_TRACE(wanted + ", " + one.client);
            const Finished run = zmfb_with({"WireCrypt = " + one.client},
                                           asking(name, "rdb$get_context('SYSTEM', 'WIRE_ENCRYPTED')"));
            if (!one.encrypted.empty()) {
                EXPECT_EQ(run.out, "X\r\n" + one.encrypted + "\r\n") << run.err;
                continue;
            }
            EXPECT_EQ(run.status, 3);
            EXPECT_EQ(run.err, "error: cannot attach to " + name +
                                   "\n  Incompatible wire encryption levels requested on client and server\n"
                                   "hint: WireCrypt in the firebird.conf of the server and in that of the "
                                   "client, which the folder FIREBIRD has, must agree\n");
        }
    }
}

TEST_F(WaysIn, LoginsAreThoseThatClientAndServerHaveInCommon) {
    const Server server(with(
        {"AuthServer = Srp, Legacy_Auth", "UserManager = Srp, Legacy_UserManager", "WireCrypt = Enabled"}));
    const std::string name = server.name_of(file("logins.fdb"));
    ASSERT_EQ(zmfb_with({}, {"--db", name, "create"}).err, "");
    BareClient(name).execute("create user CLERK password 'paper' using plugin Legacy_UserManager");
    const std::string method =
        "(select mon$auth_method from mon$attachments where mon$attachment_id = "
        "current_connection)";
    const auto login = [&](const std::string& plugin, const std::string& user, const std::string& password) {
        return zmfb_with({"AuthClient = " + plugin}, user, password, asking(name, method));
    };
    EXPECT_EQ(login("Srp", sysdba, sysdba_password).out, "X\r\nSrp\r\n");
    EXPECT_EQ(login("Srp, Legacy_Auth", sysdba, sysdba_password).out, "X\r\nSrp\r\n");
    EXPECT_EQ(login("Legacy_Auth", "clerk", "paper").out, "X\r\nLegacy_Auth\r\n");
    EXPECT_EQ(login("Legacy_Auth", "clerk", "wrong").status, 3);
    const Finished refused = login("Srp256", sysdba, sysdba_password);
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.err.find("\nhint: AuthServer of the server and AuthClient of the client"),
              std::string::npos)
        << refused.err;
}

}  // namespace
}  // namespace zmfb::test
