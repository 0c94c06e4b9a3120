
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/dbf_readers.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ExportCommand : public Tool {
  protected:
    ExportCommand() : path(database()), folder_out(file("out")) {
        std::filesystem::create_directory(folder_out);
    }
    Finished call(const std::string& line) const { return on(path, {"call", line}); }
    Finished exec(const std::string& statement) const { return on(path, {"exec", statement}); }
    Finished export_to_folder(const std::string& table, const std::string& input = "") const {
        return on(path, {"export", table, "-o", folder_out}, input);
    }
    /// What lies in the folder of the exports, sorted.
    std::vector<std::string> written() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_out))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    std::string path;
    std::string folder_out;
};

TEST_F(ExportCommand, PrintsAnObjectPerTableAsJson) {
    on(path, {"import", "--skip-deleted", ZMFB_EXAMPLE_DBF});
    const Finished run = on(path, {"--json", "export", "customers", "--keep-data-file", "-o", folder_out});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto said = nlohmann::json::parse(run.out);
    EXPECT_EQ(said.at("table"), "CUSTOMERS");
    EXPECT_EQ(said.at("file"), folder_out + "/customers.dbf");
    EXPECT_EQ(said.at("records"), 9);
    EXPECT_EQ(said.at("fields"), 6);
    EXPECT_GT(said.at("seconds").get<double>(), 0);
    EXPECT_TRUE(std::filesystem::remove(said.at("data_file").get<std::string>()));
}

TEST_F(ExportCommand, RefusesADatabaseOfWideCharactersAndKeepsTheFileThatIsThere) {
    on(path, {"import", "--skip-deleted", ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(export_to_folder("customers").status, 0);
    const std::string before = read_file(folder_out + "/customers.dbf");
    exec("alter database set default character set UTF8");
    const Finished run = on(path, {"export", "customers", "--yes", "-o", folder_out});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(
        run.err,
        "error: CUSTOMERS cannot be exported\n  the database's default character set UTF8 takes up to 4 "
        "bytes a character; DBF files go in and out of databases where it takes one\n");
    EXPECT_EQ(read_file(folder_out + "/customers.dbf"), before);
    EXPECT_EQ(written(), std::vector<std::string>{"customers.dbf"});
}

TEST_F(ExportCommand, WritesAFileThatAnotherReaderUnderstands) {
    on(path, {"import", "--skip-deleted", ZMFB_EXAMPLE_DBF});
    const Finished run = export_to_folder("customers");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.starts_with("CUSTOMERS -> " + folder_out + "/customers.dbf: 9 records, 6 fields, "))
        << run.out;
    EXPECT_EQ(written(), std::vector<std::string>{"customers.dbf"});
    DbfRecords expected = read_with_dbfread(ZMFB_EXAMPLE_DBF);
    expected[6][3] = "0.0";  // a number of blanks came in as 0
    EXPECT_EQ(read_with_dbfread(folder_out + "/customers.dbf"), expected);
}

TEST_F(ExportCommand, TheFileIsNamedAsTheTableIsGivenAndLiesInTheCurrentFolderWithoutAnother) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    exec("insert into shop (name) values ('Ana')");
    const Finished run = zmfb_in(folder_out, {"--db", path, "export", "SHOP", "shop"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(written(), (std::vector<std::string>{"SHOP.dbf", "shop.dbf"}));
    EXPECT_TRUE(run.out.starts_with("SHOP -> SHOP.dbf: 1 record, 1 field, ")) << run.out;
    EXPECT_EQ(read_with_dbfread(folder_out + "/shop.dbf"), (DbfRecords{{"Ana"}}));
}

TEST_F(ExportCommand, ATableThatIsNotThereIsRefusedAndTheOthersGoOn) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    const Finished run = on(path, {"export", "nosuch", "shop", "-o", folder_out});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "error: there is no table nosuch\n");
    EXPECT_EQ(written(), std::vector<std::string>{"shop.dbf"});
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
    const Finished refused = export_to_folder("shop", "n\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Replace " + target + "? [y/N] error: " + target +
                               " is there already\n"
                               "  Nothing was changed. --yes replaces it without asking.\n");
    EXPECT_EQ(read_file(target), "something dear");
    EXPECT_EQ(export_to_folder("shop", "y\n").status, 0);
    EXPECT_TRUE(read_with_dbfread(target).empty());
    write_file("out/shop.dbf", "something dear");
    EXPECT_EQ(on(path, {"export", "shop", "--yes", "-o", folder_out}).status, 0);
    EXPECT_TRUE(read_with_dbfread(target).empty());
}

