// Exports that fail: what is said, and what is left.
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class ExportFailure : public Tool {
  protected:
    ExportFailure() : path(database()), folder_out(file("out")) { fs::create_directory(folder_out); }
    Finished call(const std::string& line) const { return on(path, {"call", line}); }
    Finished export_to_folder(const std::string& table) const {
        return on(path, {"export", table, "--yes", "-o", folder_out});
    }
    std::string path;
    std::string folder_out;
};

TEST_F(ExportFailure, ATableOfTheDriversColumnsAloneIsRefused) {
    exec(path, "create table lone (recno double precision)");
    const Finished run = export_to_folder("lone");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: lone has no columns of its own\n");
}

TEST_F(ExportFailure, ANameWithASlashIsNoFileInAnotherFolder) {
    exec(path, "create table \"../A\" (name char(5))");
    write_file("out/../a.dbf", "something dear");
    fs::create_directory(file("out/sub"));
    const Finished run = on(path, {"export", "../a", "--yes", "-o", file("out/sub")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: \"../A\" cannot be exported\n  \"../A\": the driver knows only names of A to Z, "
              "digits, _ and $\n");
    EXPECT_EQ(read_file(file("a.dbf")), "something dear");
    EXPECT_TRUE(fs::is_empty(file("out/sub")));
    EXPECT_FALSE(fs::exists(file("out/a.dbf")));
}

TEST_F(ExportFailure, AFolderThatTakesNoFilesIsSaid) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    const Finished run = on(path, {"export", "shop", "-o", "/proc"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot write into /proc\n");
}

TEST_F(ExportFailure, AFolderOfTheFilesNameStays) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    fs::create_directory(folder_out + "/shop.dbf");
    const Finished run = export_to_folder("shop");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot write " + folder_out + "/shop.dbf: Is a directory\n");
    EXPECT_TRUE(fs::is_directory(folder_out + "/shop.dbf"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_out), {}), 1);
}

TEST_F(ExportFailure, AFullDiskLeavesTheFileThatWasThere) {
    // The engine's file fits, the DBF file with its header of 673 bytes does not.
    std::string columns;
    for (char c = 'A'; c < 'A' + 20; ++c)
        columns += std::string(columns.empty() ? "" : ", ") + "{'F" + c + "', 'C', 20, 0}";
    call("createtable('MANY', {" + columns + "})");
    constexpr int rows = 12000;
    constexpr int data_size = rows * 401;
    constexpr int much_less = data_size - 200 * 1024;
    exec(path, "insert into many (fa) select first " + std::to_string(rows) +
                   " 'x' from rdb$fields a cross join rdb$fields b");
    ASSERT_LT(fs::file_size(file("test.fdb")), static_cast<std::uintmax_t>(much_less));
    write_file("out/many.dbf", "something dear");
    const Finished run = zmfb_after("ulimit -f " + std::to_string((data_size + 511) / 512),
                                    {"--db", path, "export", "many", "--yes", "-o", folder_out});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with(
        "raised: Write error: many.dbf\nerror: many was not exported\n  data file /tmp/zmrdd"))
        << run.err;
    EXPECT_EQ(read_file(file("out/many.dbf")), "something dear");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_out), {}), 1);
    EXPECT_EQ(call("istable('EXT_MANY')").out, ".F.\n");
    if (on_server()) return;  // whose files are not those of the tool
    const Finished sooner = zmfb_after("ulimit -f " + std::to_string(much_less / 512),
                                       {"--db", path, "export", "many", "--yes", "-o", folder_out});
    EXPECT_EQ(sooner.status, 1);
    EXPECT_NE(sooner.err.find("error: many was not exported\n  I/O error during"), std::string::npos)
        << sooner.err;
    EXPECT_NE(sooner.err.find("hint: a limit of this process or of the disk keeps files from growing"),
              std::string::npos)
        << sooner.err;
    EXPECT_EQ(read_file(file("out/many.dbf")), "something dear");
}

