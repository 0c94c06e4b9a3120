// The list of an export, and the import that is compared with it.
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/dialogue.h"
#include "tests/support/environment.h"
#include "tests/support/process.h"
#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

namespace fs = std::filesystem;

class Manifest : public ExportFolder {
  protected:
    Manifest() : list(folder_out + "/list.json") {
        on(path, {"import", ZMFB_EXAMPLE_DBF});
        exec(
            "create table letters (id integer not null, at_time timestamp, price numeric(9, 2), "
            "known boolean, body blob sub_type text, raw varchar(5) character set octets, ratio double "
            "precision)");
        exec(
            "insert into letters values (1, '2007-03-01 10:11:12.345', -12.50, true, 'long é', x'00FF', "
            "0.1)");
        exec("insert into letters values (2, null, null, null, null, null, null)");
    }
    [[nodiscard]] nlohmann::json read_list() const { return nlohmann::json::parse(read_file(list)); }
    Finished export_all(const std::string& format = "vfp") const {
        return export_to_folder({"--all", "--yes", "--format", format, "--manifest", list});
    }
    // A second database, and the import of the files into it.
    Finished import_anew(std::vector<std::string> words) const {
        if (!fs::exists(file("second.fdb"))) on(second(), {"create"});
        words.insert(words.begin(), {"import", "--manifest", list});
        return on(second(), words);
    }
    [[nodiscard]] std::string second() const { return as_database("second.fdb"); }
    std::string list;
};

TEST_F(Manifest, NamesEachFileWithItsSumAsAnotherProgramFindsIt) {
    const Finished run = export_all();
    ASSERT_EQ(run.status, 0) << run.err;
    const auto files = read_list().at("files");
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].at("table"), "CUSTOMERS");
    EXPECT_EQ(files[0].at("file"), "CUSTOMERS.dbf");
    EXPECT_EQ(files[0].at("records"), 10);
    EXPECT_FALSE(files[0].contains("memo"));
    EXPECT_EQ(files[1].at("memo"), "LETTERS.fpt");
    const auto sum_of = [&](const std::string& name) {
        return test::run({"sha256sum", folder_out + "/" + name}).out.substr(0, 64);
    };
    EXPECT_EQ(files[0].at("sha256"), sum_of("CUSTOMERS.dbf"));
    EXPECT_EQ(files[1].at("memo_sha256"), sum_of("LETTERS.fpt"));
    EXPECT_EQ(files[1].at("values_sha256").get<std::string>().size(), 64U);
}

TEST_F(Manifest, ThatCannotBeWrittenIsSaidBeforeAnythingIs) {
    fs::create_directory(file("folder"));
    for (const auto& [place, reason] : {std::pair(file("nowhere/list.json"), "No such file or directory"),
                                        {file("folder"), "Is a directory"}}) {
        const Finished run = export_to_folder({"--all", "--format", "vfp", "--manifest", place});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "error: cannot write " + place + ": " + reason + "\n");
        EXPECT_TRUE(written().empty());
    }
}

TEST_F(Manifest, TakesNoPlaceOfAFileOfTheExport) {
    for (const char* name : {"CUSTOMERS.dbf", "LETTERS.fpt", "../out/CUSTOMERS.cpg"}) {
        const std::string place = folder_out + "/" + name;
        const Finished run = export_to_folder({"--all", "--format", "vfp", "--manifest", place});
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, "error: --manifest " + place + ": a file of the export is to be there\n");
        EXPECT_TRUE(written().empty());
    }
}

TEST_F(Manifest, WhatCameOutOfADatabaseIsTheSameInAnother) {
    ASSERT_EQ(export_all().status, 0);
    const Finished run = import_anew({});
    EXPECT_EQ(run.status, 0) << run.err << run.out;
    EXPECT_NE(run.out.find("\nthe records and values that were exported\n"), std::string::npos) << run.out;
    EXPECT_EQ(on(second(), {"query", "--mode", "csv", "select count(*) from letters"}).out, "COUNT\r\n2\r\n");
    // What goes out of that one has the same values, with other types behind them.
    const std::string values = read_list()["files"][1]["values_sha256"];
    ASSERT_EQ(
        on(second(), {"export", "--all", "--yes", "--format", "vfp", "-o", folder_out, "--manifest", list})
            .status,
        0);
    EXPECT_EQ(read_list()["files"][1]["values_sha256"], values);
}

