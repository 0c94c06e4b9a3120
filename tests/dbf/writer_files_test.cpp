// When files appear under their names, and what is left when one cannot be written or the process is killed.
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "dbf/memo_writer.h"
#include "dbf/new_file.h"
#include "written.h"

namespace {

// Which rename from now on does not happen, from 1 on, and why: 0 kills the process, else the system's
// error.
int renames_until = 0;
int rename_error = 0;

}  // namespace

// The library's renames come here.
extern "C" int rename(const char* from, const char* to) noexcept {
    if (renames_until > 0 && --renames_until == 0) {
        if (rename_error == 0) ::kill(::getpid(), SIGKILL);
        errno = rename_error;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

namespace zmfb::dbf_test {
namespace {

using dbf::Format;
using dbf::NewField;
using dbf::WriteOptions;
using dbf::Writer;

const std::vector<NewField> with_memo{{"CODE", 'N', 5}, {"NOTE", 'M'}};

// Writes a table with a memo, which says who wrote it, or without.
void write(const std::string& path, const std::string& who, bool memo = true, WriteOptions options = {}) {
    Writer writer(path, memo ? with_memo : std::vector<NewField>{{"WHO", 'C', 10}}, std::move(options));
    if (memo) writer.number(0, 1);
    writer.text(memo ? 1 : 0, who);
    writer.append();
    writer.finish();
}

class DbfFiles : public ::testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder_.file("t.dbf"); }
    [[nodiscard]] Lines content() const { return read_back(path()); }
    // Names without those that nothing but the writer has.
    [[nodiscard]] std::set<std::string> names() const {
        std::set<std::string> all = folder_.names();
        std::erase_if(all, [](const std::string& name) { return name.starts_with(".zmfb-"); });
        return all;
    }
    void TearDown() override { renames_until = 0; }

    Folder folder_;
    const Lines old_{"1|memo \"old\""};
    const Lines new_{"1|memo \"new\""};
};

TEST_F(DbfFiles, AppearWhenTheyAreFinished) {
    write(path(), "old");
    {
        Writer writer(path(), with_memo);
        writer.text(1, "new");
        writer.append();
        EXPECT_EQ(content(), old_);
    }
    EXPECT_EQ(content(), old_);
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf", "t.dbt"}));
    write(path(), "new");
    EXPECT_EQ(content(), new_);
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf", "t.dbt"}));
}

TEST_F(DbfFiles, KeepThePermissionsOfWhatWasThere) {
    write(path(), "old");
    fs::permissions(path(), fs::perms::owner_read | fs::perms::owner_write);
    write(path(), "new");
    EXPECT_EQ(fs::status(path()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(DbfFiles, InCapitalsHaveOthersInCapitalsBesideThem) {
    write(folder_.file("T.DBF"), "ö", true, {.code_page = "UTF-8"});
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"T.CPG", "T.DBF", "T.DBT"}));
    EXPECT_EQ(read_back(folder_.file("T.DBF")), (Lines{"1|memo \"ö\""}));
    // Those of another table are not taken for its own.
    write(folder_.file("T.dbf"), "of another");
    EXPECT_EQ(read_back(folder_.file("T.DBF")), (Lines{"1|memo \"ö\""}));
    EXPECT_EQ(read_back(folder_.file("T.dbf")), (Lines{"1|memo \"of another\""}));
}

TEST_F(DbfFiles, OfATableThatIsReplacedGoWithIt) {
    write(path(), "öld", true, {.format = Format::foxpro, .code_page = "UTF-8"});
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.cpg", "t.dbf", "t.fpt"}));
    write(path(), "new", true, {.code_page = "CP850"});
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf", "t.dbt"}));
    write(path(), "new", false);
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf"}));
}

TEST_F(DbfFiles, OfNoTableStayUnlessTheyWouldNameItsCodePage) {
    write_bytes(folder_.file("t.fpt"), "somebody's");
    write_bytes(folder_.file("t.cpg"), "UTF-8");
    write(path(), "new", false);
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf", "t.fpt"}));
}

// Does something in another process; its status, or 128 and the signal that ended it.
int in_child(const std::function<void()>& what) {
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            what();
        } catch (const fs::filesystem_error& error) {
            ::_exit(error.code().value());
        }
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// A table that is replaced, and how many renames that takes.
struct Replacing {
    std::string what;
    WriteOptions before;
    bool memo_before;
    WriteOptions after;
    bool memo_after;
    int renames;
};

const Replacing replacings[] = {
    {"without memos", {}, false, {}, false, 1},
    {"with memos", {}, true, {}, true, 4},
    {"with memos of another format", {}, true, {.format = Format::foxpro}, true, 5},
    {"with memos by one without", {}, true, {}, false, 3},
    {"without memos by one with", {}, false, {}, true, 4},
    {"with a code page beside it", {.code_page = "UTF-8"}, true, {.code_page = "KOI8-R"}, true, 6},
};

// A text that differs in the two code pages, so that another's .cpg file would be found out.
std::string read_in_its_code_page(const std::string& path) {
    const auto file = dbf::open_file(path);
    dbf::Header header = dbf::read_header(*file);
    const std::string page = dbf::code_page(path, header);
    const Lines lines = read_back(path);
    if (lines.size() != 1) return "not one record";
    return page.empty() ? lines[0] : dbf::ToUtf8(page).convert(lines[0]).value_or("not of " + page);
}

TEST_F(DbfFiles, ThatDoNotBelongTogetherAreNeverLeftByAKill) {
    for (const Replacing& one : replacings) {
        const std::string before = one.memo_before ? "1|memo \"old Д\"" : "\"old Д\"";
        const std::string after = one.memo_after ? "1|memo \"new Д\"" : "\"new Д\"";
        for (int killed_at = 1; killed_at <= one.renames + 1; ++killed_at) {
            SCOPED_TRACE(one.what + ", killed at rename " + std::to_string(killed_at));
            const Folder folder;
            const std::string path = folder.file("t.dbf");
            write(path, "old Д", one.memo_before, one.before);
            const int status = in_child([&] {
                renames_until = killed_at;
                write(path, "new Д", one.memo_after, one.after);
            });
            EXPECT_EQ(status, killed_at <= one.renames ? 128 + SIGKILL : 0);
            const bool is_between = killed_at > 1 && killed_at <= one.renames;
            EXPECT_EQ(fs::exists(path), !is_between);
            if (!is_between) {
                EXPECT_EQ(read_in_its_code_page(path), killed_at == 1 ? before : after);
            } else {
                EXPECT_EQ(folder.names().count(".zmfb-old-t.dbf"), 1U);
            }
            write(path, "new Д", one.memo_after, one.after);
            EXPECT_EQ(read_in_its_code_page(path), after);
            for (const std::string& name : folder.names())
                EXPECT_FALSE(name.starts_with(".zmfb-old")) << name;
        }
    }
}

TEST_F(DbfFiles, AreAllAsTheyWereWhenOneCannotTakeItsName) {
    for (const Replacing& one : replacings) {
        for (int fails_at = 1; fails_at <= one.renames; ++fails_at) {
            SCOPED_TRACE(one.what + ", failing at rename " + std::to_string(fails_at));
            const Folder folder;
            const std::string path = folder.file("t.dbf");
            write(path, "old Д", one.memo_before, one.before);
            const std::set<std::string> names = folder.names();
            const std::string before = read_in_its_code_page(path);
            renames_until = fails_at;
            rename_error = EPERM;
            EXPECT_THROW(write(path, "new Д", one.memo_after, one.after), fs::filesystem_error);
            rename_error = 0;
            EXPECT_EQ(folder.names(), names);
            EXPECT_EQ(read_in_its_code_page(path), before);
        }
    }
}

// Sizes at which the table, its memos, or the name of its code page find no room.
TEST_F(DbfFiles, StayAsTheyWereOnAFullDisk) {
    const bool is_root = ::geteuid() == 0;
    if (!is_root) GTEST_SKIP() << "only root can make a small file system";
    write(path(), "old");
    const std::string old_table = bytes_of(path());
    const std::string old_memos = bytes_of(folder_.file("t.dbt"));
    const std::string disk = folder_.file("disk");
    fs::create_directory(disk);
    std::set<int> statuses;
    for (const int pages : {4, 5, 20, 70, 100, 200, 300, 400}) {
        SCOPED_TRACE(pages);
        const int status = in_child([&] {
            if (::unshare(CLONE_NEWNS) != 0 ||
                ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
                ::_exit(200);
            const std::string size = "size=" + std::to_string(pages * 4) + "k";
            if (::mount("none", disk.c_str(), "tmpfs", 0, size.c_str()) != 0) ::_exit(200);
            write_bytes(disk + "/t.dbf", old_table);
            write_bytes(disk + "/t.dbt", old_memos);
            int error = 0;
            try {
                Writer writer(disk + "/t.dbf", with_memo, {.code_page = "UTF-8"});
                for (int i = 0; i < 1000; ++i) {
                    writer.text(1, std::string(498, 'x') + "ö");
                    writer.append();
                }
                writer.finish();
            } catch (const fs::filesystem_error& problem) {
                error = problem.code().value();
            }
            const auto files = std::distance(fs::directory_iterator(disk), {});
            const bool is_old = bytes_of(disk + "/t.dbf") == old_table &&
                                bytes_of(disk + "/t.dbt") == old_memos && files == 2;
            const bool is_new = read_back(disk + "/t.dbf").size() == 1000 && files == 3;
            ::_exit(error != 0 ? (is_old ? error : 201) : is_new ? 0 : 202);
        });
        ASSERT_NE(status, 200) << "no small file system";
        statuses.insert(status);
    }
    EXPECT_EQ(statuses, (std::set<int>{0, ENOSPC}));
}

TEST_F(DbfFiles, StayAsTheyWereInAFolderThatMayNotBeWrittenTo) {
    write(path(), "old");
    fs::permissions(folder_.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const int status = in_child([&] {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 && ::chown(folder_.path().c_str(), nobody, nobody) == 0 && ::setuid(nobody) != 0)
            ::_exit(200);
        write(path(), "new");
    });
    EXPECT_EQ(status, EACCES);
    EXPECT_EQ(content(), old_);
}

TEST_F(DbfFiles, ThatAreNoneOrNowhereAreRefusedByName) {
    struct Case {
        std::string path;
        int error;
    };
    fs::create_directory(folder_.file("folder.dbf"));
    ASSERT_EQ(::mkfifo(folder_.file("pipe.dbf").c_str(), 0600), 0);
    for (const Case& c : {Case{folder_.file("folder.dbf"), EISDIR}, Case{folder_.file("pipe.dbf"), EINVAL},
                          Case{folder_.file("none/t.dbf"), ENOENT}}) {
        try {
            write(c.path, "new");
            ADD_FAILURE() << c.path << " was written";
        } catch (const fs::filesystem_error& error) {
            EXPECT_EQ(error.code().value(), c.error) << c.path;
            EXPECT_EQ(error.path1(), c.path);
        }
    }
}

TEST_F(DbfFiles, ThatWereBegunAreRemovedAndLinksOfSuchNamesAreNoneOfThem) {
    const std::string begun = ".zmfb-0123456789abcdef", link = ".zmfb-fedcba9876543210";
    std::ofstream(folder_.file(begun)) << "begun";
    fs::create_symlink(folder_.file("elsewhere"), folder_.file(link));
    EXPECT_EQ(dbf::remove_unfinished(folder_.path()), 1U);
    EXPECT_EQ(folder_.names(), std::set<std::string>{link});
}

TEST_F(DbfFiles, OfMemosDoNotBecomeLargerThanProgramsRead) {
    for (const dbf::Dialect dialect : {dbf::Dialect::dbase3, dbf::Dialect::foxpro2}) {
        const std::string ending = dialect == dbf::Dialect::dbase3 ? ".dbt" : ".fpt";
        dbf::MemoWriter memos(folder_.file("t" + ending), dialect, 1536);
        EXPECT_EQ(memos.add(dbf::MemoKind::text, std::string(502, 'x')),
                  dialect == dbf::Dialect::dbase3 ? 1U : 8U);
        EXPECT_THROW(memos.add(dbf::MemoKind::text, std::string(600, 'x')), dbf::Refused);
        EXPECT_EQ(memos.add(dbf::MemoKind::text, std::string(502, 'y')),
                  dialect == dbf::Dialect::dbase3 ? 2U : 16U);
        EXPECT_THROW(memos.add(dbf::MemoKind::text, ""), dbf::Refused);
    }
}

}  // namespace
}  // namespace zmfb::dbf_test
