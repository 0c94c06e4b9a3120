// What we create: under which names, with which permissions, and never through a link of somebody else.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "host/workarea.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

constexpr uid_t somebody_else = 12345;

unsigned mode_of(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

// While it lives new files get all the permissions that they are made with, less `mask`.
class Umask {
  public:
    explicit Umask(mode_t mask) : before_(::umask(mask)) {}
    ~Umask() { ::umask(before_); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

  private:
    mode_t before_;
};

class CreatedFiles : public Runtime {
  protected:
    CreatedFiles() {
        DbfBuilder().field("NAME", 'C', 6).record({"Ana"}).write(file("people.dbf"));
        object_.call("setfullpathdatfile", data());
    }
    [[nodiscard]] std::string data() const { return file("data.dat"); }
    bool bring() { return object_.call("bringdbf", file("people.dbf")).logical(); }

    zmFBConn object_;
};

TEST_F(CreatedFiles, TheDataFileHasANameThatNobodyCanForesee) {
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i) {
        object_.call("setfullpathdatfile");
        const std::string path = object_.call("getfullpathdatfile").string();
        constexpr std::size_t random_letters = 16;
        EXPECT_TRUE(path.starts_with("/tmp/zmrdd") && path.ends_with(".dat")) << path;
        EXPECT_EQ(path.size(), std::string_view("/tmp/zmrdd.dat").size() + random_letters) << path;
        EXPECT_FALSE(fs::exists(fs::symlink_status(path)));
        names.insert(path);
    }
    EXPECT_EQ(names.size(), 100U);
}

TEST_F(CreatedFiles, TheDataFileIsNotWrittenThroughALinkOfAnotherUser) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a link of another user";
    write_file("precious", "precious");
    fs::create_symlink(file("precious"), data());
    ASSERT_EQ(::lchown(data().c_str(), somebody_else, somebody_else), 0);
    EXPECT_FALSE(bring());
    EXPECT_EQ(raised().size(), 1U);
    EXPECT_EQ(read_file(file("precious")), "precious");
    EXPECT_TRUE(fs::is_symlink(data()));
}

TEST_F(CreatedFiles, OnlyTheDataFileIsForEverybody) {
    {
        const Umask strict(077);
        EXPECT_TRUE(bring());
    }
    EXPECT_EQ(mode_of(data()), 0666U);
    const Umask strict(077);
    object_.call("extractmatrix", host::array_of("NONE"), file("matrix"));
    EXPECT_EQ(mode_of(file("matrix.tf")), 0600U);
    const host::Value columns = host::array_of(host::array_of("NAME", "C", 6, 0));
    EXPECT_TRUE(host::dbcreate(file("new.dbf"), columns, "DBFIDX").logical());
    EXPECT_EQ(mode_of(file("new.dbf")), 0600U);
}

// The tool with a cache folder of the test's own.
class EnvironmentFolder : public Tool {
  protected:
    EnvironmentFolder() { fs::create_directory(cache()); }
    [[nodiscard]] std::string cache() const { return file("cache"); }
    [[nodiscard]] std::string folder_in_use() const { return cache() + "/zmfbconn"; }

    Finished create() const {
        const Umask none(0);
        return zmfb({"--db", file("test.fdb"), "create"}, "",
                    {"XDG_CACHE_HOME=" + cache(), "TMPDIR=" + file("temporary")});
    }
    void attach() {
        const Finished made = create();
        EXPECT_EQ(made.status, 0) << made.err;
    }
    [[nodiscard]] bool is_in(const std::string& folder) const {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.path().filename() == "firebird.conf") return true;
        }
        return false;
    }
    // The engine would load plugins from there.
    void expect_another_place() {
        fs::create_directory(file("temporary"));
        attach();
        EXPECT_TRUE(is_in(file("temporary")));
        EXPECT_EQ(mode_of(file("temporary") + "/zmfbconn-" + std::to_string(::geteuid())), 0700U);
    }
};

TEST_F(EnvironmentFolder, IsForItsOwnerOnly) {
    attach();
    EXPECT_EQ(mode_of(folder_in_use()), 0700U);
    EXPECT_TRUE(is_in(folder_in_use()));
}

