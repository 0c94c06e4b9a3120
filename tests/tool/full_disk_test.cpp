// Imports into a database on a file system that becomes full: what is said is what is there.
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

// Goes through an import on a small file system that nobody else sees, and through another when there is
// room again. Prints each step with its status and what it said.
constexpr const char* script = R"(
mount -t tmpfs -o size=${2}k none "$1/disk" || exit 77
cp "$1/empty.fdb" "$1/disk/test.fdb"
step() { echo "== $1"; shift; "$@" > "$out" 2>&1; echo "status $?"; cat "$out"; }
out=$1/out
dbf=$1/big.dbf
tool=$3
export ZMFB_DB=$1/disk/test.fdb
ulimit -t 60
step import "$tool" import "$dbf"
mount -o remount,size=200m "$1/disk"
step tables "$tool" tables
step again "$tool" import "$1/small/big.dbf"
step count "$tool" query --mode csv 'select count(*) from big'
)";

constexpr int record_size = 77;

class FullDisk : public Tool, public ::testing::WithParamInterface<int> {
  protected:
    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
        if (run({"unshare", "-m", "mount", "-t", "tmpfs", "none", "/mnt"}).status != 0)
            GTEST_SKIP() << "only root can make a small file system";
        std::filesystem::rename(database(), file("empty.fdb"));
        std::filesystem::create_directory(file("disk"));
        std::filesystem::create_directory(file("small"));
        // A row takes more room in the database than a record in the file.
        write_dbf("big.dbf", GetParam() * 1024 / record_size);
        write_dbf("small/big.dbf", 2);
    }
    void write_dbf(const std::string& name, int records) const {
        DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60).field("BORN", 'D', 8);
        for (int i = 0; i < records; ++i) dbf.record({std::to_string(i), "name", "20070301"});
        dbf.write(file(name));
    }
    [[nodiscard]] std::string steps(int size) const {
        const Finished all = run({"unshare", "-m", "env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK",
                                  "XDG_CACHE_HOME=" + (process_folder() / "cache").string(), "bash", "-c",
                                  script, "bash", folder().string(), std::to_string(size), ZMFB_TOOL});
        EXPECT_EQ(all.status, 0) << all.err;
        return all.out;
    }
};

// What a step said, its status first.
std::string step_of(const std::string& steps, const std::string& name) {
    const std::string head = "== " + name + "\n";
    const std::size_t start = steps.find(head);
    if (start == std::string::npos) return "there was no step " + name;
    return steps.substr(start + head.size(), steps.find("\n== ", start) - start - head.size());
}

TEST_P(FullDisk, AnImportSaysWhyItFailedAndRemovesWhatItMade) {
    const std::string all = steps(GetParam());
    const std::string imported = step_of(all, "import");
    EXPECT_TRUE(imported.starts_with("status 1\n")) << imported;
    EXPECT_NE(imported.find("error: " + file("big.dbf") + " was not imported\n"), std::string::npos)
        << imported;
    EXPECT_NE(imported.find("No space left on device"), std::string::npos) << imported;
    EXPECT_EQ(step_of(all, "tables").find("BIG"), std::string::npos) << all;
    EXPECT_TRUE(step_of(all, "again").starts_with("status 0\n")) << all;
    EXPECT_EQ(step_of(all, "count"), "status 0\nCOUNT\r\n2\r\n") << all;
}

// The engine writes to files that it has mapped, which ends the process where they cannot be kept.
class FullLockFolder : public Tool {
  protected:
    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
        if (run({"unshare", "-m", "mount", "-t", "tmpfs", "none", "/mnt"}).status != 0)
            GTEST_SKIP() << "only root can make a small file system";
    }
    // A command where the engine has so many KB for its locks.
    [[nodiscard]] std::vector<std::string> with_room(int size, const std::vector<std::string>& words) const {
        const std::string mount = "mount -t tmpfs -o mode=700,size=" + std::to_string(size) + "k none ";
        std::vector<std::string> small{"unshare", "-m", "sh", "-c", mount + locks + "; exec \"$@\"", "sh"};
        for (const std::string& word : command(words)) small.push_back(word);
        return small;
    }
    const std::string path = database();
    const std::string locks = process_folder() / "cache/zmfbconn/lock";
};

TEST_F(FullLockFolder, IsToldAndWhatIsLargeEnoughWillDo) {
    const std::string said = "there is no room for the engine's lock files in " + locks +
                             ": No space left on device\nhint: make room on that disk: ";
    for (const int size : {4, 64, 128, 1024, 2048, 2900}) {
        const Finished tables = run(with_room(size, {"--db", path, "tables"}));
        EXPECT_EQ(tables.status, 3);
        EXPECT_NE(tables.err.find(said), std::string::npos) << size << tables.err;
        const Finished create = run(with_room(size, {"--db", file("new.fdb"), "create"}));
        EXPECT_NE(create.status, 0);
        EXPECT_NE(create.err.find(said), std::string::npos) << size << create.err;
        EXPECT_FALSE(std::filesystem::exists(file("new.fdb")));
    }
    const Finished tables = run(with_room(4096, {"--db", path, "tables"}));
    EXPECT_EQ(tables.status, 0) << tables.err;
}

TEST_F(FullLockFolder, ThatBecomesSoLaterIsInNobodysWay) {
    Dialogue talk(with_room(4096, {"--db", path, "shell"}));
    talk.expect_prompt("zmfb> ");
    const std::string there = "/proc/" + std::to_string(talk.pid()) + "/root" + locks;
    EXPECT_NE(run({"dd", "if=/dev/zero", "of=" + there + "/full", "bs=4k"}).status, 0);
    for (const char* statement :
         {"select count(*) from mon$attachments, mon$transactions, mon$statements;\n",
          "select count(*) from rdb$relations r left join rdb$relation_fields f on f.rdb$relation_name = "
          "r.rdb$relation_name left join rdb$fields on 1 = 0 left join rdb$triggers on 1 = 0 left join "
          "rdb$indices on 1 = 0 left join rdb$procedures on 1 = 0 left join rdb$generators on 1 = 0 left "
          "join "
          "rdb$user_privileges on 1 = 0 left join rdb$character_sets on 1 = 0;\n"}) {
        talk.type(statement);
        talk.expect("(1 row)");
        talk.expect_prompt("zmfb> ");
    }
    talk.type("create table t (a integer primary key);\n");
    talk.expect("done: create table");
    talk.expect_prompt("zmfb> ");
    talk.type(".quit\n");
    EXPECT_EQ(talk.end(), 0);
}

INSTANTIATE_TEST_SUITE_P(Tool, FullDisk, ::testing::Values(3000, 3500, 4096, 4500, 6144, 12288, 30720),
                         [](const auto& info) { return std::to_string(info.param) + "k"; });

}  // namespace
}  // namespace zmfb::test
