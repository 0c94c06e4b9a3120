// What an export writes, and what it says.
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/dbf_readers.h"
#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

using ExportCommand = ExportFolder;

TEST_F(ExportCommand, PrintsAnObjectPerTableAsJson) {
    on(path, {"import", "--skip-deleted", ZMFB_EXAMPLE_DBF});
    const Finished run = on(path, {"--json", "export", "customers", "-o", folder_out});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto said = nlohmann::json::parse(run.out);
    EXPECT_EQ(said.at("table"), "CUSTOMERS");
    EXPECT_EQ(said.at("file"), folder_out + "/customers.dbf");
    EXPECT_EQ(said.at("records"), 9);
    EXPECT_EQ(said.at("fields"), 6);
    EXPECT_TRUE(said.at("warnings").empty());
    EXPECT_TRUE(said.at("converted").empty());
    EXPECT_GT(said.at("seconds").get<double>(), 0);
}

TEST_F(ExportCommand, WritesAFileThatAnotherReaderUnderstands) {
    on(path, {"import", "--skip-deleted", ZMFB_EXAMPLE_DBF});
    const Finished run = export_to_folder({"customers"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.starts_with("CUSTOMERS -> " + folder_out + "/customers.dbf: 9 records, 6 fields, "))
        << run.out;
    EXPECT_EQ(written(), (std::vector<std::string>{"customers.cpg", "customers.dbf"}));
    EXPECT_EQ(read_file(folder_out + "/customers.cpg"), "ISO-8859-1");
    DbfRecords expected = read_with_dbfread(ZMFB_EXAMPLE_DBF);
    expected[6][3] = "0.0";  // a number of blanks came in as 0
    EXPECT_EQ(read_with_dbfread(folder_out + "/customers.dbf"), expected);
}

TEST_F(ExportCommand, AnExportOfAnImportOfAnExportIsTheSameFile) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    for (const char* format : {"dbase3", "foxpro", "vfp"}) {
        ASSERT_EQ(export_to_folder({"customers", "--yes", "--format", format}).status, 0);
        const std::string first = read_file(folder_out + "/customers.dbf");
        ASSERT_EQ(
            on(path, {"import", folder_out + "/customers.dbf", "--table", "again", "--replace", "--yes"})
                .status,
            0);
        ASSERT_EQ(export_to_folder({"again", "--yes", "--format", format}).status, 0);
        EXPECT_EQ(read_file(folder_out + "/again.dbf"), first) << format;
    }
}

TEST_F(ExportCommand, TheFileIsNamedAsTheTableIsGivenAndLiesInTheCurrentFolderWithoutAnother) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    exec("insert into shop (name) values ('Ana')");
    const Finished run = zmfb_in(folder_out, {"--db", path, "export", "SHOP", "shop"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"SHOP.dbf", "shop.dbf"}));
    EXPECT_TRUE(run.out.starts_with("SHOP -> SHOP.dbf: 1 record, 1 field, ")) << run.out;
    EXPECT_EQ(read_with_dbfread(folder_out + "/shop.dbf"), (DbfRecords{{"Ana"}}));
}

