// Ctrl-C, SIGTERM and SIGHUP, whatever the tool is at.
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* endless =
    "execute block as declare n bigint = 0; begin while (n >= 0) do n = mod(n + 1, 1000); end";
constexpr const char* very_long =
    "select count(*) from rdb$fields a, rdb$fields b, rdb$fields c, rdb$fields d";
constexpr const char* many_rows = "select 1 from rdb$fields a, rdb$fields b, rdb$fields c, rdb$fields d";

class Signals : public Tool {
  protected:
    Signals() : path(database()), pipe(file("pipe")) {
        mkfifo(pipe.c_str(), 0600);
        on(path, {"call", "createtable('T', {{'A', 'N', 4, 0}})"});
        exec(path, "insert into t (a) values (1)");
    }
    [[nodiscard]] std::unique_ptr<Started> start_on(std::vector<std::string> words,
                                                    const std::string& input = "") const {
        words.insert(words.begin(), {"--db", path});
        return start(words, input);
    }
    // A process that keeps the row of T for itself.
    [[nodiscard]] std::unique_ptr<Started> holder() const {
        auto holds = start_on({"shell"}, "starttransaction()\ncachedupdate(\"update t set a = 2\")\n");
        holds->settle();
        return holds;
    }
    std::string path;
    std::string pipe;
};

struct Situation {
    std::string name;
    std::vector<std::string> words;
    std::string input = {};
};

class Ended : public Signals, public ::testing::WithParamInterface<Situation> {};

TEST_P(Ended, ByEachOfTheThreeSignals) {
    Situation what = GetParam();
    const auto with_pipe = [this](std::string text) {
        const std::size_t at = text.find("PIPE");
        return at == std::string::npos ? text : text.replace(at, 4, pipe);
    };
    for (std::string& word : what.words) word = with_pipe(word);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto tool = start_on(what.words, with_pipe(what.input));
        tool->settle();
        tool->send(signal);
        const Finished run = tool->end();
        EXPECT_EQ(run.status, 128 + signal) << run.err;
        EXPECT_NE(run.err.find("error: interrupted\n"), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("has not come to an end"), std::string::npos) << run.err;
    }
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select a from t"}).out, "A\r\n1\r\n");
}

INSTANTIATE_TEST_SUITE_P(
    Tool, Ended,
    ::testing::Values(Situation{"AStatement", {"exec", endless}}, Situation{"AQuery", {"query", very_long}},
                      Situation{"AStatementOfAScript", {"shell"}, std::string(endless) + ";\n"},
                      Situation{"ACall", {"call", std::string("executeupdate('") + endless + "')"}},
                      Situation{"WaitingForCalls", {"call", "isconnected()", "-"}},
                      Situation{"WaitingForAScript", {"shell"}, "isconnected()\n"},
                      Situation{"WaitingForAFileOfAScript", {"shell"}, ".read PIPE\n"},
                      Situation{"WaitingForAReader", {"query", "select 1 from t", "-o", "PIPE"}},
                      Situation{"WaitingForAPassword", {"tables", "--password-file", "PIPE"}},
                      Situation{"WaitingForAnAnswer", {"drop", "t"}}),
    [](const auto& info) { return info.param.name; });

TEST_F(Signals, EndAToolThatWaitsForALockAndTakeTheStatementBack) {
    const auto holds = holder();
    const auto waits = start_on({"exec", "update t set a = 3"});
    waits->settle();
    waits->send(SIGTERM);
    EXPECT_EQ(waits->end().status, 143);
    holds->send(SIGTERM);
    EXPECT_EQ(holds->end().status, 143);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select a from t"}).out, "A\r\n1\r\n");
}

TEST_F(Signals, EndAToolWhoseOutputNobodyReads) {
    const auto tool = start_on({"query", many_rows});
    tool->settle();
    tool->send(SIGTERM);
    EXPECT_EQ(tool->end().status, 143);
}

TEST_F(Signals, ThatWereIgnoredAtTheStartStayIgnored) {
    const auto tool = start_after("trap '' TERM HUP", {"--db", path, "exec", endless});
    tool->settle();
    tool->send(SIGTERM);
    tool->send(SIGHUP);
    tool->settle();
    tool->send(SIGINT);
    EXPECT_EQ(tool->end().status, 130);
}

TEST_F(Signals, EndAllOfManyProcessesAndLeaveTheDatabaseToTheNext) {
    std::vector<std::unique_ptr<Started>> all;
    const auto held = holder();
    for (int i = 0; i < 6; ++i) all.push_back(start_on({"exec", "update t set a = 3"}));
    for (int i = 0; i < 12; ++i) all.push_back(start_on({"shell"}, "isconnected()\n"));
    for (int i = 0; i < 2; ++i) all.push_back(start_on({"exec", endless}));
    for (int i = 0; i < 3; ++i) all.push_back(start_on({"query", "select 1 from rdb$database", "-o", pipe}));
    for (const auto& one : all) one->settle();
    for (const auto& one : all) one->send(SIGTERM);
    const auto ended_by_it = [](Started& one) {
        const Finished run = one.end();
        EXPECT_EQ(run.status, 143) << run.err;
        EXPECT_EQ(run.err.find("has not come to an end"), std::string::npos) << run.err;
    };
    for (const auto& one : all) ended_by_it(*one);
    // Not before: what waited for its record would be done then.
    held->send(SIGTERM);
    ended_by_it(*held);
    exec(path, "update t set a = 4");
    EXPECT_EQ(on(path, {"doctor"}).status, 0);
}

