// What an export that cannot go on raises, and exactly what it leaves behind.
#include "host/latin1.h"
#include "host/workarea.h"
#include "tests/support/environment.h"
#include "tests/transfer/transfer_fixture.h"

namespace zmfb::test {
namespace {

using host::operator""_l1;

class ExportRefusal : public Transfer {
  protected:
    ExportRefusal() : here_(folder()) {}

    // The database packs the blanks of its records: its file stays much smaller than what an export writes.
    static constexpr std::size_t width = 2000;
    static constexpr std::size_t line = width + 1;

    void make_table(std::size_t records = 1) {
        ASSERT_TRUE(call("createtable", "T", host::array_of(host::array_of("A", "C", width, 0))).logical());
        BareClient client(database());
        client.execute(
            "execute block as declare n integer = " + std::to_string(records) +
            "; begin while (n > 0) do begin insert into T values ('text', null, 0); n = n - 1; end end");
    }
    bool exile(const std::string& name) { return call("exiletable", name).logical(); }
    void expect_source_untouched(std::size_t records = 1) const {
        EXPECT_EQ(rows("select count(*), min(A), max(A) from T"),
                  (Rows{{std::to_string(records), "text", "text"}}));
    }
    // The number of records in the header of a DBF file.
    static int counted(const std::string& path) {
        const std::string bytes = read_file(path);
        return bytes.size() < 8
                   ? -1
                   : static_cast<unsigned char>(bytes[4]) + 256 * static_cast<unsigned char>(bytes[5]);
    }

  private:
    CurrentFolder here_;
};

TEST_F(ExportRefusal, TableThatDoesNotExistAnswersFalseAndMakesNothing) {
    EXPECT_FALSE(exile("NOSUCH"));
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_FALSE(std::filesystem::exists("NOSUCH.dbf"));
    EXPECT_FALSE(std::filesystem::exists(dat()));
}

TEST_F(ExportRefusal, TableWithoutUserFieldsAnswersFalseAndMakesNothing) {
    execute("create table BARE (RECNO double precision, RDD_AREAID varchar(50), IDX_A char(1))");
    EXPECT_FALSE(exile("BARE"));
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_FALSE(std::filesystem::exists("BARE.dbf"));
    EXPECT_FALSE(std::filesystem::exists(dat()));
}

TEST_F(ExportRefusal, DbfThatCannotBeCreatedAnswersFalseWithNothingRaised) {
    make_table();
    {
        const CurrentFolder where_nothing_can_be_made("/proc/self");
        EXPECT_FALSE(exile("T"));
    }
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_FALSE(std::filesystem::exists(dat()));
    EXPECT_FALSE(has_table("EXT_T"));
    expect_source_untouched();
}

TEST_F(ExportRefusal, DbfThatAnotherProgramHasOpenAnswersFalseAndIsLeftAlone) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    make_table();
    ASSERT_TRUE(exile("T"));
    const std::string before = read_file("T.dbf");
    const LockHolder other("T.dbf", std::chrono::seconds(20));
    EXPECT_FALSE(exile("T"));
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_EQ(read_file("T.dbf"), before);
}

TEST_F(ExportRefusal, ColumnWithoutAnXbaseTypeAnswersFalseWithNothingRaised) {
    execute("create table BLOBS (A char(3), B blob)");
    EXPECT_FALSE(exile("BLOBS"));
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_FALSE(std::filesystem::exists(dat()));
}

TEST_F(ExportRefusal, ErrorHandlerOfTheApplicationIsInForceAgainAfterwards) {
    execute("create table BLOBS (A char(3), B blob)");
    EXPECT_FALSE(exile("BLOBS"));
    connection().call("looptest", "still heard");
    EXPECT_EQ(messages(), std::vector<std::string>{"still heard"});
}

TEST_F(ExportRefusal, DataFileThatCannotBeMadeAnswersFalseAndLeavesAnEmptyDbf) {
    make_table();
    call("setfullpathdatfile", file("no/such/folder/data.dat"));
    EXPECT_FALSE(exile("T"));
    EXPECT_EQ(messages(), std::vector<std::string>{});
    EXPECT_EQ(counted("T.dbf"), 0);
    EXPECT_FALSE(has_table("EXT_T"));
    expect_source_untouched();
}

TEST_F(ExportRefusal, StaleExternalTableIsRaisedAndDroppedSoThatTheNextExportSucceeds) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    make_table();
    execute("create table EXT_T (A char(3))");
    EXPECT_FALSE(exile("T"));
    EXPECT_EQ(messages(),
              std::vector<std::string>{std::string("Uma tabela externa com este nome já existe!"_l1)});
    EXPECT_FALSE(has_table("EXT_T"));
    EXPECT_EQ(counted("T.dbf"), 0);
    EXPECT_EQ(read_file(dat()), "");
    expect_source_untouched();
    EXPECT_TRUE(exile("T"));
    EXPECT_EQ(counted("T.dbf"), 1);
}

