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

TEST_F(ImportReplace, TheViewsThatGoWithATableAreNamed) {
    ASSERT_EQ(import("people.dbf").status, 0);
    exec(path, "create view names as select name from people");
    const std::string with = "and the views built on it (NAMES)";
    EXPECT_NE(
        import("people.dbf", {"--dry-run"}).out.find("the table PEOPLE " + with + " would be dropped\n"),
        std::string::npos);
    const Finished asked = import("people.dbf", {}, "n\n");
    EXPECT_TRUE(asked.err.starts_with("Drop the table PEOPLE with its 1 record " + with + "? [y/N] "))
        << asked.err;
    EXPECT_TRUE(has_table(path, "names"));
    EXPECT_EQ(import("people.dbf", {}, "y\n").status, 0);
    EXPECT_FALSE(has_table(path, "names"));
}

TEST_F(ImportReplace, ATableThatCannotBeDroppedStays) {
    ASSERT_EQ(import("people.dbf").status, 0);
    forbid(path, "drop table");
    const Finished run = import("people.dbf");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(" was not imported\n  PEOPLE was not dropped\n"), std::string::npos) << run.err;
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
    EXPECT_NE(run.err.find("the table PEOPLE is dropped; the new records are whole in the table Z$PEOPLE\n"),
              std::string::npos)
        << run.err;
    EXPECT_FALSE(has_table(path, "PEOPLE"));
    EXPECT_EQ(
        on(path, {"query", "--mode", "csv", "select count(distinct name), max(recno) from Z$PEOPLE"}).out,
        "COUNT,MAX\r\n20000,20000\r\n");
    ASSERT_EQ(import("people.dbf").status, 0) << "the name is free again";
    const Finished again = import("people.dbf");
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.err.find("the table Z$PEOPLE is there, with the records of an import that was cut off; "
                             "drop it first\n"),
              std::string::npos)
        << again.err;
    EXPECT_EQ(on(path, {"drop", "--yes", "Z$PEOPLE"}).status, 0);
    EXPECT_EQ(import("people.dbf").status, 0);
}

TEST_F(ImportReplace, IndexesAndGrantsComeBackAndThoseThatCannotAreNamed) {
    DbfBuilder().field("NAME", 'C', 8).field("AGE", 'N', 3).record({"Ana", "1"}).write(file("people.dbf"));
    ASSERT_EQ(on(path, {"import", file("people.dbf")}).status, 0);
    exec(path, "create descending index by_name on people (name)");
    exec(path, "create index by_age on people (age)");
    exec(path, "create index by_upper on people computed by (upper(name))");
    exec(path, "grant select, insert on people to anna with grant option");
    exec(path, "grant update (name) on people to otto");
    const Finished asked = import("people.dbf", {}, "n\n");
    EXPECT_TRUE(
        asked.err.starts_with("Drop the table PEOPLE with its 1 record, index BY_AGE, index BY_UPPER, "
                              "a right of OTTO? [y/N] "))
        << asked.err;
    ASSERT_EQ(import("people.dbf").status, 0);
    const auto query = [&](const std::string& text) {
        return on(path, {"query", "--mode", "csv", text}).out;
    };
    EXPECT_EQ(query("select trim(rdb$index_name), rdb$index_type from rdb$indices where rdb$relation_name = "
                    "'PEOPLE' and rdb$index_name starting with 'BY_'"),
              "TRIM,RDB$INDEX_TYPE\r\nBY_NAME,1\r\n");
    EXPECT_EQ(
        query("select trim(rdb$user), trim(rdb$privilege), rdb$grant_option from rdb$user_privileges where "
              "rdb$relation_name = 'PEOPLE' and rdb$user <> 'SYSDBA' order by 1, 2"),
        "TRIM,TRIM,RDB$GRANT_OPTION\r\nANNA,I,1\r\nANNA,S,1\r\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
}

TEST_F(ImportReplace, GeneratorsThatStayAreTold) {
    ASSERT_EQ(import("people.dbf").status, 0);
    forbid(path, "drop sequence");
    const Finished run = import("people.dbf");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(" was not imported\n  PEOPLE was dropped, but not its generators\n"),
              std::string::npos)
        << run.err;
    EXPECT_FALSE(has_table(path, "people"));
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
