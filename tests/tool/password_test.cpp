#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Password : public Tool {
  protected:
    Password() : name(Server::shared().name_of(file("on_server.fdb"))) {
        unsetenv("ISC_USER");
        unsetenv("ISC_PASSWORD");
        const Finished made = zmfb({"--db", name, "--user", "SYSDBA", "create"}, "", {secret()});
        EXPECT_EQ(made.status, 0) << made.err;
    }
    static std::string secret() { return std::string("ISC_PASSWORD=") + sysdba_password; }
    // Calls isconnected() with further words on the command line.
    Finished connect(const std::vector<std::string>& words,
                     const std::vector<std::string>& environment = {}) const {
        std::vector<std::string> all{"--db", name, "--user", "SYSDBA", "call", "isconnected()"};
        all.insert(all.end(), words.begin(), words.end());
        return zmfb(all, "", environment);
    }
    std::string name;
};

constexpr std::string_view warning =
    "warning: --password shows in the list of processes; ISC_PASSWORD, --password-file and the prompt do "
    "not\n";

TEST_F(Password, ComesFromTheEnvironmentWithoutAWord) {
    const Finished run = connect({}, {secret()});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, ".T.\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(Password, OnTheCommandLineWarns) {
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"--password", sysdba_password}, {std::string("--password=") + sysdba_password}}) {
        const Finished run = connect(words);
        EXPECT_EQ(run.out, ".T.\n");
        EXPECT_EQ(run.err, warning);
    }
}

TEST_F(Password, ComesFromTheFirstLineOfAFile) {
    for (const char* end : {"", "\n", "\r\nmore\n"}) {
        const std::string path = write_file("secret", std::string(sysdba_password) + end);
        // It counts before the environment does.
        const Finished run = connect({"--password-file", path}, {"ISC_PASSWORD=wrong"});
        EXPECT_EQ(run.out, ".T.\n");
        EXPECT_EQ(run.err, "");
    }
}

TEST_F(Password, AFileThatCannotBeReadAndTwoPasswordsAreWrongUsage) {
    const Finished missing = connect({"--password-file", file("nosuch")});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "error: cannot read " + file("nosuch") + "\n  No such file or directory\n");
    EXPECT_EQ(connect({"--password-file", file("nosuch"), "--password", "x"}).status, 2);
}

TEST_F(Password, AWrongOneEndsWithThreeAndAHint) {
    for (const std::vector<std::string>& environment : {std::vector<std::string>{}, {"ISC_PASSWORD=wrong"}}) {
        const Finished run = connect({}, environment);
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(lines(run.err).at(0), "error: cannot attach to " + name);
        EXPECT_NE(run.err.find("\nhint: check --user and the password"), std::string::npos) << run.err;
    }
}

TEST_F(Password, AServerWithoutAUserIsWrongUsageAndAsksForNoPassword) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{

             {"create"}, {"tables"}, {"doctor"}, {"import", "x.dbf"}, {"export", "x"}}) {
        const Finished run = on(name, words);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "error: no user given for " + name +
                               "\n  Name one with --user NAME or in the environment variable ISC_USER.\n");
    }
}

TEST_F(Password, IsNotToBeSeenInTheListOfProcesses) {
    const std::string script =
        "(sleep 1; tr '\\0' ' ' < /proc/$(pgrep -n -P $PPID zmfb_under_test || pgrep -n -P $$ "
        "zmfb_under_test)/cmdline >&2) "
        "| \"$0\" --db \"$1\" --user SYSDBA --password \"$2\" call -";
    const Finished finished = run({"bash", "-c", script, ZMFB_TOOL, name, sysdba_password});
    EXPECT_NE(finished.err.find(" --password xxxxxxxxx call -"), std::string::npos) << finished.err;
    EXPECT_EQ(finished.err.find(sysdba_password), std::string::npos) << finished.err;
}

TEST_F(Password, IsAskedForOnATerminalWithoutAnEcho) {
    Dialogue talk(command({"--db", name, "--user", "SYSDBA", "call", "isconnected()"}));
    talk.expect("Password of SYSDBA on " + name + ": ");
    talk.type(std::string(sysdba_password) + "\n");
    EXPECT_EQ(talk.expect(".T.\r\n"), "\r\n.T.\r\n");
    EXPECT_EQ(talk.end(), 0);
}

TEST_F(Password, TheEmbeddedEngineNeedsNone) {
    if (on_server()) GTEST_SKIP() << "there is no embedded engine in this run";
    const std::string path = database();
    const Finished run = on(path, {"call", "isconnected()"});
    EXPECT_EQ(run.out, ".T.\n");
    EXPECT_EQ(run.err, "");
}

}  // namespace
}  // namespace zmfb::test
