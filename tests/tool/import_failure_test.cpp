// Imports that fail in the middle: what is said, and what is left.
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class ImportFailure : public Tool {
  protected:
    ImportFailure() : path(database()) {}
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    /// The names of the tables, generators and triggers that users made.
    std::string objects() const {
        return on(path, {"query", "--mode", "csv",
                         "select rdb$relation_name from rdb$relations where rdb$system_flag = 0 union "
                         "select rdb$generator_name from rdb$generators where rdb$system_flag = 0 union "
                         "select rdb$trigger_name from rdb$triggers where rdb$system_flag = 0"})
            .out;
    }
    std::string path;
};

DbfBuilder people() {
    return DbfBuilder()
        .field("NAME", 'C', 8)
        .field("BORN", 'D', 8)
        .record({"Ana", "20070301"})
        .record({"Bob", ""});
}

/// The text with the name of the data file, which must be gone, as DATA.
std::string without_data_file(std::string text) {
    const std::size_t at = text.find("/tmp/zmrdd");
    if (at == std::string::npos) return text;
    const std::string name = text.substr(at, text.find(' ', at) - at);
    EXPECT_FALSE(fs::exists(name));
    return text.replace(at, name.size(), "DATA");
}

/// A preparation for a process whose files cannot grow beyond so many bytes.
std::string files_up_to(std::uintmax_t size) { return "ulimit -f " + std::to_string(size / 512); }

class ImportOnAFullDisk : public ImportFailure {
  protected:
    ImportOnAFullDisk() {
        constexpr std::uintmax_t room = 512 * 1024;
        limit = fs::file_size(file("test.fdb")) + room;
        DbfBuilder dbf = DbfBuilder().field("NAME", 'C', 250);
        for (std::uintmax_t size = 0; size < limit + room; size += 250) dbf.record({"name"});
        dbf.write(file("big.dbf"));
    }
    std::uintmax_t limit;
};

