// What an import finds in a file before it begins.
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportCheck : public Tool {
  protected:
    ImportCheck() : path(database()) {}
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    Finished import(const std::string& dbf, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"import", dbf});
        return on(path, options);
    }
    Finished call(const std::string& line) const { return on(path, {"call", line}); }
    /// How many tables, generators and triggers there are.
    std::string objects() const {
        return call(
                   "executequery('select (select count(*) from rdb$relations), (select count(*) from "
                   "rdb$generators), (select count(*) from rdb$triggers) from rdb$database')")
            .out;
    }
    std::string path;
};

constexpr const char* too_wide =
    "the database's default character set UTF8 takes up to 4 bytes a character; DBF files go in and out of "
    "databases where it takes one";

DbfBuilder prices() { return DbfBuilder().field("CODE", 'N', 4).field("PRICE", 'N', 8, 2); }

TEST_F(ImportCheck, ListsWhatTheDatabaseWouldRefuseAndMakesNothing) {
    const std::string before = objects();
    const std::string dbf = made(
        "prices.dbf", prices().record({"1", "********"}).record({"2", "1.50"}).record({"99999", "1,50"}));
    // A value of five digits was cut to its four.
    const Finished run = import(dbf);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "error: " + dbf +
                  " was not imported\n"
                  "  2 values would be refused by the database:\n"
                  "  record 1, field PRICE: \"********\": stars: the number was too wide for its field\n"
                  "  record 3, field PRICE: \"    1,50\": not a number\n");
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, RefusesADatabaseOfWideCharactersAndKeepsTheTableThatIsThere) {
    const std::string dbf = made("prices.dbf", prices().record({"1", "1.50"}));
    EXPECT_EQ(import(dbf).status, 0);
    on(path, {"exec", "alter database set default character set UTF8"});
    const std::string before = objects();
    for (const char* option : {"--dry-run", "--yes"}) {
        const Finished run = import(dbf, {"--drop-existing", option});
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(std::string("imported\n  ") + too_wide + "\n"), std::string::npos) << run.err;
    }
    EXPECT_EQ(objects(), before);
    EXPECT_EQ(call("counttablerecords('PRICES')").out, "1\n");
}

TEST_F(ImportCheck, ShowsTheFirstTwentyAndWritesAllToAFile) {
    DbfBuilder dbf = prices();
    for (int i = 0; i < 30; ++i) dbf.record({"1", i % 2 == 0 ? "x\"y" : std::string("1\0002", 3)});
    const std::string csv = file("rejects.csv");
    const Finished run = import(made("prices.dbf", dbf), {"--rejects", csv});
    EXPECT_EQ(run.status, 1);
    const std::vector<std::string> said = lines(run.err);
    ASSERT_EQ(said.size(), 24U) << run.err;
    EXPECT_EQ(said[1], "  30 values would be refused by the database:");
    EXPECT_EQ(said[3], "  record 2, field PRICE: \"     1\\x002\": a zero byte in a number");
    EXPECT_EQ(said[22], "  and 10 more");
    EXPECT_EQ(said[23], "  all are in " + csv);
    const std::vector<std::string> rows = lines(read_file(csv));
    ASSERT_EQ(rows.size(), 31U);
    EXPECT_EQ(rows[0], "file,record,field,bytes,reason\r");
    EXPECT_EQ(rows[1], "\"" + file("prices.dbf") + "\",1,\"PRICE\",\"     x\"\"y\",\"not a number\"\r");
    EXPECT_EQ(rows[30],
              "\"" + file("prices.dbf") + "\",30,\"PRICE\",\"     1\\x002\",\"a zero byte in a number\"\r");
}

TEST_F(ImportCheck, WhatIsAcceptedReallyArrives) {
    DbfBuilder dbf = DbfBuilder().field("V", 'N', 10, 2);
    const std::vector<std::string> values{"5", ".5", "5.", "-.5", "+5", "1e3", "1.235", "", "1E-2"};
    for (const std::string& value : values) dbf.record({value});
    const Finished run = import(made("v.dbf", dbf));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(call("executequery('select cast(v as varchar(12)) from v order by recno')").out,
              "{{{\"CAST\", \"C\", 12, 0}}, {\"5.00        \"}, {\"0.50        \"}, {\"5.00        \"}, "
              "{\"-0.50       \"}, {\"5.00        \"}, {\"1000.00     \"}, {\"1.24        \"}, "
              "{\"0.00        \"}, {\"0.01        \"}}\n");
}

TEST_F(ImportCheck, ImpossibleDatesAndZeroBytesAreCounted) {
    const Finished run = import(made("born.dbf", DbfBuilder()
                                                     .field("NAME", 'C', 5)
                                                     .field("BORN", 'D', 8)
                                                     .record({std::string("a\0b", 3), "20070301"})
                                                     .record({"Ana", "20070231"})
                                                     .record({"Eva", ""})));
    EXPECT_EQ(run.status, 0) << run.err;
    const std::vector<std::string> said = lines(run.out);
    ASSERT_EQ(said.size(), 3U) << run.out;
    EXPECT_EQ(said[1], "1 impossible date became NULL");
    EXPECT_EQ(said[2], "1 text with a zero byte kept as they are");
    EXPECT_NE(call("executequery('select count(*) from born where born is null')").out.find("2"),
              std::string::npos);
}