TEST_F(Manifest, ATableThatIsNotWhatWasExportedIsSaid) {
    ASSERT_EQ(export_all().status, 0);
    ASSERT_EQ(import_anew({}).status, 0);
    Tool::exec(second(),
               "create trigger changes on transaction commit as begin "
               "execute statement 'update letters set price = 0.01 where id = 1 and price <> 0.01'; "
               "execute statement 'delete from customers where code = 5'; when any do begin end end");
    const Finished run = import_anew({"--replace", "--yes"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("CUSTOMERS.dbf was imported, but does not hold what was exported\n"
                           "  CUSTOMERS has 9 records, and 10 were exported\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("  LETTERS has other values than were exported\n"), std::string::npos) << run.err;
}

TEST_F(Manifest, FilesThatAreNotThoseThatWereExportedAreRefused) {
    ASSERT_EQ(export_all().status, 0);
    std::string bytes = read_file(folder_out + "/CUSTOMERS.dbf");
    bytes[bytes.size() - 4] ^= 1;
    write_file("out/CUSTOMERS.dbf", bytes);
    fs::remove(folder_out + "/LETTERS.fpt");
    const Finished run = import_anew({folder_out});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("CUSTOMERS.dbf is not the file that was exported: its checksum differs\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(
        run.err.find("LETTERS.dbf has not the memo file " + folder_out + "/LETTERS.fpt that was exported\n"),
        std::string::npos)
        << run.err;
    EXPECT_EQ(on(second(), {"tables"}).out.find("CUSTOMERS"), std::string::npos);
}

TEST_F(Manifest, AllThatWasExportedHasToBeAmongTheFiles) {
    ASSERT_EQ(export_all().status, 0);
    const Finished less = import_anew({folder_out + "/LETTERS.dbf"});
    EXPECT_EQ(less.status, 1);
    EXPECT_EQ(less.err, "error: CUSTOMERS.dbf was exported, and is not among the files\n");
    const Finished more = import_anew({folder_out, ZMFB_EXAMPLE_DBF});
    EXPECT_EQ(more.status, 1);
    EXPECT_NE(more.err.find("customers.dbf is not in the manifest\n"), std::string::npos) << more.err;
    for (const std::string rest : {"-1", "1.5", "1e30", "\"1\"", R"(1, "memo": "a.fpt")"}) {
        write_file("out/list.json", R"({"zmfb_manifest": 1, "files": [{"table": "A", "file": "a.dbf", )"
                                    R"("sha256": "", "records": )" +
                                        rest + "}]}");
        EXPECT_TRUE(import_anew({}).err.starts_with("error: " + list + " is no manifest of an export\n"))
            << rest;
    }
    write_file("out/list.json", "{}");
    EXPECT_TRUE(import_anew({}).err.starts_with("error: " + list + " is no manifest of an export\n"));
    fs::remove(list);
    EXPECT_EQ(import_anew({}).err, "error: cannot read " + list + "\n  No such file or directory\n");
    EXPECT_EQ(on(second(), {"import"}).err, "error: name a file, or a --manifest\n");
}

TEST_F(Manifest, IsNotWrittenWhenATableWasRefused) {
    exec("create table holes (name char(5))");
    exec("insert into holes values (null)");
    const Finished run = export_all("dbase3");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("\nno manifest was written, since not all is in the files\n"), std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(list));
    const Finished lossy = export_to_folder({"holes", "customers", "--lossy", "--yes", "--manifest", list});
    ASSERT_EQ(lossy.status, 0) << lossy.err;
    EXPECT_FALSE(read_list()["files"][0].contains("values_sha256"));
    EXPECT_TRUE(read_list()["files"][1].contains("values_sha256"));
    const Finished back = import_anew({});
    EXPECT_EQ(back.status, 0) << back.err;
    EXPECT_NE(
        back.out.find("\nas many records as were exported; values were converted then, and not compared\n"),
        std::string::npos)
        << back.out;
}

TEST_F(Manifest, FilesOfOneExportAreOfOneMoment) {
    write_file("out/letters.dbf", "asks before it is replaced");
    Dialogue talk(command({"--db", path, "export", "customers", "letters", "--format", "vfp", "-o",
                           folder_out, "--manifest", list}));
    talk.expect("Replace ");
    exec("insert into letters (id) values (3)");
    talk.type("y\n");
    talk.expect("letters.dbf: 2 records");
    EXPECT_EQ(talk.end(), 0);
    EXPECT_EQ(read_list()["files"][1]["records"], 2);
}

}  // namespace
}  // namespace zmfb::test
