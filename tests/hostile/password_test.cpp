// A password is seen by the client library and by nobody else.
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

constexpr const char* secret = "Tr0ub4dor&3";
constexpr int every_level = 100;

class SecretPassword : public Tool {
  protected:
    // Everything that anybody could read of what was done so far.
    std::string all_texts() {
        std::string all = log_text() + last_engine_message();
        for (const std::string& description : raised()) all += description;
        return all;
    }
    static bool holds(const std::string& text) { return text.find(secret) != std::string::npos; }
};

TEST_F(SecretPassword, IsInNoTextOfAnAttachThatFails) {
    const std::string names[] = {Server::shared().name_of(file("none.fdb")), file("none.fdb"),
                                 file("no/folder.fdb"), "127.0.0.1/1:none"};
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        log_at(every_level);
        zmFBConn object(name, sysdba, secret);
        EXPECT_FALSE(object.isconnected());
        EXPECT_FALSE(log_text().empty());
        EXPECT_FALSE(holds(all_texts())) << all_texts();
    }
}

TEST_F(SecretPassword, IsNotKeptInAnObjectThatIsAttached) {
    const std::string name = Server::shared().name_of(file("kept.fdb"));
    ASSERT_EQ(create_database(name, sysdba, sysdba_password).message(), "");
    log_at(every_level);
    zmFBConn object(name, sysdba, sysdba_password);
    ASSERT_TRUE(object.isconnected());
    std::string texts;
    for (const MethodRow& row : methods()) {
        if (row.kind == MethodKind::access) texts += show(object.get(row.name)) + "\n";
    }
    object.call("disconnect");
    EXPECT_NE(texts.find(sysdba), std::string::npos) << texts;
    EXPECT_EQ((texts + all_texts()).find(sysdba_password), std::string::npos) << texts << all_texts();
}

TEST_F(SecretPassword, IsRefusedWithoutBeingNamed) {
    using namespace std::string_view_literals;
    for (const std::string& password : {secret + std::string("\0x"sv), secret + std::string(300, 'x')}) {
        log_at(every_level);
        zmFBConn object(Server::shared().name_of(file("none.fdb")), sysdba, password);
        EXPECT_FALSE(object.isconnected());
        EXPECT_FALSE(holds(all_texts())) << all_texts();
    }
}

TEST_F(SecretPassword, IsInNoTextOfTheTool) {
    const std::string name = "127.0.0.1/1:none";  // refused at once
    const std::string from_file = write_file("secret", std::string(secret) + "\n");
    struct Case {
        std::vector<std::string> words;
        std::vector<std::string> environment;
    };
    const Case cases[] = {
        {{"call", "isconnected()"}, {std::string("ISC_PASSWORD=") + secret}},
        {{"--password-file", from_file, "call", "isconnected()"}, {}},
        {{"--password", secret, "call", "isconnected()"}, {}},
        {{"--password", secret, "doctor"}, {}},
        {{"--password", secret, "--json", "tables"}, {}},
        {{"--password", secret, "--version"}, {}},
        {{"--password", secret, "nosuchcommand"}, {}},
        {{"--password", secret, "--nosuchoption", "tables"}, {}},
        {{"--password", secret, "--password-file", from_file, "tables"}, {}},
        {{"--password", secret + std::string("\xE2\x82\xAC"), "tables"}, {}},
    };
    for (const auto& [more, environment] : cases) {
        std::vector<std::string> words{"--db", name, "--user", sysdba, "--log-level", "100"};
        words.insert(words.end(), more.begin(), more.end());
        SCOPED_TRACE(more.back());
        const Finished run = zmfb(words, "", environment);
        EXPECT_FALSE(holds(run.out + run.err)) << run.out << run.err;
        EXPECT_FALSE(holds(log_text())) << log_text();
    }
}

}  // namespace
}  // namespace zmfb::test