TEST_F(EnvironmentFolder, IsClosedToOthersWhenItWasOpen) {
    fs::create_directory(folder_in_use());
    fs::permissions(folder_in_use(), fs::perms(0777));
    attach();
    EXPECT_EQ(mode_of(folder_in_use()), 0700U);
}

TEST_F(EnvironmentFolder, OfAnotherUserIsNotUsed) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a folder of another user";
    fs::create_directory(folder_in_use());
    ASSERT_EQ(::lchown(folder_in_use().c_str(), somebody_else, somebody_else), 0);
    expect_another_place();
    EXPECT_TRUE(fs::is_empty(folder_in_use()));
}

TEST_F(EnvironmentFolder, ThatWasOpenAndHasSomethingInItIsNotUsed) {
    fs::create_directories(folder_in_use() + "/lock");
    fs::permissions(folder_in_use(), fs::perms(0777));
    expect_another_place();
    EXPECT_EQ(mode_of(folder_in_use()), 0777U) << "or it would be used the next time";
    EXPECT_TRUE(fs::is_empty(folder_in_use() + "/lock"));
}

TEST_F(EnvironmentFolder, WithSomethingOfAnotherUserInItIsRefused) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a file of another user";
    attach();
    std::vector<std::string> inside{folder_in_use() + "/lock"};
    for (const auto& entry : fs::directory_iterator(folder_in_use())) {
        if (!entry.path().filename().string().starts_with("firebird-")) continue;
        inside.push_back(entry.path());
        for (const auto& below : fs::recursive_directory_iterator(entry.path()))
            inside.push_back(below.path());
    }
    EXPECT_GT(inside.size(), 5U);
    fs::remove(file("test.fdb"));
    for (const std::string& path : inside) {
        SCOPED_TRACE(path);
        ASSERT_EQ(::lchown(path.c_str(), somebody_else, somebody_else), 0);
        const Finished refused = create();
        EXPECT_EQ(refused.status, 3);
        EXPECT_NE(refused.err.find("  " + path + " "), std::string::npos) << refused.err;
        EXPECT_NE(refused.err.find("; remove it\n"), std::string::npos) << refused.err;
        EXPECT_FALSE(fs::exists(file("test.fdb")));
        ASSERT_EQ(::lchown(path.c_str(), 0, 0), 0);
    }
    attach();
}

TEST_F(EnvironmentFolder, KeepsItsLocksInAFolderOfItsOwnAndNotBehindALink) {
    fs::create_directory(folder_in_use());
    fs::permissions(folder_in_use(), fs::perms(0700));
    fs::create_directory(file("elsewhere"));
    fs::create_symlink(file("elsewhere"), folder_in_use() + "/lock");
    EXPECT_EQ(create().status, 3);
    EXPECT_TRUE(fs::is_empty(file("elsewhere")));
    fs::remove(folder_in_use() + "/lock");
    attach();
    EXPECT_EQ(mode_of(folder_in_use() + "/lock"), 0700U);
}

// As root the engine gives lock files to its own account, whatever they lead to.
TEST_F(EnvironmentFolder, ALockFolderThatSomebodyLaidBesideTheDatabaseIsOfNoUse) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a link of another user";
    write_file("precious", "precious");
    for (const char* folder : {".zmfb-locks", "lock"}) {
        fs::create_directory(file(folder));
        fs::create_symlink(file("precious"), file(folder) + "/fb_init");
    }
    const unsigned before = mode_of(file("precious"));
    attach();
    struct stat status {};
    ASSERT_EQ(::stat(file("precious").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(mode_of(file("precious")), before);
}

TEST_F(EnvironmentFolder, IsNotLookedForBehindALink) {
    fs::create_directory(file("elsewhere"));
    fs::create_symlink(file("elsewhere"), folder_in_use());
    expect_another_place();
    EXPECT_TRUE(fs::is_empty(file("elsewhere")));
}

}  // namespace
}  // namespace zmfb::test