TEST_F(ExportCommand, NamesThatAreCutAreSaidAndThoseThatThenMeetAreRefused) {
    call("createtable('LONG1', {{'DELIVERY_ADDRESS', 'C', 10, 0}})");
    const Finished cut = export_to_folder("long1");
    EXPECT_EQ(cut.status, 0);
    EXPECT_EQ(cut.err, "warning: LONG1: the column DELIVERY_ADDRESS becomes the field DELIVERY_A\n");
    call("createtable('LONG2', {{'DELIVERY_ADDRESS', 'C', 10, 0}, {'DELIVERY_AREA', 'C', 3, 0}})");
    const Finished met = export_to_folder("long2");
    EXPECT_EQ(met.status, 1);
    EXPECT_EQ(met.err,
              "error: LONG2 cannot be exported\n"
              "  the columns DELIVERY_ADDRESS and DELIVERY_AREA would both become the field DELIVERY_A\n");
    EXPECT_EQ(written(), std::vector<std::string>{"long1.dbf"});
}

TEST_F(ExportCommand, ValuesThatDoNotFitAreCountedAndNothingIsWritten) {
    call("createtable('PRICES', {{'PRICE', 'N', 6, 2}})");
    for (const char* value : {"1.5", "-12345.67", "1234567.89"})
        exec(std::string("insert into prices (price) values (") + value + ")");
    const Finished run = export_to_folder("prices");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "error: PRICES cannot be exported\n"
              "  values of PRICE that need more than its 6 characters: 2\n");
    EXPECT_TRUE(written().empty());
}

TEST_F(ExportCommand, WhatADbfFileCannotHoldIsNamed) {
    exec("create table foreign1 (note blob sub_type text, born date)");
    EXPECT_EQ(export_to_folder("foreign1").err,
              "error: FOREIGN1 cannot be exported\n"
              "  the column NOTE has a type that a DBF file cannot hold\n"
              "  the column BORN has a type that a DBF file cannot hold\n");
    exec("create table foreign2 (name char(5), seen timestamp)");
    exec("insert into foreign2 values (null, '2007-03-01')");
    EXPECT_EQ(export_to_folder("foreign2").err,
              "error: FOREIGN2 cannot be exported\n"
              "  values of NAME that are NULL, which a DBF file does not have: 1\n");
    exec("delete from foreign2");
    exec("insert into foreign2 values ('Ana', '2007-03-01 12:30')");
    const Finished run = export_to_folder("foreign2");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "warning: FOREIGN2: values of SEEN that lose their time of day: 1\n");
    EXPECT_EQ(read_with_dbfread(folder_out + "/foreign2.dbf"), (DbfRecords{{"Ana", "2007-03-01"}}));
}

TEST_F(ExportCommand, TheDataFileIsRemovedUnlessItIsToBeKept) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    exec("insert into shop (name) values ('Ana')");
    EXPECT_EQ(export_to_folder("shop").status, 0);
    const Finished kept = on(path, {"export", "shop", "-y", "-o", folder_out, "--keep-data-file"});
    const std::string said = lines(kept.out).at(1);
    ASSERT_TRUE(said.starts_with("data file: /tmp/zmrdd")) << kept.out;
    const std::string data_file = said.substr(11);
    EXPECT_EQ(read_file(data_file), "Ana       \n");
    std::filesystem::remove(data_file);
}

TEST_F(ExportCommand, AnExternalTableThatAnEarlierRunLeftIsNamedAndDropped) {
    call("createtable('SHOP', {{'NAME', 'C', 10, 0}})");
    call("createtableexternal('EXT_SHOP', {{'NAME', 'C', 10, 0}}, '/tmp/zmrdd-left-by-a-test.dat')");
    const Finished run = export_to_folder("shop");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "note: dropped the external table EXT_SHOP that an earlier run had left\n");
    EXPECT_EQ(call("istable('EXT_SHOP')").out, ".F.\n");
}

}  // namespace
}  // namespace zmfb::test
