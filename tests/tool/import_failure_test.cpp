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
    // The names of the tables, generators and triggers that users made.
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

TEST_F(ImportFailure, OnAFullDiskTheTableIsTakenBack) {
    if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
    constexpr std::uintmax_t room = 512 * 1024;
    const std::uintmax_t limit = fs::file_size(file("test.fdb")) + room;
    DbfBuilder dbf = DbfBuilder().field("NAME", 'C', 250);
    for (std::uintmax_t size = 0; size < limit + room; size += 250) dbf.record({"name"});
    const std::string before = objects();
    // A preparation for a process whose files cannot grow beyond so many bytes.
    const Finished run = zmfb_after("ulimit -f " + std::to_string(limit / 512),
                                    {"--db", path, "import", made("big.dbf", dbf)});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("error: " + file("big.dbf") + " was not imported\n  I/O error during"))
        << run.err;
    EXPECT_EQ(run.err.find("could not be dropped"), std::string::npos) << run.err;
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportFailure, SaysWhyTheEngineRefusedAndTakesTheTableBack) {
    forbid(path, "create trigger", "_DELETES");
    const std::string before = objects();
    const Finished run = on(path, {"import", made("people.dbf", people())});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("error: " + file("people.dbf") + " was not imported\n")) << run.err;
    EXPECT_NE(run.err.find("not in this database\n"), std::string::npos) << run.err;
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportFailure, ATableThatCannotBeDroppedIsCalledUnfinishedAndTheNextImportTakesItsPlace) {
    exec(path, "create exception forbidden 'not in this database'");
    exec(path,
         "create trigger forbids before create trigger or drop table as begin "
         "if (rdb$get_context('DDL_TRIGGER', 'EVENT_TYPE') = 'DROP' or "
         "rdb$get_context('DDL_TRIGGER', 'OBJECT_NAME') containing '_DELETES') then exception forbidden; "
         "end");
    const Finished run = on(path, {"import", made("people.dbf", people())});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("  the unfinished table PEOPLE could not be dropped; the next import of that name "
                           "takes its place\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(on(path, {"tables"}).out.find("PEOPLE      unfinished        0\n"), std::string::npos);
    exec(path, "drop trigger forbids");
    const Finished doctor = on(path, {"doctor"});
    EXPECT_NE(doctor.out.find("PEOPLE is an import that runs, or did not come to its end"), std::string::npos)
        << doctor.out;
    EXPECT_EQ(on(path, {"import", file("people.dbf")}).status, 0);
    const std::string tables = on(path, {"tables"}).out;
    EXPECT_NE(tables.find("PEOPLE      driver        2\n"), std::string::npos) << tables;
}

TEST_F(ImportFailure, AFileForRejectsThatCannotBeWrittenIsSaidAndNothingComesIn) {
    const std::string dbf = made("people.dbf", DbfBuilder().field("N", 'N', 4).record({"x"}));
    const std::string before = objects();
    for (const auto& [csv, reason] : {std::pair{file("nowhere/rejects.csv"), "No such file or directory"},
                                      std::pair{std::string("/dev/full"), "No space left on device"}}) {
        for (const char* instead : {"refuse", "default", "set-aside"}) {
            const Finished run = on(path, {"import", dbf, "--rejects", csv, "--on-bad-value", instead});
            const std::string problem = "cannot write " + csv + ": " + reason + "\n";
            EXPECT_EQ(run.status, 1) << instead;
            EXPECT_TRUE(run.err.starts_with("error: " + dbf + " was not imported\n  " + problem)) << run.err;
            EXPECT_TRUE(run.err.ends_with("error: " + problem)) << run.err;
            EXPECT_EQ(run.err.find("all are in"), std::string::npos) << run.err;
        }
    }
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportFailure, ControlCAtTheQuestionLeavesTheTable) {
    ASSERT_EQ(on(path, {"import", made("people.dbf", people())}).status, 0);
    Dialogue talk(command({"--db", path, "import", file("people.dbf"), "--replace"}));
    talk.expect("Drop the table PEOPLE with its 2 records? [y/N] ");
    talk.type("\x03");
    talk.expect("interrupted");
    EXPECT_EQ(talk.end(), 130);
    EXPECT_EQ(on(path, {"call", "counttablerecords('PEOPLE')"}).out, "2\n");
}

}  // namespace
}  // namespace zmfb::test