TEST_F(ImportCheck, ADryRunTellsWhatWouldBeMadeAndMakesNothing) {
    const std::string before = objects();
    const Finished run = import(ZMFB_EXAMPLE_DBF, {"--dry-run"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, ZMFB_EXAMPLE_DBF
              " -> CUSTOMERS: 10 records, 6 fields\n"
              "column  type\n"
              "------  -------------\n"
              "CODE    NUMERIC(6,0)\n"
              "NAME    CHAR(24)\n"
              "CITY    CHAR(16)\n"
              "CREDIT  NUMERIC(10,2)\n"
              "SINCE   TIMESTAMP\n"
              "ACTIVE  CHAR(1)\n"
              "1 deleted record would come along; --skip-deleted leaves them out\n"
              "nothing was changed; the import would work\n");
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, ADryRunTellsWhatWouldBeRefused) {
    const std::string before = objects();
    const std::string dbf = made("order.dbf", DbfBuilder()
                                                  .field("SELECT", 'C', 5)
                                                  .field("NAME", 'C', 5)
                                                  .field("NAME", 'C', 5)
                                                  .field("RECNO", 'N', 5)
                                                  .field("2ND", 'C', 5)
                                                  .field("NOTE", 'M', 10)
                                                  .field("HUGE", 'N', 20)
                                                  .record_count(7));
    const Finished run = import(dbf, {"--dry-run"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + dbf +
                           " would not be imported\n"
                           "  the table's name would be ORDER, a reserved word\n"
                           "  the field SELECT is a reserved word\n"
                           "  the field NAME is there twice\n"
                           "  the field RECNO is the name of a column of the driver's own\n"
                           "  the field 2ND is no valid name\n"
                           "  the field NOTE has the type M; C, N, D and L can be imported\n"
                           "  the field HUGE has 20 digits; 18 are possible\n"
                           "  the header counts 7 records, the file holds 0; --incomplete imports those\n");
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, ATableOfTheNameAndAFileWithMemosAreRefusedInADryRunToo) {
    ASSERT_EQ(import(ZMFB_EXAMPLE_DBF).status, 0);
    const Finished run = import(ZMFB_EXAMPLE_DBF, {"--dry-run"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("the table CUSTOMERS is there already; --drop-existing replaces it\n"),
              std::string::npos);
    const Finished memo = import(made("m.dbf", prices().type(131)), {"--dry-run"});
    EXPECT_EQ(memo.status, 1);
    EXPECT_NE(memo.err.find("m.dbf is a DBF file with memo fields, which cannot be imported\n"),
              std::string::npos);
}

TEST_F(ImportCheck, AFileThatIsCutOffIsImportedOnlyWhenToldSo) {
    const std::string whole = prices().record({"1", "1"}).record({"2", "2"}).bytes();
    const std::string dbf =
        made("p.dbf", prices().record({"1", "1"}).record({"2", "2"}).cut(whole.size() - 1 - 13));
    EXPECT_EQ(import(dbf).status, 1);
    const Finished run = import(dbf, {"--incomplete"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("P: 1 record,"), std::string::npos) << run.out;
}

TEST_F(ImportCheck, WhatTheEngineHasNoRoomOrNoNameForIsRefused) {
    const auto fields = [](std::initializer_list<int> lengths) {
        DbfBuilder dbf;
        char name = 'A';
        for (const int length : lengths) dbf.field(std::string(1, name++), 'C', length);
        return dbf;
    };
    constexpr const char* bad_name = "\": a name starts with a letter and has letters, digits, _ and $";
    const std::tuple<std::string, DbfBuilder, std::string> cases[] = {
        {"2nd.dbf", prices(), std::string("the table's name would be \"2ND") + bad_name},
        {"my shop.dbf", prices(), std::string("the table's name would be \"MY SHOP") + bad_name},
        {".dbf", prices(), std::string("the table's name would be \"") + bad_name},
        {"c.dbf", fields({32768}), "the field A has 32768 characters; 32767 are possible"},
        {"r.dbf", fields({32767, 32767}), "a row would take more than 65535 bytes"},
    };
    const std::string before = objects();
    for (const auto& [name, dbf, reason] : cases) {
        const Finished run = import(made(name, dbf));
        EXPECT_EQ(run.status, 1) << name;
        EXPECT_EQ(run.err, "error: " + file(name) + " was not imported\n  " + reason + "\n");
    }
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, ATableNameTooLongForItsTriggersIsRefusedAsThatAlone) {
    for (const std::size_t length : {21, 32, 48, 67}) {
        const std::string name = "a" + std::string(length - 1, 'b');
        const std::string upper = "A" + std::string(length - 1, 'B');
        const Finished run = import(made(name + ".dbf", prices()));
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err,
                  "error: " + file(name + ".dbf") + " was not imported\n  the table's name would be " +
                      upper + ", of " + std::to_string(length) +
                      " characters: 20 are possible, for its indexes and triggers are named after it\n");
    }
}

// An import that failed would take them back as its own.
TEST_F(ImportCheck, GeneratorsThatAreThereWithoutATableAreRefusedAndStay) {
    exec(path, "create sequence G_P_D");
    exec(path, "alter sequence G_P_D restart with 7");
    const std::string before = objects();
    const Finished run = import(made("p.dbf", prices().record({"1", "1"})));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: " + file("p.dbf") +
                  " was not imported\n  the generator G_P_D is there already, without a table; unless a "
                  "program of your own uses it: zmfb call 'dropgenerator(\"G_P_D\")'\n");
    EXPECT_EQ(objects(), before);
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select gen_id(G_P_D, 0) as n from rdb$database"}).out,
              "N\r\n7\r\n");
    on(path, {"call", "dropgenerator('G_P_D')"});
    EXPECT_EQ(import(file("p.dbf")).status, 0);
}

}  // namespace
}  // namespace zmfb::test