TEST_F(ExportCommand, ATableThatIsNotThereIsRefusedAndTheOthersGoOn) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    const Finished run = export_to_folder({"nosuch", "no*", "shop"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: there is no table nosuch\nerror: no table fits no*\n");
    EXPECT_EQ(dbf_files(), std::vector<std::string>{"shop.dbf"});
}

TEST_F(ExportCommand, AFolderThatIsNotThereIsRefused) {
    const Finished run = on(path, {"export", "shop", "-o", file("nowhere")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: there is no folder " + file("nowhere") + "\n");
}

TEST_F(ExportCommand, AFileThatIsThereIsReplacedOnlyWhenToldSo) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    const std::string target = folder_out + "/shop.dbf";
    write_file("out/shop.dbf", "something dear");
    const Finished refused = export_to_folder({"shop"}, "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Replace " + target + "? [y/N] error: " + target +
                               " is there already\n"
                               "  Nothing was changed. --yes replaces it without asking.\n");
    EXPECT_EQ(lines(export_to_folder({"shop"}, "").err).at(1), "error: " + target + " is there already");
    EXPECT_EQ(read_file(target), "something dear");
    EXPECT_EQ(export_to_folder({"shop"}, "y\n").status, 0);
    EXPECT_TRUE(read_with_dbfread(target).empty());
    write_file("out/shop.dbf", "something dear");
    EXPECT_EQ(export_to_folder({"shop", "--yes"}).status, 0);
    EXPECT_TRUE(read_with_dbfread(target).empty());
}

TEST_F(ExportCommand, NamesThatAreCutAreSaidAndThoseThatThenMeetAreRefusedUnlessRenamed) {
    call("createtable('LONG1', {{'DELIVERY_ADDRESS', 'C', 10, 0}})");
    const Finished cut = export_to_folder({"long1"});
    EXPECT_EQ(cut.status, 0);
    EXPECT_EQ(cut.err, "warning: LONG1: the column DELIVERY_ADDRESS becomes the field DELIVERY_A\n");
    call("createtable('LONG2', {{'DELIVERY_ADDRESS', 'C', 10, 0}, {'DELIVERY_AREA', 'C', 3, 0}})");
    const Finished met = export_to_folder({"long2"});
    EXPECT_EQ(met.status, 1);
    EXPECT_EQ(met.err,
              "error: LONG2 cannot be exported\n"
              "  the columns DELIVERY_ADDRESS and DELIVERY_AREA would both become the field DELIVERY_A\n"
              "hint: --rename OLD=NEW gives a column another name\n");
    EXPECT_EQ(dbf_files(), std::vector<std::string>{"long1.dbf"});
    const Finished renamed = export_to_folder({"long2", "--rename", "delivery_area=area"});
    EXPECT_EQ(renamed.status, 0) << renamed.err;
    EXPECT_NE(read_file(folder_out + "/long2.dbf").find("AREA"), std::string::npos);
}

TEST_F(ExportCommand, ColumnsRowsAndOrderAreThoseThatAreWanted) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}, {'CITY', 'C', 10, 0}, {'CODE', 'N', 4, 0}})");
    for (const char* row : {"('Ana', 'Cork', 1)", "('Bea', 'Köln', 2)", "('Cem', 'Bonn', 3)"})
        exec(std::string("insert into shop (name, city, code) values ") + row);
    ASSERT_EQ(export_to_folder({"shop", "--columns", "code,\"NAME\"", "--where", "code > 1 -- not Ana",
                                "--order", "name desc"})
                  .status,
              0);
    EXPECT_EQ(read_with_dbfread(folder_out + "/shop.dbf"), (DbfRecords{{"3", "Cem"}, {"2", "Bea"}}));
    const Finished run = export_to_folder({"shop", "--columns", "code,nosuch"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: SHOP has no column nosuch\n");
}

TEST_F(ExportCommand, RecordsAreInTheOrderOfTheirNumbersWhenNothingIsSaid) {
    call("createtable('SHOP', {{'CODE', 'N', 4, 0}})");
    for (const char* code : {"1", "2", "3"})
        exec(std::string("insert into shop (code) values (") + code + ")");
    exec("update shop set recno = 0.5 where code = 3");
    ASSERT_EQ(export_to_folder({"shop"}).status, 0);
    EXPECT_EQ(read_with_dbfread(folder_out + "/shop.dbf"), (DbfRecords{{"3"}, {"1"}, {"2"}}));
}

TEST_F(ExportCommand, AQueryBecomesAFile) {
    on(path, {"import", ZMFB_EXAMPLE_DBF});
    const Finished run = export_to_folder({"--query",
                                           "select city, count(*) as many from customers where credit > 0 "
                                           "group by city order by city",
                                           "--table", "cities"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("cities -> " + folder_out + "/cities.dbf: ")) << run.out;
    EXPECT_EQ(read_with_dbfread(folder_out + "/cities.dbf").front(),
              (std::vector<std::string>{"Austin", "1"}));
    const std::pair<std::vector<std::string>, std::string> wrong[] = {
        {{"--query", "select 1 from rdb$database"}, "--table names the file of what --query gives"},
        {{"customers", "--table", "x"}, "--table goes with --query"},
        {{"--all", "customers"}, "name tables, or give --all, or a --query"},
        {{}, "name tables, or give --all, or a --query"},
        {{"--query", "select 1 from rdb$database", "--table", "x", "--where", "1 = 1"},
         "--columns, --where and --order are for tables; the query has its own"},
        {{"customers", "--encoding", "nosuch"}, "there is no encoding nosuch"},
        {{"customers", "--rename", "name"}, "--rename name: not OLD=NEW"},
        {{"customers", "--columns", "name, ,code"}, "--columns name, ,code: a name is missing"},
        {{"--query", "", "--table", "x"}, "--query: may not be empty"},
        {{"--query", "select 1 from rdb$database", "--table", ""}, "--table: may not be empty"}};
    for (const auto& [words, message] : wrong) {
        const Finished refused = export_to_folder(words);
        EXPECT_EQ(refused.status, 2) << message;
        EXPECT_TRUE(refused.err.starts_with("error: " + message)) << refused.err;
    }
}

TEST_F(ExportCommand, TheNameOfTheFileOfAQueryMayHaveItsEnding) {
    for (const char* name : {"one", "two.dbf", "THREE.DBF"})
        EXPECT_EQ(export_to_folder({"--query", "select 1 as n from rdb$database", "--table", name}).status,
                  0);
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"THREE.dbf", "one.dbf", "two.dbf"}));
}