TEST_F(ImportOnAFullDisk, TakesTheTableBack) {
    const std::string before = objects();
    const Finished run = zmfb_after(files_up_to(limit), {"--db", path, "import", file("big.dbf")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(without_data_file(run.err),
              "raised: [FBCONN Error]\n"
              "  Impossível criar arq temporário para importação\n"
              "error: " +
                  file("big.dbf") +
                  " was not imported\n"
                  "  table BIG dropped\n"
                  "  data file DATA removed\n");
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportOnAFullDisk, RemovesAConvertedCopyAndMakesNothing) {
    const std::string before = objects();
    const Finished run =
        zmfb_after(files_up_to(limit), {"--db", path, "import", file("big.dbf"), "--encoding-from", "CP850"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: cannot write " + file("zmfb-"))) << run.err;
    EXPECT_EQ(objects(), before);
    for (const auto& left : fs::directory_iterator(file("")))
        EXPECT_FALSE(left.path().filename().string().starts_with("zmfb-")) << left.path();
}

TEST_F(ImportFailure, SaysWhyTheEngineRefusedAndTakesTheTableBack) {
    forbid(path, "create trigger", "_NULLDATES");
    const std::string before = objects();
    const Finished run = on(path, {"import", made("people.dbf", people())});
    EXPECT_EQ(run.status, 1);
    const std::string said = without_data_file(run.err);
    EXPECT_TRUE(said.starts_with("error: " + file("people.dbf") + " was not imported\n")) << said;
    EXPECT_NE(said.find("not in this database\n"
                        "  external table EXT_PEOPLE dropped\n"
                        "  table PEOPLE dropped\n"
                        "  data file DATA removed\n"),
              std::string::npos)
        << said;
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportFailure, SaysThatTheTableItReplacedIsGone) {
    ASSERT_EQ(on(path, {"import", made("people.dbf", people())}).status, 0);
    forbid(path, "create table", "EXT_");
    const Finished run = on(path, {"import", file("people.dbf"), "--drop-existing", "--yes"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(without_data_file(run.err).find(
                  "not in this database\n"
                  "  table PEOPLE dropped\n"
                  "  the table PEOPLE that was there before is gone: it had been dropped already\n"
                  "  data file DATA removed\n"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(objects().find("PEOPLE"), std::string::npos);
}

TEST_F(ImportFailure, SaysWhatCouldNotBeUndoneAndTheCommandsThatDoIt) {
    exec(path, "create exception forbidden 'not in this database'");
    exec(path,
         "create trigger forbids before create trigger or drop table as begin "
         "if (rdb$get_context('DDL_TRIGGER', 'EVENT_TYPE') = 'DROP' or "
         "rdb$get_context('DDL_TRIGGER', 'OBJECT_NAME') containing '_NULLDATES') then exception forbidden; "
         "end");
    const Finished run = on(path, {"import", made("people.dbf", people())});
    EXPECT_EQ(run.status, 1);
    const std::string said = "could not be dropped; when it is still there, this drops it: zmfb ";
    EXPECT_NE(without_data_file(run.err).find("  external table EXT_PEOPLE " + said +
                                              "exec \"drop table EXT_PEOPLE\"\n  table PEOPLE " + said +
                                              "call 'droptable(\"PEOPLE\")'\n  data file DATA removed\n"),
              std::string::npos)
        << run.err;
    exec(path, "drop trigger forbids");
    exec(path, "drop table EXT_PEOPLE");
    on(path, {"call", "droptable(\"PEOPLE\")"});
    EXPECT_EQ(objects().find("PEOPLE"), std::string::npos);
}

TEST_F(ImportFailure, ATableWithFewerRowsThanRecordsIsTakenBack) {
    exec(path,
         "create trigger thins on transaction commit as begin "
         "execute statement 'delete from people where recno > 1'; when any do begin end end");
    const std::string before = objects();
    const Finished run = on(path, {"import", made("people.dbf", people())});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(
        run.err.starts_with("raised: [FBCONN Error]\n  Rows and records differ\n  Table: PEOPLE Rows: 1 "
                            "Records: 2\n  Data file: /tmp/"))
        << run.err;
    EXPECT_NE(run.err.find("\nerror: " + file("people.dbf") +
                           " was not imported\n  table PEOPLE dropped\n  data file /tmp/"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportFailure, AFileForRejectsThatCannotBeWrittenIsSaid) {
    const std::string dbf = made("people.dbf", DbfBuilder().field("N", 'N', 4).record({"x"}));
    const std::string csv = file("nowhere/rejects.csv");
    const Finished run = on(path, {"import", dbf, "--rejects", csv});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot write " + csv + ": No such file or directory\n");
}

TEST_F(ImportFailure, WithoutAFileHandleLeftNothingIsBegun) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizers need file handles themselves";
#endif
    const Finished run =
        zmfb_after("exec 3>&-; ulimit -n 4", {"--db", path, "import", made("people.dbf", people())});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: cannot make a pipe\n");
}

TEST_F(ImportFailure, ControlCAtTheQuestionLeavesTheTableAndNoCopy) {
    ASSERT_EQ(on(path, {"import", made("people.dbf", people())}).status, 0);
    fs::create_directory(file("tmp"));
    Dialogue talk({"env", "-u", "FIREBIRD", "-u", "FIREBIRD_LOCK", "TMPDIR=" + file("tmp"),
                   "XDG_CACHE_HOME=" + (process_folder() / "cache").string(), ZMFB_TOOL, "--db", path,
                   "import", file("people.dbf"), "--drop-existing", "--encoding-from", "CP850"});
    talk.expect("Drop the table PEOPLE with its 2 records? [y/N] ");
    EXPECT_FALSE(fs::is_empty(file("tmp")));
    talk.type("\x03");
    talk.expect("was interrupted, and undone\r\n  Nothing had been made yet.\r\n");
    EXPECT_EQ(talk.end(), 130);
    EXPECT_TRUE(fs::is_empty(file("tmp")));
    EXPECT_EQ(on(path, {"call", "counttablerecords('PEOPLE')"}).out, "2\n");
}

}  // namespace
}  // namespace zmfb::test
