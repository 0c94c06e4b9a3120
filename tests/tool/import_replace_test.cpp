// What an import may replace, and what it says of it.
#include <nlohmann/json.hpp>

#include "tests/support/dbf_builder.h"
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
    bool is_there(const std::string& table) const {
        return on(path, {"call", "istable('" + table + "')"}).out == ".T.\n";
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
        EXPECT_TRUE(is_there(name)) << name;
    }
}

TEST_F(ImportReplace, TheViewsThatGoWithATableAreNamed) {
    ASSERT_EQ(import("people.dbf").status, 0);
    exec(path, "create view names as select name from people");
    const std::string with = "and the views built on it (NAMES)";
    EXPECT_NE(import("people.dbf", {"--dry-run"})
                  .out.find("the table PEOPLE " + with + " would be dropped first\n"),
              std::string::npos);
    const Finished asked = import("people.dbf", {}, "n\n");
    EXPECT_TRUE(asked.err.starts_with("Drop the table PEOPLE with its 1 record " + with + "? [y/N] "))
        << asked.err;
    EXPECT_TRUE(is_there("names"));
    EXPECT_EQ(import("people.dbf", {}, "y\n").status, 0);
    EXPECT_FALSE(is_there("names"));
}

TEST_F(ImportReplace, ATableThatCannotBeDroppedStays) {
    ASSERT_EQ(import("people.dbf").status, 0);
    forbid(path, "drop table");
    const Finished run = import("people.dbf");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("error: PEOPLE was not dropped\n"), std::string::npos) << run.err;
    EXPECT_TRUE(run.err.ends_with("  not in this database\n")) << run.err;
    EXPECT_EQ(on(path, {"call", "counttablerecords('PEOPLE')"}).out, "1\n");
}

TEST_F(ImportReplace, GeneratorsThatStayAreTold) {
    ASSERT_EQ(import("people.dbf").status, 0);
    forbid(path, "drop sequence");
    const Finished run = import("people.dbf");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("error: PEOPLE was dropped, but not its generators\n"), std::string::npos)
        << run.err;
    EXPECT_FALSE(is_there("people"));
}

}  // namespace
}  // namespace zmfb::test