TEST_F(ExportRefusal, CopyThatTheDatabaseRefusesIsRaisedAndTheExternalTableDropped) {
    execute("create table T (A numeric(3,2))");
    execute("comment on column T.A is 'NUMERIC(3,2)'");
    execute("insert into T values (-1.50)");
    log_at(1);
    connection();
    clear_log();
    EXPECT_FALSE(exile("T")) << "five characters do not fit into three";
    ASSERT_EQ(log_lines().size(), 1U);
    EXPECT_EQ(messages(),
              std::vector<std::string>{
                  std::string("Erro durante a transferência dos dados da tabela oficial para tabela "
                              "externa; FB Error: "_l1) +
                  log_lines()[0].text});
    EXPECT_FALSE(has_table("EXT_T"));
    EXPECT_EQ(counted("T.dbf"), 0);
    EXPECT_EQ(rows("select A from T"), (Rows{{"-1.50"}}));
}

TEST_F(ExportRefusal, DiskThatIsFullForTheDataFileFailsAndTheTableIsUntouched) {
    constexpr std::size_t records = 5000;
    make_table(records);
    constexpr std::size_t room = records * line / 2;
    ASSERT_LT(std::filesystem::file_size(folder() / "database.fdb"), room);
    {
        const FileSizeLimit full_disk(room);
        EXPECT_FALSE(exile("T"));
    }
    EXPECT_FALSE(raised().empty());
    EXPECT_FALSE(has_table("EXT_T"));
    expect_source_untouched(records);
}

TEST_F(ExportRefusal, DiskThatIsFullForTheDbfFailsAndItsHeaderCountsNoMoreThanItHas) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    constexpr std::size_t records = 5000;
    constexpr std::size_t header = 32 + 32 + 1;
    make_table(records);
    {
        const FileSizeLimit full_disk(records * line + header / 2);
        EXPECT_FALSE(exile("T"));
    }
    EXPECT_FALSE(raised().empty());
    EXPECT_EQ(std::filesystem::file_size(dat()), records * line);
    EXPECT_LE(static_cast<std::size_t>(counted("T.dbf")) * line + header,
              std::filesystem::file_size("T.dbf"));
    EXPECT_FALSE(has_table("EXT_T"));
    expect_source_untouched(records);
}

TEST_F(ExportRefusal, AliasThatIsTakenIsRaisedAndItsTableStaysOpen) {
    make_table();
    host::dbcreate(file("mine.dbf"), host::array_of(host::array_of("A", "C", 1, 0)), "DBFIDX");
    host::dbusearea(true, "DBFIDX", file("mine.dbf"), "dbffile");
    EXPECT_FALSE(exile("T"));
    EXPECT_EQ(raised().size(), 1U);
    EXPECT_TRUE(host::dbselectarea("dbffile"));
    host::dbclosearea("dbffile");
    EXPECT_FALSE(has_table("EXT_T"));
}

TEST_F(ExportRefusal, ObjectWithoutADatabaseAnswersFalse) {
    zmFBConn unattached;
    EXPECT_FALSE(unattached.call("exiletable", "T").logical());
    EXPECT_FALSE(std::filesystem::exists("T.dbf"));
}

}  // namespace
}  // namespace zmfb::test
