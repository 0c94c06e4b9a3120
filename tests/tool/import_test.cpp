#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportCommand : public Tool {
  protected:
    ImportCommand() : path(database()) {}
    std::string path;
};

TEST_F(ImportCommand, BringsAFileInAndSaysSo) {
    const Finished run = on(path, {"import", ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.starts_with(ZMFB_EXAMPLE_DBF " -> CUSTOMERS: 10 records, 6 fields, ")) << run.out;
}

TEST_F(ImportCommand, AFileThatIsNotThereIsRefusedAndTheOthersGoOn) {
    const Finished run = on(path, {"import", file("nosuch.dbf"), ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + file("nosuch.dbf") + " was not imported\n  nosuch.dbf does not exist\n");
    EXPECT_NE(run.out.find("10 records"), std::string::npos);
}

TEST_F(ImportCommand, ATableThatExistsIsRefusedAndKept) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    const Finished run = on(path, {"import", ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " ZMFB_EXAMPLE_DBF
                       " was not imported\n  the table CUSTOMERS is there already; --replace replaces it, "
                       "--append adds to it\n");
    EXPECT_EQ(on(path, {"call", "counttablerecords('CUSTOMERS')"}).out, "10\n");
}

TEST_F(ImportCommand, AFileThatIsNoDbfIsRefused) {
    const Finished run = on(path, {"import", write_file("notes.txt", "just some text, no table at all")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: " + file("notes.txt") +
                  " was not imported\n  notes.txt is not a DBF file: none begins with the byte 6A\n");
}

TEST_F(ImportCommand, TablesAndStructShowWhatCameIn) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(on(path, {"tables"}).out,
              "table       kind    records\n"
              "----------  ------  -------\n"
              "CUSTOMERS   driver       10\n"
              "RDDSYS_FLK  system        0\n"
              "RDDSYS_OPN  system        0\n"
              "RDDSYS_RLK  system        0\n");
    const std::string structure = on(path, {"struct", "customers"}).out;
    EXPECT_TRUE(structure.starts_with(
        "CUSTOMERS: driver table, 10 records\n"
        "\n"
        "field       type  length  decimals  in the database            kept by the driver\n"
        "----------  ----  ------  --------  -------------------------  ------------------\n"
        "CODE        N          6         0  NUMERIC(6,0) NOT NULL\n"
        "NAME        C         24         0  CHAR(24) NOT NULL\n"
        "CITY        C         16         0  CHAR(16) NOT NULL\n"
        "CREDIT      N         10         2  NUMERIC(10,2) NOT NULL\n"
        "SINCE       D          8         0  TIMESTAMP\n"
        "ACTIVE      L          1         0  CHAR(1) NOT NULL\n"
        "RDD_AREAID  C         50         0  VARCHAR(50)                work area\n"
        "RECNO       N         15         0  DOUBLE PRECISION NOT NULL  record number\n"))
        << structure;
    const Finished missing = on(path, {"struct", "nosuch"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "error: there is no table nosuch\n");
}

}  // namespace
}  // namespace zmfb::test