TEST_F(ExportCommand, ARenameOfNoColumnIsRefusedBeforeAnythingIsWritten) {
    call("createtable('SHOP1', {{'NAME', 'C', 10, 0}})");
    call("createtable('SHOP2', {{'CITY', 'C', 10, 0}})");
    const Finished run = export_to_folder({"shop1", "shop2", "--rename", "town=city"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: there is no column TOWN, which --rename TOWN=CITY names\n");
    EXPECT_TRUE(written().empty());
    EXPECT_EQ(export_to_folder({"shop1", "shop2", "--rename", "city=town"}).status, 0);
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"shop1.dbf", "shop2.dbf"}));
}

TEST_F(ExportCommand, ColumnsOfOneNameAreRefusedWithAWayOut) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    EXPECT_EQ(export_to_folder({"shop", "--columns", "name,name"}).err,
              "error: SHOP cannot be exported\n  there is more than one column NAME\n");
    EXPECT_EQ(export_to_folder({"--query", "select 1, 2 from rdb$database", "--table", "x"}).err,
              "error: x cannot be exported\n  there is more than one column CONSTANT\n"
              "hint: AS gives a column of a query another name\n");
}

TEST_F(ExportCommand, ATableThatIsNamedTwiceIsWrittenOnce) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    const Finished run = export_to_folder({"SHOP", "shop*", "SHOP"});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(lines(run.out).size(), 1U) << run.out;
}

TEST_F(ExportCommand, AStatementThatIsNoQueryIsRefused) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    EXPECT_EQ(export_to_folder({"--query", "delete from shop", "--table", "x"}).err,
              "error: the statement returns no rows: exec runs such statements\n");
    const Finished wrong = export_to_folder({"--query", "select nosuch from shop", "--table", "x"});
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(wrong.err.starts_with("error: x was not exported\n  Dynamic SQL Error\n")) << wrong.err;
    EXPECT_TRUE(written().empty());
}

TEST_F(ExportCommand, PatternsAndAllMeanTheTablesOfTheApplication) {
    call("createtable('SHOP1', {{'NAME', 'C', 10, 0}})");
    call("createtable('SHOP2', {{'NAME', 'C', 10, 0}})");
    exec("create table other (name char(5) not null)");
    exec("create view shop_view as select name from shop1");
    exec("create table \"Odd one\" (name char(5) not null)");
    EXPECT_EQ(export_to_folder({"shop*"}).status, 0);
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"SHOP1.dbf", "SHOP2.dbf", "SHOP_VIEW.dbf"}));
    const Finished all = export_to_folder({"--all", "--yes"});
    EXPECT_EQ(all.status, 0) << all.err;
    EXPECT_EQ(all.out.find("RDDSYS"), std::string::npos) << all.out;
    EXPECT_EQ(lines(all.out).size(), 4U) << all.out;
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"OTHER.dbf", "Odd one.dbf", "SHOP1.dbf", "SHOP2.dbf",
                                                     "SHOP_VIEW.dbf"}));
}

// An import that runs, or was cut off, has not brought its rows in.
TEST_F(ExportCommand, AllAndPatternsLeaveOutWhatIsNoTableOfTheApplication) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    exec("create table rddsys_mine (name char(5) not null)");
    exec("create global temporary table shop_now (name char(5) not null)");
    for (const char* name : {"shop_unfinished", "shop_loaded"})
        exec(std::string("create table ") + name + " (name char(5) not null)");
    exec("comment on table shop_unfinished is 'Unfinished import for ZMRDDFIRE 4711'");
    exec("comment on table shop_loaded is 'Loaded import for ZMRDDFIRE 4711'");
    EXPECT_EQ(export_to_folder({"--all"}).status, 0);
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"RDDSYS_MINE.dbf", "SHOP.dbf"}));
    EXPECT_EQ(export_to_folder({"sh*", "--yes"}).status, 0);
    EXPECT_EQ(dbf_files(), (std::vector<std::string>{"RDDSYS_MINE.dbf", "SHOP.dbf"}));
}

}  // namespace
}  // namespace zmfb::test
