// What an import finds in a file before it begins.
#include <csignal>
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
    // How many tables, generators and triggers there are.
    std::string objects() const {
        return call(
                   "executequery('select (select count(*) from rdb$relations), (select count(*) from "
                   "rdb$generators), (select count(*) from rdb$triggers) from rdb$database')")
            .out;
    }
    std::string path;
};

constexpr const char* too_wide =
    "the database's default character set SJIS_0208 takes up to 2 bytes a character; DBF files go in and out "
    "of "
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
    on(path, {"exec", "alter database set default character set SJIS_0208"});
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

TEST_F(ImportCheck, ADryRunSaysWhatTheDatabaseHasAgainstTheTable) {
    const std::string dbf = made("prices.dbf", prices().record({"1", "1.50"}));
    forbid(path, "create table");
    const std::string before = objects();
    const Finished run = import(dbf, {"--dry-run"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.find("would work"), std::string::npos) << run.out;
    EXPECT_TRUE(run.err.starts_with("error: " + dbf + " would not be imported\n")) << run.err;
    EXPECT_NE(run.err.find("  not in this database\n"), std::string::npos) << run.err;
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, ADryRunWorksInThePlaceOfWhatWasLeftBehind) {
    const std::string dbf = made("prices.dbf", prices().record({"1", "1.50"}));
    exec(path, "create table prices (a integer)");
    exec(path, "comment on table prices is 'Unfinished import for ZMRDDFIRE'");
    exec(path, "create sequence G_PRICES_I");
    const std::string before = objects();
    EXPECT_EQ(import(dbf, {"--dry-run"}).err, "");
    EXPECT_EQ(objects(), before);
    EXPECT_EQ(import(dbf).err, "");
}

TEST_F(ImportCheck, ADryRunOfAReplacementSaysThatTheTableIsInUse) {
    const std::string dbf = made("prices.dbf", prices().record({"1", "1.50"}));
    ASSERT_EQ(import(dbf).status, 0);
    EXPECT_EQ(import(dbf, {"--replace", "--dry-run"}).err, "");
    const Finished run = while_another(path, {"query", endless_query("prices")}, [&] {
        return import(dbf, {"--replace", "--dry-run"});
    });
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(" would not be imported\n  the table PRICES is in use by another program\n"),
              std::string::npos)
        << run.err;
}

DbfBuilder badly_named() {
    return DbfBuilder()
        .field("SELECT", 'C', 5)
        .field("NAME", 'C', 5)
        .field("NAME", 'C', 5)
        .field("RECNO", 'N', 5)
        .field("2ND", 'C', 5)
        .record({"a", "b", "c", "4", "e"});
}

TEST_F(ImportCheck, NamesThatCannotBeAreChangedAndTold) {
    const Finished run = import(made("order.dbf", badly_named()));
    EXPECT_EQ(run.status, 0) << run.err;
    std::vector<std::string> said = lines(run.out);
    said.erase(said.begin());
    EXPECT_EQ(said, (std::vector<std::string>{
                        "the table ORDER is a reserved word: it becomes ORDER_",
                        "the field SELECT is a reserved word: it becomes SELECT_",
                        "the field NAME is there twice: it becomes NAME_2",
                        "the field RECNO is the name of a column of the driver's own: it becomes F_RECNO",
                        "the field 2ND is no valid name: it becomes F_2ND"}));
    EXPECT_EQ(
        on(path, {"query", "--mode", "csv",
                  "select trim(select_), trim(name), trim(name_2), f_recno, trim(f_2nd), recno from order_"})
            .out,
        "TRIM,TRIM,TRIM,F_RECNO,TRIM,RECNO\r\na,b,c,4,e,1\r\n");
}

