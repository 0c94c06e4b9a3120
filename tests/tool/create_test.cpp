#include <chrono>
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class Create : public Tool {};

const std::string there_hint =
    "hint: \"zmfb doctor\" says whether the driver can use it, and what it misses\n";

TEST_F(Create, MakesADatabaseTheDriverCanUse) {
    const Finished run = on(new_database(), {"create"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, new_database() + " is ready\n");
    const Finished look = on(new_database(), {"call", "isallneededudfsinstalled()", "gettablesname()"});
    EXPECT_EQ(look.out, ".T.\n{\"RDDSYS_FLK\", \"RDDSYS_OPN\", \"RDDSYS_RLK\"}\n");
}

TEST_F(Create, TheFileIsForItsOwnerAndGroupWhateverTheUmask) {
    for (const std::string umask : {"000", "022", "077"}) {
        ASSERT_EQ(zmfb_after("umask " + umask, {"--db", as_database(umask + ".fdb"), "create"}).status, 0);
        EXPECT_EQ(std::filesystem::status(file(umask + ".fdb")).permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                      std::filesystem::perms::group_read | std::filesystem::perms::group_write)
            << umask;
    }
}

TEST_F(Create, AnExistingFileIsRefusedAndLeftAlone) {
    const std::string path = write_file("test.fdb", "precious");
    const Finished run = on(path, {"create"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + path + " exists already and is left alone\n" + there_hint);
    EXPECT_EQ(read_file(path), "precious");
}

TEST_F(Create, AnExistingDatabaseOnAServerIsRefusedWithTheSameHint) {
    const std::string name = Server::shared().name_of(file("test.fdb"));
    const auto create = [&] {
        return zmfb({"--db", name, "--user", sysdba, "create"}, "",
                    {std::string("ISC_PASSWORD=") + sysdba_password});
    };
    ASSERT_EQ(create().status, 0);
    const Finished again = create();
    EXPECT_EQ(again.status, 1);
    EXPECT_TRUE(again.err.ends_with("\n  File exists\n" + there_hint)) << again.err;
}

TEST_F(Create, WhatIsNoDatabaseOfTheDriversIsNotSentRoundInCircles) {
    const std::string path = database();
    exec(path, "drop function zmpadl");
    // Each hint leads on, and the last one says what to do.
    EXPECT_NE(on(path, {"tables"}).err.find("hint: \"zmfb doctor\" says what it misses"), std::string::npos);
    const std::string advice = on(path, {"doctor"}).out;
    EXPECT_NE(advice.find("missing: ZMPADL\n       zmfb functions stored\n"), std::string::npos) << advice;
}

TEST_F(Create, AFolderThatIsNotThereIsSaidSo) {
    const Finished run = on(file("nowhere/test.fdb"), {"create"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot create " + file("nowhere/test.fdb") +
                           "\n  cannot create a database in " + file("nowhere") +
                           ": No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(file("nowhere")));
}

TEST_F(Create, ALinkOfOnesOwnThatLeadsNowhereYetIsFollowed) {
    if (on_server()) GTEST_SKIP() << "a server creates the file";
    std::filesystem::create_directory(file("data"));
    std::filesystem::create_symlink("data/real.fdb", new_database());
    EXPECT_EQ(on(new_database(), {"create"}).err, "");
    EXPECT_TRUE(std::filesystem::is_symlink(new_database()));
    EXPECT_TRUE(std::filesystem::is_regular_file(file("data/real.fdb")));
    EXPECT_EQ(on(new_database(), {"call", "isallneededudfsinstalled()"}).out, ".T.\n");
}

TEST_F(Create, WhenItIsKilledThereIsNoHalfDatabase) {
    if (on_server()) GTEST_SKIP() << "a server creates the file";
    constexpr int moments = 16;
    const auto before = std::chrono::steady_clock::now();
    ASSERT_EQ(on(new_database(), {"create"}).status, 0);
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - before;
    std::filesystem::remove(new_database());
    int killed = 0;
    for (int moment = 1; moment <= moments; ++moment) {
        const std::string limit = std::to_string(whole.count() * moment / moments);
        const int status =
            zmfb({"--db", new_database(), "create"}, "", {"timeout", "-s", "KILL", limit}).status;
        if (!std::filesystem::exists(new_database())) {
            ++killed;
            EXPECT_NE(status, 0);
            continue;
        }
        const Finished look = on(new_database(), {"call", "gettablesname()"});
        EXPECT_EQ(look.out, "{\"RDDSYS_FLK\", \"RDDSYS_OPN\", \"RDDSYS_RLK\"}\n") << look.err;
        std::filesystem::remove(new_database());
    }
    EXPECT_GT(killed, moments / 4);
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
        const std::string name = entry.path().filename();
        EXPECT_TRUE(name == "zmrddfire.log" || name.starts_with("test.fdb.")) << name;
    }
}

TEST_F(Create, WhoOpensTheDatabaseMeanwhileFindsNoneOrAWholeOne) {
    if (on_server()) GTEST_SKIP() << "a server creates the file";
    const std::string script =
        "\"$0\" --db \"$1\" create >/dev/null & made=$!\n"
        "while kill -0 $made 2>/dev/null; do \"$0\" --db \"$1\" call 'gettablesname()' 2>&1; done\n"
        "wait $made";
    for (int round = 0; round < 3; ++round) {
        const std::string path = file(std::to_string(round) + ".fdb");
        const Finished made =
            run({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "sh", "-c", script, ZMFB_TOOL, path}, "",
                {"XDG_CACHE_HOME=" + file("cache")});
        EXPECT_EQ(made.status, 0) << made.err;
        for (const std::string& line : lines(made.out)) {
            EXPECT_TRUE(line == "{\"RDDSYS_FLK\", \"RDDSYS_OPN\", \"RDDSYS_RLK\"}" ||
                        line == "error: cannot attach to " + path || line.starts_with("  I/O error during") ||
                        line == "  Error while trying to open file" ||
                        line == "  No such file or directory" || line.starts_with("hint: \"zmfb create\""))
                << line;
        }
    }
}

TEST_F(Create, ASecondProcessMayHaveTheDatabaseOpenAtTheSameTime) {
    const std::string path = database();
    // The inner call runs while the outer one is attached and waits for its input.
    const std::string script =
        "(sleep 0.3; \"$0\" --db \"$1\" call 'isconnected()'; echo 'getdatabasename()') | "
        "\"$0\" --db \"$1\" call -";
    const Finished run_ =
        run({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "sh", "-c", script, ZMFB_TOOL, path});
    EXPECT_EQ(run_.status, 2);  // ".T." that the inner one printed is no call
    EXPECT_EQ(run_.out, "\"" + path + "\"\n");
    EXPECT_NE(run_.err.find("line 1"), std::string::npos);
}

TEST_F(Create, AFileThatTheEngineCannotMakeIsSaidSoInItsWords) {
    std::vector<std::string> names{Server::shared().name_of(file("nowhere/test.fdb"))};
    if (!on_server()) names.push_back(file(std::string(300, 'x')));
    for (const std::string& name : names) {
        const Finished run = zmfb({"--db", name, "--user", sysdba, "create"}, "",
                                  {std::string("ISC_PASSWORD=") + sysdba_password});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.err.starts_with("error: cannot create " + name + "\n  ")) << run.err;
        EXPECT_EQ(run.err.find("filesystem error"), std::string::npos) << run.err;
    }
}

TEST_F(Create, APathThatLeadsNowhereLeavesNothingInTheCurrentFolder) {
    if (on_server()) GTEST_SKIP() << "the lock files are the embedded engine's";
    std::filesystem::create_directory(file("here"));
    EXPECT_EQ(zmfb_in(file("here"), {"--db", file(std::string(300, 'x')), "create"}).status, 1);
    EXPECT_TRUE(std::filesystem::is_empty(file("here")));
}

TEST_F(Create, AHalfMadeFileGoesAndNothingElseDoes) {
    if (on_server()) GTEST_SKIP() << "a server's files are not the tool's to remove";
    const std::string other = write_file("other.fdb", "precious");
    ASSERT_EQ(on(new_database(), {"create"}).status, 0);
    const auto blocks = std::filesystem::file_size(new_database()) / 512;
    std::filesystem::remove(new_database());
    // The file has its functions by the time that it may not grow any more.
    const Finished run = zmfb_after("trap '' XFSZ; ulimit -f " + std::to_string(blocks - 256),
                                    {"--db", new_database(), "create"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: cannot create " + new_database() +
                                    "\n  [FBCONN Error]\n  Error on creating Table\n  FB Error: "))
        << run.err;
    EXPECT_NE(run.err.find("\n  I/O error "), std::string::npos) << run.err;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder()), {}), 2);
    EXPECT_EQ(read_file(other), "precious");
    EXPECT_EQ(on(new_database(), {"create"}).status, 0);
}

}  // namespace
}  // namespace zmfb::test
