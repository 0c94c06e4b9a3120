// Several processes with one embedded database open: wherever their engines keep the locks, no row that was
// acknowledged is lost, and who cannot be let in is told why.
#include <algorithm>

#include "tests/sql/people.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class LockFolders : public People {};

TEST_F(LockFolders, AProcessThatHadAnotherDatabaseOpenBeforeSharesTheNext) {
    {
        WorkerProcess first = worker();
        WorkerProcess second = worker();
        ASSERT_TRUE(opens(first, path_of("a")));
        ASSERT_TRUE(opens(first, path_of("b"))) << engine_message(first);
        ASSERT_TRUE(opens(second, path_of("b"))) << engine_message(second);
        insert_rows({&first, &second});
    }
    expect_nothing_lost();
}

TEST_F(LockFolders, AChildOfAProcessWithAnotherDatabaseOpenSharesItsOwn) {
    std::string calls;
    for (int round = 0; round < 1500; ++round) calls += std::string("executeupdate(\"") + insert + "\")\n";
    write_file("calls", calls);
    {
        WorkerProcess parent = worker();
        WorkerProcess other = worker();
        ASSERT_TRUE(opens(parent, path_of("a")));
        ASSERT_TRUE(opens(other, path_of("b")));
        parent.start("shell", std::string(ZMFB_TOOL) + " --db " + path_of("b") + " call - <" + file("calls") +
                                  " >" + file("answers"));
        insert_rows({&other});
        EXPECT_EQ(parent.finish().integer(), 0);
    }
    for (const std::string& answer : lines(read_file(file("answers")))) acknowledge(answer == "\"\"" ? 1 : 0);
    expect_nothing_lost();
}

TEST_F(LockFolders, AChildOfAnotherUserMakesAnEnvironmentOfItsOwn) {
    if (const std::string why = why_no_other_user(); !why.empty()) GTEST_SKIP() << why;
    open_to_everybody("b");
    WorkerProcess parent = worker();
    ASSERT_TRUE(opens(parent, path_of("a")));
    const std::string home = folder_of(4711, "home");
    const std::string look = "XDG_CACHE_HOME=" + home + " setpriv --reuid=4711 --regid=4711 --clear-groups " +
                             ZMFB_TOOL + " --db " + path_of("b") + " tables >/dev/null 2>" + file("said");
    EXPECT_EQ(parent.call("shell", look).integer(), 0) << read_file(file("said"));
    EXPECT_TRUE(fs::is_directory(home + "/zmfbconn/lock"));
    ASSERT_TRUE(opens(parent, path_of("b")));
    EXPECT_NE(parent.call("shell", look).integer(), 0);
    EXPECT_NE(read_file(file("said")).find("process " + std::to_string(parent.pid()) + " (zmfb_worker, "),
              std::string::npos)
        << read_file(file("said"));
}

TEST_F(LockFolders, AHardLinkInAnotherFolderIsTheSameDatabase) {
    const std::string link = file("a") + "/link.fdb";
    fs::create_hard_link(path_of("b"), link);
    {
        WorkerProcess first = worker();
        WorkerProcess second = worker();
        ASSERT_TRUE(opens(first, path_of("b")));
        ASSERT_TRUE(opens(second, link)) << engine_message(second);
        insert_rows({&first, &second});
    }
    expect_nothing_lost();
    {
        WorkerProcess first = worker();
        WorkerProcess stranger(clean(file("another-cache")));
        ASSERT_TRUE(opens(first, path_of("b")));
        EXPECT_FALSE(opens(stranger, link));
        EXPECT_NE(engine_message(stranger).find("process " + std::to_string(first.pid())), std::string::npos)
            << engine_message(stranger);
    }
}

// What may become of the lock folder while a process has a database open.
struct Fate {
    const char* name;
    void (*befall)(const fs::path& cache);
};

class LockFolderFates : public LockFolders, public ::testing::WithParamInterface<Fate> {};

TEST_P(LockFolderFates, TheNextProcessIsRefusedUntilTheFirstHasEnded) {
    {
        WorkerProcess first = worker();
        ASSERT_TRUE(opens(first, path_of("b")));
        GetParam().befall(cache());
        WorkerProcess second = worker();
        EXPECT_FALSE(opens(second, path_of("b")));
        EXPECT_NE(engine_message(second).find("process " + std::to_string(first.pid()) + " (zmfb_worker, "),
                  std::string::npos)
            << engine_message(second);
        insert_rows({&first});
        // The engine would make its files anew for the next database it opens.
        EXPECT_FALSE(opens(first, path_of("a")));
        EXPECT_NE(engine_message(first).find("moved, replaced or emptied while this program runs"),
                  std::string::npos)
            << engine_message(first);
    }
    WorkerProcess second = worker();
    EXPECT_TRUE(opens(second, path_of("b"))) << engine_message(second);
    second.kill();
    expect_nothing_lost();
}

