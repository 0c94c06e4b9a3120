// What an import may replace, and what it says of it.
#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>

#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportReplace : public Tool {
  protected:
    ImportReplace() : path(database()) {}
    Finished import(const std::string& name, const std::vector<std::string>& options = {"--yes"},
                    const std::string& input = "") const {
        DbfBuilder().field("NAME", 'C', 8).record({"Ana"}).write(file(name));
        std::vector<std::string> words{"import", file(name), "--replace"};
        words.insert(words.end(), options.begin(), options.end());
        return on(path, words, input);
    }
    std::string path;
};

TEST_F(ImportReplace, WhatTheDriverDidNotMakeOrNeedsIsKept) {
    exec(path, "create table ledger (amount integer)");
    exec(path, "create view sums as select amount from ledger");
    const std::pair<std::string, std::string> cases[] = {
        {"ledger", "LEDGER is there already and was not made by the driver"},
        {"sums", "SUMS is there already and is a view"},
        {"rddsys_flk", "RDDSYS_FLK is there already and is the driver's own"},
    };
    for (const auto& [name, reason] : cases) {
        const Finished run = import(name + ".dbf");
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "error: " + file(name + ".dbf") + " was not imported\n  " + reason + "\n");
        EXPECT_TRUE(has_table(path, name)) << name;
    }
}

TEST_F(ImportReplace, WhatCannotBeMadeAgainIsNamedInADryRunToo) {
    DbfBuilder().field("NAME", 'C', 8).field("AGE", 'N', 3).record({"Ana", "1"}).write(file("people.dbf"));
    ASSERT_EQ(on(path, {"import", file("people.dbf")}).status, 0);
    exec(path, "create view ages as select age from people");
    EXPECT_NE(import("people.dbf", {"--dry-run"}).out.find("the table PEOPLE, view AGES would be dropped\n"),
              std::string::npos);
    const Finished asked = import("people.dbf", {}, "n\n");
    EXPECT_TRUE(asked.err.starts_with("Drop the table PEOPLE with its 1 record, view AGES? [y/N] "))
        << asked.err;
    EXPECT_TRUE(has_table(path, "ages"));
}

TEST_F(ImportReplace, ATableThatCannotBeDroppedStays) {
    ASSERT_EQ(import("people.dbf").status, 0);
    forbid(path, "drop table");
    const Finished run = import("people.dbf");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("  not in this database\n"), std::string::npos) << run.err;
    EXPECT_EQ(on(path, {"call", "counttablerecords('PEOPLE')"}).out, "1\n");
}

TEST_F(ImportReplace, TheOldRowsStayWhenTheNewOnesDoNotComeIn) {
    if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
    ASSERT_EQ(import("people.dbf").status, 0);
    const std::string before = on(path, {"tables"}).out;
    constexpr std::uintmax_t room = 512 * 1024;
    const std::uintmax_t limit = std::filesystem::file_size(file("test.fdb")) + room;
    DbfBuilder dbf = DbfBuilder().field("NAME", 'C', 250);
    for (std::uintmax_t size = 0; size < limit + room; size += 250) dbf.record({"name"});
    dbf.write(file("people.dbf"));
    const Finished run = zmfb_after("ulimit -f " + std::to_string(limit / 512),
                                    {"--db", path, "import", file("people.dbf"), "--replace", "--yes"});
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_EQ(on(path, {"tables"}).out, before);
}

// The rows are there twice while they are moved, and there is room for one and a half times as many.
TEST_F(ImportReplace, TheNewRowsStayBesideWhenTheyCannotTakeTheOldOnesPlace) {
    if (on_server()) GTEST_SKIP() << "the server's disk is not that of the tool";
    ASSERT_EQ(import("people.dbf").status, 0);
    constexpr int records = 20000;
    constexpr std::uintmax_t size = records * 250;
    DbfBuilder dbf = DbfBuilder().field("NAME", 'C', 250);
    std::mt19937 random;  // the engine keeps repeated characters in less room
    for (int i = 0; i < records; ++i) {
        std::string name = std::to_string(i) + ' ';
        while (name.size() < 250) name += static_cast<char>('a' + random() % 26);
        dbf.record({name});
    }
    dbf.write(file("people.dbf"));
    const std::uintmax_t limit = std::filesystem::file_size(file("test.fdb")) + size * 3 / 2;
    const std::vector<std::string> words{"--db", path, "import", file("people.dbf"), "--replace", "--yes"};
    const Finished run = zmfb_after("ulimit -f " + std::to_string(limit / 512), words);
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_NE(
        run.err.find("the new ones are whole in Z$PEOPLE, and the next import of PEOPLE brings them in\n"),
        std::string::npos)
        << run.err;
    EXPECT_EQ(on(path, {"import", file("people.dbf")}).status, 1) << "PEOPLE is there";
    EXPECT_EQ(on(path, {"query", "--mode", "csv", "select count(distinct name), max(recno) from PEOPLE"}).out,
              "COUNT,MAX\r\n20000,20000\r\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
}

TEST_F(ImportReplace, ATableWhoseGeneratorsCannotBeDroppedStays) {
    ASSERT_EQ(import("people.dbf").status, 0);
    forbid(path, "drop sequence", "G_PEOPLE");
    const Finished run = import("people.dbf");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("  not in this database\n"), std::string::npos) << run.err;
    EXPECT_EQ(on(path, {"call", "counttablerecords('PEOPLE')"}).out, "1\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
}

TEST_F(ImportReplace, RecordsAreAddedToATableThatHasTheFields) {
    const auto append = [&](const DbfBuilder& dbf) {
        dbf.write(file("people.dbf"));
        return on(path, {"import", file("people.dbf"), "--append"});
    };
    const auto rows = [&] {
        return on(path, {"query", "--mode", "csv", "select trim(name), recno from people order by recno"})
            .out;
    };
    const auto count = [&] { return on(path, {"call", "gettablereccount('PEOPLE')"}).out; };
    DbfBuilder().field("NAME", 'C', 8).field("AGE", 'N', 3).record({"Ana", "1"}).write(file("people.dbf"));
    ASSERT_EQ(on(path, {"import", file("people.dbf")}).status, 0);
    const DbfBuilder more = DbfBuilder().field("NAME", 'C', 5).record({"Bob"}).record({"Eva"});
    const Finished run = append(more);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(rows(), "TRIM,RECNO\r\nAna,1\r\nBob,2\r\nEva,3\r\n");
    EXPECT_EQ(count(), "3\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));

    const Finished other = append(DbfBuilder().field("CITY", 'C', 5).record({"Cork"}));
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.err.find("the table PEOPLE has no field CITY\n"), std::string::npos) << other.err;

    exec(path, "create unique index one_name on people (name)");
    const Finished refused = append(DbfBuilder().field("NAME", 'C', 5).record({"New"}).record({"Bob"}));
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("ONE_NAME"), std::string::npos) << refused.err;
    EXPECT_EQ(rows(), "TRIM,RECNO\r\nAna,1\r\nBob,2\r\nEva,3\r\n");
    EXPECT_EQ(count(), "3\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
    EXPECT_EQ(on(path, {"import", file("people.dbf"), "--append", "--replace"}).status, 2);
}

}  // namespace
}  // namespace zmfb::test
