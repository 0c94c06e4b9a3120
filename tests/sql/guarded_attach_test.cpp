// Attaching takes the guard of what the engine has opened, and detaching gives it back.
#include "sql/attach.h"
#include "tests/sql/people.h"
#include "tests/support/faulty_client.h"
#include "tests/support/server.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/database.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

// This process has its locks in the folder of the test program, the others in that of People.
class GuardedAttach : public People {
  protected:
    [[nodiscard]] static sql::Attachment attach(const std::string& name) {
        return sql::attach(name, sysdba, "", "");
    }
    // Whether another process, with another lock folder, can open it.
    [[nodiscard]] bool is_free(const std::string& path) const {
        WorkerProcess stranger = worker();
        return opens(stranger, path);
    }
    // An environment of the user's own, with these settings and aliases.
    [[nodiscard]] std::vector<std::string> own_environment(const std::string& name,
                                                           std::vector<std::string> settings,
                                                           const std::string& aliases) const {
        const std::string made = file(name);
        EXPECT_EQ(make_environment({.folder = made,
                                    .udf_folder = udf_folder(),
                                    .external_file_folders = {},
                                    .extra_settings = std::move(settings)})
                      .message(),
                  "");
        write_file(name + "/databases.conf", aliases);
        return {"env", "FIREBIRD=" + made, "FIREBIRD_LOCK=" + made + "/lock"};
    }
};

TEST_F(GuardedAttach, TheFileIsHeldFromTheAttachToTheDetach) {
    const sql::Attachment made = attach(path_of("b"));
    ASSERT_EQ(made.status.sqlcode(), 0) << last_engine_message();
    EXPECT_FALSE(is_free(path_of("b")));
    EXPECT_TRUE(is_free(path_of("a")));
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), 0);
    EXPECT_TRUE(is_free(path_of("b")));
}

TEST_F(GuardedAttach, OfTwoAttachmentsTheLastGivesItFree) {
    const sql::Attachment first = attach(path_of("b"));
    const sql::Attachment second = attach(path_of("b"));
    EXPECT_EQ(sql::detach(first.handle).sqlcode(), 0);
    EXPECT_FALSE(is_free(path_of("b")));
    EXPECT_EQ(sql::detach(second.handle).sqlcode(), 0);
    EXPECT_TRUE(is_free(path_of("b")));
}

TEST_F(GuardedAttach, ADetachThatFailsKeepsIt) {
    const sql::Attachment made = attach(path_of("b"));
    {
        FaultyClient client;
        client.fail(ClientCall::detach_database);
        EXPECT_NE(sql::detach(made.handle).sqlcode(), 0);
    }
    EXPECT_FALSE(is_free(path_of("b")));
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), 0);
}

TEST_F(GuardedAttach, AnAttachThatFailsKeepsNothing) {
    FaultyClient client;
    for (const ClientCall call : {ClientCall::attach_database, ClientCall::database_info}) {
        client.fail(call);
        EXPECT_EQ(attach(path_of("b")).status.sqlcode(), -902);
        EXPECT_TRUE(is_free(path_of("b"))) << name_of(call);
    }
    EXPECT_EQ(client.count(ClientCall::detach_database), 1);
}

TEST_F(GuardedAttach, ARefusalIsAnAttachThatFails) {
    WorkerProcess holder = worker();
    ASSERT_TRUE(opens(holder, path_of("b")));
    clear_log();
    FaultyClient client;
    zmFBConn object(path_of("b"), sysdba);
    EXPECT_FALSE(object.isconnected());
    EXPECT_EQ(client.count(ClientCall::attach_database), 0) << "the engine was not asked";
    ASSERT_EQ(log_lines().size(), 1U);
    EXPECT_EQ(log_lines()[0].level, 0);
    EXPECT_EQ(log_lines()[0].text, "[ERROR] SQLCODE=-902 (" + FaultyClient::io_error_text() + ")");
    const std::string problem = run_script(path_of("b"), sysdba, "", "create table U (A integer);").message();
    EXPECT_NE(problem.find("process " + std::to_string(holder.pid())), std::string::npos) << problem;
    EXPECT_EQ(problem, last_engine_message());
}

TEST_F(GuardedAttach, BlanksAroundANameDoNotCount) {
    WorkerProcess holder = worker();
    ASSERT_TRUE(opens(holder, path_of("b")));
    FaultyClient client;
    EXPECT_EQ(attach("  " + path_of("b") + " ").status.sqlcode(), -902);
    EXPECT_EQ(client.count(ClientCall::attach_database), 0) << "the engine was not asked";
    const sql::Attachment made = attach(" " + path_of("a") + "  ");
    EXPECT_EQ(made.status.sqlcode(), 0);
    (void)sql::detach(made.handle);
}

TEST_F(GuardedAttach, APathTooLongForTheEngineToTellIsHeldToo) {
    const std::string deep = file(std::string(200, 'd'));
    fs::create_directories(deep + "/" + std::string(100, 'e'));
    const std::string path = deep + "/" + std::string(100, 'e') + "/long.fdb";
    fs::copy_file(path_of("b"), path);
    const sql::Attachment made = attach(path);
    ASSERT_EQ(made.status.sqlcode(), 0) << last_engine_message();
    EXPECT_FALSE(is_free(path));
    EXPECT_EQ(sql::detach(made.handle).sqlcode(), 0);
}

// By the time that the file behind an alias is known, the engine has opened it.
TEST_F(GuardedAttach, AnAliasIsHeldAsTheFileBehindIt) {
    WorkerProcess holder(own_environment("engine", {}, "shop = " + path_of("b") + "\n"));
    ASSERT_TRUE(opens(holder, "shop")) << engine_message(holder);
    EXPECT_FALSE(is_free(path_of("b")));
    WorkerProcess other(own_environment("other", {}, "shop = " + path_of("b") + "\n"));
    EXPECT_FALSE(opens(other, "shop"));
    EXPECT_NE(engine_message(other).find("process " + std::to_string(holder.pid()) + " (zmfb_worker, "),
              std::string::npos)
        << engine_message(other);
    insert_rows({&holder});
    holder.kill();
    expect_nothing_lost();
}

TEST_F(GuardedAttach, ADescriptorThatWasClosedIsOpenOnTheNullDeviceBeforeTheEngineComes) {
    std::vector<std::string> words{"sh", "-c", "exec \"$@\" 2>&-", "sh"};
    for (const std::string& word : clean(cache())) words.push_back(word);
    WorkerProcess process(words);
    ASSERT_TRUE(opens(process, path_of("b")));
    EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(process.pid()) + "/fd/2"), "/dev/null");
}

// An engine that may not open a file leaves it to the server of the host, where there is one.
TEST_F(GuardedAttach, AFileThatTheServerOpensNeedsNoGuard) {
    if (const std::string why = why_no_other_user(); !why.empty()) GTEST_SKIP() << why;
    const std::string port = std::to_string(Server::shared().port());
    ::chmod(path_of("b").c_str(), 0600);
    std::vector<std::string> words = as_user(4711);
    for (const std::string& word : own_environment("engine", {"RemoteServicePort = " + port}, ""))
        words.push_back(word);
    ASSERT_EQ(::chown(file("engine/lock").c_str(), 4711, 4711), 0);
    WorkerProcess user(words);
    EXPECT_TRUE(user.call("attach", path_of("b"), sysdba, sysdba_password, "").logical())
        << engine_message(user);
    EXPECT_EQ(show(user.call("executeupdate", insert)), "\"\"");
}

}  // namespace
}  // namespace zmfb::test