INSTANTIATE_TEST_SUITE_P(
    Of, LockFolderFates,
    ::testing::Values(Fate{"MovedAway",
                           [](const fs::path& cache) {
                               fs::rename(cache / "zmfbconn" / "lock", cache / "elsewhere");
                           }},
                      Fate{"Replaced",
                           [](const fs::path& cache) {
                               fs::rename(cache / "zmfbconn", cache / "elsewhere");
                               fs::create_directory(cache / "zmfbconn");
                           }},
                      Fate{"Emptied",
                           [](const fs::path& cache) {
                               for (const auto& entry : fs::directory_iterator(cache / "zmfbconn" / "lock"))
                                   fs::remove(entry.path());
                           }},
                      Fate{"RemovedWithTheCache", [](const fs::path& cache) { fs::remove_all(cache); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(LockFolders, TwoUsersMayHaveADatabaseOneAfterTheOtherButNotAtOnce) {
    if (const std::string why = why_no_other_user(); !why.empty()) GTEST_SKIP() << why;
    open_to_everybody("b");
    {
        WorkerProcess first(clean_as(4711));
        WorkerProcess second(clean_as(4712));
        ASSERT_TRUE(opens(first, path_of("b"))) << engine_message(first);
        expect_refused(second, path_of("b"), first, "4711");
        insert_rows({&first});
        first.kill();
        ASSERT_TRUE(opens(second, path_of("b"))) << engine_message(second);
        insert_rows({&second});
    }
    expect_nothing_lost();
}

// Who owns the files below a folder, and what others may do with them.
std::vector<std::string> owners_in(const std::string& folder) {
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat status {};
        EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0);
        found.push_back(entry.path().string() + " " + std::to_string(status.st_uid) + ":" +
                        std::to_string(status.st_gid) + " " + std::to_string(status.st_mode & 07777U));
    }
    std::ranges::sort(found);
    return found;
}

TEST_F(LockFolders, RootWhoLooksAtAUsersDatabaseTakesNothingFromTheUser) {
    if (const std::string why = why_no_other_user(); !why.empty()) GTEST_SKIP() << why;
    const std::vector<std::string> user = clean_as(4711);
    const std::string home = folder_of(4711, "home");
    const std::string path = home + "/own.fdb";
    ASSERT_EQ(zmfb_by(user, {"--db", path, "create"}).err, "");
    const std::vector<std::string> before = owners_in(home);
    const std::vector<std::string> cache_before = owners_in(file("cache-4711"));
    EXPECT_EQ(people_zmfb({"--db", path, "doctor"}).status, 0);
    EXPECT_EQ(owners_in(home), before);
    EXPECT_EQ(owners_in(file("cache-4711")), cache_before);
    WorkerProcess owner(user);
    EXPECT_TRUE(opens(owner, path)) << engine_message(owner);
    const Finished refused = people_zmfb({"--db", path, "doctor"});
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.out.find("process " + std::to_string(owner.pid()) + " (zmfb_worker, user 4711) has "),
              std::string::npos)
        << refused.out;
    EXPECT_EQ(show(owner.call("executeupdate", "create table T (A integer)")), "\"\"");
}

// What follows a text in another, to the end of its line.
std::string line_from(const std::string& text, const std::string& start) {
    const std::size_t at = text.find(start);
    return at == std::string::npos ? "exit 99" : text.substr(at, text.find('\n', at) - at);
}

TEST_F(LockFolders, TheGfixLinesOfThePageAndOfTheDoctorWorkForAnOrdinaryUser) {
    std::vector<std::string> user = why_no_other_user().empty() ? clean_as(4711) : clean(cache());
    open_to_everybody("b");
    const Finished doctor = zmfb_by(user, {"--db", path_of("b"), "doctor"});
    fs::create_symlink(path_of("b"), file("b") + "/shop.fdb");
    const std::string page = read_file(ZMFB_RECOVERY_PAGE);
    const std::string script = "set -e; cd " + file("b") + "\n" + line_from(page, "export FIREBIRD_LOCK=") +
                               "\n" + line_from(page, "gfix -sweep ") + "\n" +
                               line_from(page, "gfix -v -full -n ") + "\nunset FIREBIRD_LOCK\n" +
                               line_from(doctor.out, "FIREBIRD_LOCK=");
    user.insert(user.end(), {"sh", "-c", script});
    const Finished looked = run(user);
    EXPECT_EQ(looked.status, 0);
    EXPECT_EQ(looked.out + looked.err, "") << script;
}

// They take no guard; but with the engine's own settings they want the file for themselves.
TEST_F(LockFolders, FirebirdsOwnProgramsAreKeptOutAsTheyAreInstalled) {
    fs::create_directory(file("lock"));
    const std::vector<std::string> backup{
        "env",  "-u",         "FIREBIRD",   "FIREBIRD_LOCK=" + file("lock"), "gbak", "-b", "-user",
        sysdba, path_of("b"), file("b.fbk")};
    EXPECT_EQ(run(backup).status, 0);
    WorkerProcess holder = worker();
    ASSERT_TRUE(opens(holder, path_of("b")));
    const Finished refused = run(backup);
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("incompatible with current"), std::string::npos) << refused.err;
}

// There the numbers of processes mean others.
TEST_F(LockFolders, AProcessInAContainerHasALockFolderOfItsOwn) {
    std::vector<std::string> words{"unshare", "--pid", "--fork", "--kill-child", "--mount-proc"};
    if (run({"unshare", "--pid", "--fork", "--mount-proc", "true"}).status != 0)
        GTEST_SKIP() << "processes cannot be put into a container here";
    for (const std::string& word : clean(cache())) words.push_back(word);
    WorkerProcess holder = worker();
    ASSERT_TRUE(opens(holder, path_of("b")));
    WorkerProcess contained(words);
    EXPECT_FALSE(opens(contained, path_of("b")));
    EXPECT_NE(engine_message(contained).find("process " + std::to_string(holder.pid()) + " has "),
              std::string::npos)
        << engine_message(contained);
}

}  // namespace
}  // namespace zmfb::test
