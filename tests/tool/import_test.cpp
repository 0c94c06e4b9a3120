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
    EXPECT_EQ(run.err, "raised: [FBCONN Error];Arquivo não encontrado; Arquivo: " + file("nosuch.dbf") +
                           "\nerror: " + file("nosuch.dbf") + " was not imported\n");
    EXPECT_NE(run.out.find("10 records"), std::string::npos);
}

TEST_F(ImportCommand, ATableThatExistsIsRefusedAndKept) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    const Finished run = on(path, {"import", ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("raised: [FBCONN Error];A tabela já existe; Tabela: CUSTOMERS\n"),
              std::string::npos);
    EXPECT_EQ(on(path, {"call", "counttablerecords('CUSTOMERS')"}).out, "10\n");
}

TEST_F(ImportCommand, AFileThatIsNoDbfIsRefused) {
    const Finished run = on(path, {"import", write_file("notes.txt", "just some text, no table at all")});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("Não é um DBF; Arquivo: "), std::string::npos);
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
    EXPECT_EQ(on(path, {"struct", "customers"}).out,
              "field       type  length  decimals\n"
              "----------  ----  ------  --------\n"
              "CODE        N          6         0\n"
              "NAME        C         24         0\n"
              "CITY        C         16         0\n"
              "CREDIT      N         10         2\n"
              "SINCE       D          8         0\n"
              "ACTIVE      L          1         0\n"
              "RDD_AREAID  C         50         0\n"
              "RECNO       N         15         0\n");
    const Finished missing = on(path, {"struct", "nosuch"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "error: there is no table nosuch\n");
}

}  // namespace
}  // namespace zmfb::test