TEST_F(Signals, LeaveNoFileOfADatabaseThatIsBeingMade) {
    if (on_server()) GTEST_SKIP() << "what is made on a server is the server's";
    const std::filesystem::path folder = file("made");
    std::filesystem::create_directory(folder);
    const auto databases = [&] {
        return std::count_if(std::filesystem::directory_iterator(folder), {},
                             [](const auto& entry) { return entry.is_regular_file(); });
    };
    const auto tool = start({"--db", folder / "new.fdb", "create"});
    while (databases() == 0) poll(nullptr, 0, 5);
    tool->send(SIGTERM);
    const Finished run = tool->end();
    if (run.status == 0) return;  // it was done by then
    EXPECT_EQ(run.status, 143) << run.err;
    EXPECT_EQ(databases(), 0);
}

TEST_F(Signals, HaveADropSayWhatIsGoneByThen) {
    exec(path, "create view v as select a from t");
    exec(path,
         "create trigger slow before drop table as declare n bigint = 0; begin "
         "while (n >= 0) do n = mod(n + 1, 1000); end");
    const auto tool = start_on({"drop", "t", "--yes"});
    tool->settle();
    tool->send(SIGTERM);
    const Finished run = tool->end();
    EXPECT_EQ(run.status, 143);
    EXPECT_EQ(run.err, "error: interrupted\n  V dropped by then\n");
    EXPECT_EQ(on(path, {"call", "istable('T')"}).out, ".T.\n");
}

// A port of this host that takes connections and never says a word.
class SilentServer {
  public:
    SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        if (bind(socket_, any, size) != 0 || listen(socket_, 8) != 0 || getsockname(socket_, any, &size) != 0)
            throw std::runtime_error("no port to listen on");
        port_ = ntohs(address.sin_port);
    }
    ~SilentServer() { close(socket_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    [[nodiscard]] std::string database() const { return "127.0.0.1/" + std::to_string(port_) + ":/x.fdb"; }

  private:
    int socket_;
    int port_ = 0;
};

TEST_F(Signals, EndAToolThatAttachesToAServerWhichDoesNotAnswer) {
    const SilentServer silent;
    const auto tool =
        start({"--db", silent.database(), "--user", "ANA", "--password-file", "/dev/null", "tables"});
    tool->settle();
    tool->send(SIGTERM);
    const Finished run = tool->end();
    EXPECT_EQ(run.status, 143);
    EXPECT_EQ(run.err,
              "error: interrupted, but what ran has not come to an end\n"
              "hint: \"zmfb doctor\" says what was left, if anything was\n");
}

class SignalsOnATerminal : public Signals {
  protected:
    [[nodiscard]] std::vector<std::string> command(const std::vector<std::string>& words) const {
        const std::string cache = process_folder() / "cache";
        std::vector<std::string> all{"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK"};
        all.insert(all.end(), {"XDG_CACHE_HOME=" + cache, "XDG_STATE_HOME=" + file("state")});
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    [[nodiscard]] std::vector<std::string> shell() const {
        return command({ZMFB_TOOL, "--db", path, "shell", "--no-pager"});
    }
};

constexpr const char* prompt = "zmfb> ";
constexpr const char* control_c = "\x03";
constexpr const char* control_d = "\x04";

TEST_F(SignalsOnATerminal, TheEchoIsBackAfterControlCAtThePasswordPrompt) {
    Dialogue talk(
        command({"env", "-u", "ISC_PASSWORD", "sh", "-c", "trap : INT; \"$@\"; echo status $?; stty -a", "sh",
                 ZMFB_TOOL, "--db", "127.0.0.1/1:/x.fdb", "--user", "ANA", "tables"}));
    talk.expect("Password of ANA on 127.0.0.1/1:/x.fdb: ");
    talk.type(control_c);
    talk.expect("status 130\r\n");
    EXPECT_EQ(talk.expect("echonl").find("-echo "), std::string::npos);
    talk.end();
}

TEST_F(SignalsOnATerminal, ControlCEndsAStatementThatGivesNoRowsAndNotTheShell) {
    exec(path,
         "create procedure stuck returns (n bigint) as begin n = 1; suspend; "
         "while (n >= 0) do n = mod(n + 1, 1000); end");
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type(".mode csv\n");
    talk.expect_prompt(prompt);
    talk.type("select n from stuck;\n");
    talk.expect(on_server() ? "N\r\r\n" : "N\r\r\n1\r\r\n");  // a server sends many rows at once, or none yet
    talk.type(control_c);
    talk.expect_prompt(prompt);
    talk.type("update t set a = 5;\n");
    talk.expect("done: update");
    talk.expect_prompt(prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(SignalsOnATerminal, ControlCAtAQuestionEndsTheCommandAndNotTheShell) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    talk.type(".drop t\n");
    talk.expect("[y/N] ");
    talk.type(control_c);
    talk.expect("error: interrupted");
    talk.expect_prompt(prompt);
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
    EXPECT_EQ(on(path, {"call", "istable('T')"}).out, ".T.\n");
}

TEST_F(SignalsOnATerminal, WhatIsSaidBehindAQuestionWithoutAnAnswerStandsOnALineOfItsOwn) {
    for (const char* key : {control_c, control_d}) {
        Dialogue talk(command({ZMFB_TOOL, "--db", path, "drop", "t"}));
        talk.expect("[y/N] ");
        talk.type(key);
        talk.expect("\r\nerror: ");
        talk.end();
    }
}

TEST_F(SignalsOnATerminal, SigtermEndsTheShellAtItsPrompt) {
    Dialogue talk(shell());
    talk.expect_prompt(prompt);
    kill(talk.pid(), SIGTERM);
    EXPECT_EQ(talk.end(), 143);
}

}  // namespace
}  // namespace zmfb::test