// Words: two folders and a command, which gets a /tmp of 64 KB. The folders are there for it even below /tmp.
constexpr const char* with_small_tmp = R"(
    small=$0/small
    mkdir "$small"
    mount -t tmpfs -o size=64k none "$small"
    for folder in "$0" "$1"; do
        case $folder in
            /tmp/*)
                mkdir -p "$small${folder#/tmp}"
                mount --bind "$folder" "$small${folder#/tmp}" ;;
        esac
    done
    mount --rbind "$small" /tmp
    shift
    exec "$@")";

TEST_F(ExportFailure, ADataFileWhoseEndFoundNoRoomIsNoExport) {
    if (on_server()) GTEST_SKIP() << "the server's /tmp is not that of the tool";
    if (run({"unshare", "-m", "mount", "-t", "tmpfs", "none", "/tmp"}).status != 0)
        GTEST_SKIP() << "only root can give a process a small /tmp of its own";
    // The engine keeps what no longer fits, the half of the last record, to itself.
    call("createtable('CUT', {{'A', 'C', 1000, 0}})");
    exec(path, "insert into cut (a) select first 66 rpad('', 1000, 'x') from rdb$fields");
    const std::string here = process_folder();
    const std::string build_folder = fs::path(ZMFB_TOOL).parent_path().parent_path();
    const Finished run = test::run({"unshare",
                                    "-m",
                                    "sh",
                                    "-ec",
                                    with_small_tmp,
                                    here,
                                    build_folder,
                                    "env",
                                    "-u",
                                    "FIREBIRD",
                                    "-u",
                                    "FIREBIRD_LOCK",
                                    "XDG_CACHE_HOME=" + here + "/cache",
                                    ZMFB_TOOL,
                                    "--db",
                                    path,
                                    "export",
                                    "cut",
                                    "-o",
                                    folder_out});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("raised: Read error, line 66 is not as long as a record: /tmp/zmrdd"))
        << run.err;
    EXPECT_NE(run.err.find("\nerror: cut was not exported\n"), std::string::npos) << run.err;
    EXPECT_TRUE(fs::is_empty(folder_out));
}

TEST_F(ExportFailure, SaysWhyTheEngineRefused) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    forbid(path, "create table");
    const Finished run = export_to_folder("shop");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("error: shop was not exported\n"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("  not in this database\n  data file /tmp/zmrdd"), std::string::npos) << run.err;
    EXPECT_TRUE(fs::is_empty(folder_out));
}

TEST_F(ExportFailure, AFileWithOtherRecordsThanTheTableHasRowsIsRemoved) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    exec(path,
         "create trigger fills on transaction commit as begin execute statement "
         "'insert into shop (name) select ''late'' from rdb$database where exists "
         "(select 1 from rdb$relations where rdb$relation_name = ''EXT_SHOP'')'; when any do begin end end");
    const Finished run = export_to_folder("shop");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: shop was not exported: the file has ")) << run.err;
    EXPECT_TRUE(fs::is_empty(folder_out));
}

TEST_F(ExportFailure, APathThatIsNoUtf8IsWhollyTolerated) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    const std::string odd = folder_out + "/caf\xE9";
    fs::create_directory(odd);
    const Finished exported = on(path, {"--json", "export", "customers", "-o", odd});
    EXPECT_EQ(exported.status, 0) << exported.err;
    EXPECT_NE(exported.out.find("caf\xEF\xBF\xBD/customers.dbf\""), std::string::npos) << exported.out;
    const Finished imported =
        on(path, {"--json", "import", odd + "/customers.dbf", "--drop-existing", "--yes"});
    EXPECT_EQ(imported.status, 0) << imported.err;
    EXPECT_NE(imported.out.find("caf\xEF\xBF\xBD/customers.dbf\""), std::string::npos) << imported.out;
}

}  // namespace
}  // namespace zmfb::test
