// Connections that break, tables that are dropped, terminals that go, signals.
#include <signal.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "tests/tool/browse/browser.h"

namespace zmfb::test {
namespace {

class BrowseEndings : public Browser {
  protected:
    // The same on a server; what names it there.
    [[nodiscard]] std::string shop_on(const Server& server) const {
        const std::string there = server.name_of(file("shop.fdb"));
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"create"}, {"import", ZMFB_EXAMPLE_DBF}}) {
            std::vector<std::string> command{ZMFB_TOOL, "--db", there};
            command.insert(command.end(), words.begin(), words.end());
            const Finished done = run(command, "", owner);
            EXPECT_EQ(done.status, 0) << done.err;
        }
        return there;
    }
    // A shell that writes its number into a file becomes the tool.
    [[nodiscard]] std::vector<std::string> numbered(const std::string& database) const {
        return {"sh", "-c",
                "echo $$ > " + file("pid") + "; exec " ZMFB_TOOL " --db " + database + " browse customers"};
    }
    void send(int signal) const {
        pid_t process = 0;
        std::ifstream(file("pid")) >> process;
        ASSERT_GT(process, 1);
        ::kill(process, signal);
    }
    const std::vector<std::string> owner{std::string("ISC_USER=") + sysdba,
                                         std::string("ISC_PASSWORD=") + sysdba_password};
};

TEST_F(BrowseEndings, GiveTheTerminalBackOnSignals) {
    for (const auto& [signal, status] : {std::pair{SIGTERM, 143}, {SIGINT, 130}, {SIGHUP, 129}}) {
        const Tmux shown(numbered(database()), 80, 24);
        shown.expect("of 10");
        send(signal);
        EXPECT_NE(shown.expect(Tmux::ended(status)).find("error: interrupted"), std::string::npos);
    }
}

TEST_F(BrowseEndings, LeaveNothingBehindWhenTheTerminalGoes) {
    {
        const auto shown = browse({"customers"});
        shown->expect("of 10");
        EXPECT_EQ(rows("select count(*) from rddsys_opn"), Rows({{"1"}}));
        shown->close();
    }
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (rows("select count(*) from rddsys_opn") != Rows({{"0"}})) {
        ASSERT_LT(std::chrono::steady_clock::now(), until) << "the area is still registered";
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

TEST_F(BrowseEndings, TellOfAServerThatHasGone) {
    Server server;
    const std::string there = shop_on(server);
    for (const bool from_the_list : {false, true}) {
        std::vector<std::string> command{ZMFB_TOOL, "--db", there, "browse"};
        if (!from_the_list) command.emplace_back("customers");
        const Tmux shown(command, 100, 30, owner);
        if (from_the_list) {
            shown.expect("CUSTOMERS");
            shown.press({"Enter"});
        }
        shown.expect("of 10");
        server.kill();
        shown.press({"F5"});
        const std::string screen = shown.expect(Tmux::ended(1));
        EXPECT_NE(screen.find("error: the connection to "), std::string::npos) << screen;
        EXPECT_NE(screen.find("shop.fdb is lost"), std::string::npos) << screen;
        server.start();
    }
}

TEST_F(BrowseEndings, GiveTheTerminalBackWhenTheServerDoesNotAnswerAnyMore) {
    Server server;
    const Tmux shown(numbered(shop_on(server)), 100, 30, owner);
    shown.expect("of 10");
    ::kill(server.pid(), SIGSTOP);
    shown.press({"F5"});
    send(SIGTERM);
    const std::string screen = shown.expect(Tmux::ended(143));
    ::kill(server.pid(), SIGCONT);
    EXPECT_NE(screen.find("error: interrupted, but what ran has not come to an end"), std::string::npos)
        << screen;
}

TEST_F(BrowseEndings, TellOfATableThatWasDropped) {
    execute("create table going (a integer)");
    const auto shown = browse({"going"}, 100, 30);
    shown->expect(" no rows\n");
    execute("drop table going");
    shown->press({"F5"});
    const std::string screen = shown->expect(Tmux::ended(1));
    EXPECT_NE(screen.find("error: GOING is not there any more"), std::string::npos) << screen;
}

TEST_F(BrowseEndings, ComeBackToTheListWhenATableWasDropped) {
    execute("create table aging (a integer)");
    const auto shown = browse({}, 100, 30);
    shown->expect("AGING");
    execute("drop table aging");
    shown->press({"Enter"});
    shown->expect("Table unknown; AGING");
    shown->press({"F5"});
    shown->expect("row 1 of 4");
}

}  // namespace
}  // namespace zmfb::test
