// Exports that fail: what is said, and what is left.
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class ExportFailure : public ExportFolder {
  protected:
    void make_shop() const { call("createtable('SHOP', {{'NAME', 'C', 10, 0}})"); }
};

TEST_F(ExportFailure, ANameWithASlashIsNoFileInAnotherFolder) {
    exec("create table \"../A\" (name char(5) not null)");
    exec("create table \".A\" (name char(5) not null)");
    write_file("out/../a.dbf", "something dear");
    for (const char* name : {"\"../A\"", "\".A\""}) {
        const Finished run = export_to_folder({name, "--yes"});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, std::string("error: ") + name +
                               " cannot be exported\n  its name is none for a file\n"
                               "hint: --query with --table names the file\n");
    }
    EXPECT_EQ(read_file(file("a.dbf")), "something dear");
    EXPECT_TRUE(written().empty());
    EXPECT_EQ(export_to_folder({"--query", "select * from \"../A\"", "--table", "a"}).status, 0);
}

TEST_F(ExportFailure, AFolderThatTakesNoFilesIsSaid) {
    make_shop();
    const Finished run = on(path, {"export", "shop", "-o", "/proc"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: cannot write /proc/shop.dbf: ")) << run.err;
}

TEST_F(ExportFailure, AFolderOfTheFilesNameStays) {
    make_shop();
    fs::create_directory(folder_out + "/shop.dbf");
    const Finished run = export_to_folder({"shop", "--yes"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot write " + folder_out + "/shop.dbf: Is a directory\n");
    EXPECT_EQ(written(), std::vector<std::string>{"shop.dbf"});
}

TEST_F(ExportFailure, ADiskWithoutRoomLeavesTheFileThatWasThere) {
    constexpr std::uintmax_t limit = std::uintmax_t{8} << 20;
    ASSERT_LT(fs::file_size(file("test.fdb")), limit);
    write_file("out/many.dbf", "something dear");
    const Finished run = zmfb_after(
        "ulimit -f " + std::to_string(limit / 512),
        {"--db", path, "export", "--query",
         "select first 50000 cast('x' as char(200)) as text from rdb$fields a cross join rdb$fields b "
         "cross join rdb$fields c",
         "--table", "many", "--yes", "-o", folder_out});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot write " + folder_out + "/many.dbf: File too large\n");
    EXPECT_EQ(read_file(folder_out + "/many.dbf"), "something dear");
    EXPECT_EQ(written(), std::vector<std::string>{"many.dbf"});
}

TEST_F(ExportFailure, ARowThatTheEngineCannotGiveLeavesNoFile) {
    make_shop();
    exec("insert into shop (name) values ('1')");
    exec("insert into shop (name) values ('x')");
    exec("create view numbers as select cast(name as integer) as number, name from shop");
    const Finished run = export_to_folder({"numbers"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: NUMBERS was not exported\n  conversion error from string \"x"))
        << run.err;
    EXPECT_TRUE(written().empty());
}

TEST_F(ExportFailure, AUserWhoMayOnlyReadTheTableCanExportIt) {
    if (on_server()) GTEST_SKIP() << "only the embedded engine takes any user name";
    make_shop();
    exec("insert into shop (name) values ('Ana')");
    const Finished refused = zmfb({"--db", path, "--user", "anna", "export", "shop", "-o", folder_out});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("no permission for SELECT access to TABLE SHOP\n"), std::string::npos)
        << refused.err;
    exec("grant select on shop to anna");
    const Finished run = zmfb({"--db", path, "--user", "anna", "export", "shop", "-o", folder_out});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(dbf_files(), std::vector<std::string>{"shop.dbf"});
}

TEST_F(ExportFailure, ADatabaseWithoutTheDriversFunctionsCanBeExported) {
    exec("create table plain (name char(5) not null)");
    exec("drop function zmblobsubstr");
    const Finished run = export_to_folder({"plain"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
}

// An engine that was killed can stumble over the number of the next table that is made.
TEST_F(ExportFailure, AnExportTakesNoNumberOfATable) {
    make_shop();
    const std::vector<std::string> next{"query", "select rdb$relation_id from rdb$database"};
    const std::string before = on(path, next).out;
    EXPECT_EQ(export_to_folder({"--all", "--manifest", folder_out + "/list.json"}).status, 0);
    EXPECT_EQ(on(path, next).out, before);
    exec("create table more (name char(5))");
    EXPECT_NE(on(path, next).out, before);
}

TEST_F(ExportFailure, APathThatIsNoUtf8IsWhollyTolerated) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    const std::string odd = folder_out + "/caf\xE9";
    fs::create_directory(odd);
    const Finished exported =
        on(path, {"--json", "export", "customers", "-o", odd, "--manifest", odd + "/list.json"});
    EXPECT_EQ(exported.status, 0) << exported.err;
    EXPECT_NE(exported.out.find("caf\xEF\xBF\xBD/customers.dbf\""), std::string::npos) << exported.out;
    const Finished imported =
        on(path, {"--json", "import", odd + "/customers.dbf", "--drop-existing", "--yes"});
    EXPECT_EQ(imported.status, 0) << imported.err;
    EXPECT_NE(imported.out.find("caf\xEF\xBF\xBD/customers.dbf\""), std::string::npos) << imported.out;
}

}  // namespace
}  // namespace zmfb::test