TEST_F(ImportCheck, StrictNamesRefusesThemAllAtOnce) {
    const std::string before = objects();
    const std::string dbf = made("order.dbf", badly_named().record_count(7));
    const Finished run = import(dbf, {"--strict-names", "--dry-run"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + dbf +
                           " would not be imported\n"
                           "  the table ORDER is a reserved word\n"
                           "  the field SELECT is a reserved word\n"
                           "  the field NAME is there twice\n"
                           "  the field RECNO is the name of a column of the driver's own\n"
                           "  the field 2ND is no valid name\n"
                           "  the header counts 7 records, the file holds 1; --incomplete imports those\n");
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, NamesCanBeGiven) {
    const std::string dbf = made("order.dbf", badly_named());
    const Finished run =
        import(dbf, {"--table", "orders", "--rename", "select=choice", "--rename", "RECNO=number"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select trim(choice), number from orders"}).out,
              "TRIM,NUMBER\r\na,4\r\n");
    for (const char* wrong : {"select", "=x", "a=2x"}) {
        const Finished refused = import(dbf, {"--rename", wrong});
        EXPECT_EQ(refused.status, 2) << wrong;
        EXPECT_NE(refused.err.find(wrong), std::string::npos) << refused.err;
    }
    const Finished twice = import(dbf, {"--rename", "NAME=A", "--rename", "name=B"});
    EXPECT_EQ(twice.status, 2);
    EXPECT_EQ(twice.err, "error: --rename name=B: another one names that field\n");
}

TEST_F(ImportCheck, ARenameOfAFieldThatIsNotThereIsRefusedAndInSeveralFilesSaid) {
    const std::string dbf = made("p.dbf", prices().record({"1", "1"}));
    const Finished run = import(dbf, {"--rename", "code=number", "--rename", "cost=price"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: " + dbf +
                           " was not imported\n"
                           "  there is no field COST, which --rename COST=PRICE names\n");
    const std::string other = made("q.dbf", DbfBuilder().field("COST", 'N', 4));
    EXPECT_EQ(import(dbf, {other, "--rename", "cost=price"}).status, 0);
    const Finished none =
        import(dbf, {other, "--replace", "--yes", "--rename", "costs=price", "--rename", "code=number"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "error: no file has a field COSTS, which --rename COSTS=PRICE names\n");
}

TEST_F(ImportCheck, EmptyNamesAreWrongUsage) {
    const std::string dbf = made("p.dbf", prices());
    for (const char* option : {"--table", "--set-aside", "--rejects", "--encoding-from"}) {
        const Finished run = import(dbf, {option, ""});
        EXPECT_EQ(run.status, 2) << option;
        EXPECT_TRUE(run.err.starts_with("error: " + std::string(option) + ": may not be empty\n")) << run.err;
    }
}

TEST_F(ImportCheck, ANameOfATableIsShownAsItWasTyped) {
    const Finished run = import(made("p.dbf", prices()), {"--table", "preço"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(lines(run.out).at(1), "the table PREçO is no valid name: it becomes PRE_O");
}

TEST_F(ImportCheck, ATableOfTheNameIsRefusedInADryRunToo) {
    ASSERT_EQ(import(ZMFB_EXAMPLE_DBF).status, 0);
    const Finished run = import(ZMFB_EXAMPLE_DBF, {"--dry-run"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(
        run.err.find("the table CUSTOMERS is there already; --replace replaces it, --append adds to it\n"),
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
    const std::tuple<std::string, DbfBuilder, std::string> cases[] = {
        {"c.dbf", fields({32768}), "the field A has 32768 characters; 32765 are possible"},
        {"r.dbf", fields({32765, 32765}), "a row would take more than 65535 bytes"},
    };
    const std::string before = objects();
    for (const auto& [name, dbf, reason] : cases) {
        const Finished run = import(made(name, dbf));
        EXPECT_EQ(run.status, 1) << name;
        EXPECT_EQ(run.err, "error: " + file(name) + " was not imported\n  " + reason + "\n");
    }
    EXPECT_EQ(objects(), before);
}

TEST_F(ImportCheck, TableNamesOfOneRunThatAreTooLongStayApart) {
    const std::string beginning = "A" + std::string(20, 'b');
    made(beginning + "1.dbf", prices());
    const Finished run = import(file(beginning + "1.dbf"), {made(beginning + "2.dbf", prices())});
    EXPECT_EQ(run.status, 0) << run.err;
    for (const std::string& table : {"A" + std::string(19, 'B'), "A" + std::string(17, 'B') + "_2"}) {
        EXPECT_EQ(call("istable('" + table + "')").out, ".T.\n") << table;
    }
}

TEST_F(ImportCheck, GeneratorsThatATableLeftBehindAreTakenOverAndTold) {
    exec(path, "create sequence G_P_D");
    exec(path, "alter sequence G_P_D restart with 7");
    const Finished run = import(made("p.dbf", prices().record({"1", "1"})));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(lines(run.out).at(1), "the generator G_P_D, of a table that is gone, taken over");
    EXPECT_EQ(on(path, {"query", "--mode", "csv",
                        "select gen_id(G_P_I, 0) as i, gen_id(G_P_D, 0) as d from rdb$database"})
                  .out,
              "I,D\r\n1,0\r\n");
}

}  // namespace
}  // namespace zmfb::test
