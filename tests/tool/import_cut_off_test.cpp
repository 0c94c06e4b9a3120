// What imports that were cut off leave, what is said of it, and what the next one makes of it.
#include "tests/support/dbf_builder.h"
#include "tests/support/environment.h"
#include "tests/tool/big_table.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportCutOff : public Tool {
  protected:
    ImportCutOff() : path(database()) {
        DbfBuilder().field("NAME", 'C', 8).record({"Ana"}).write(file("people.dbf"));
        EXPECT_EQ(on(path, {"import", file("people.dbf")}).status, 0);
        DbfBuilder().field("NAME", 'C', 8).record({"Bob"}).record({"Eva"}).write(file("people.dbf"));
    }
    Finished import(const std::string& how) const {
        return on(path, {"import", file("people.dbf"), how, "--yes"});
    }
    // As one that is killed while it adds rows: the engine has counted them.
    void kill_while_adding() const {
        exec(path, "create table Z$PEOPLE (name char(8), recno double precision)");
        exec(path,
             "insert into Z$PEOPLE select name, recno + 1 from people union all select name, 3 from people");
        exec(path, "comment on table Z$PEOPLE is 'Loaded import for ZMRDDFIRE, to be added'");
        on(path, {"query", "select gen_id(G_PEOPLE_I, 2) from rdb$database"});
    }
    [[nodiscard]] std::string names() const {
        return on(path, {"query", "--mode", "csv", "select trim(name), recno from people order by recno"})
            .out;
    }
    [[nodiscard]] std::string told(const std::string& table) const {
        for (const std::string& line : lines(on(path, {"tables"}).out)) {
            if (!line.starts_with(table + " ")) continue;
            const std::size_t kind = line.find_first_not_of(' ', table.size());
            return line.substr(kind, line.find(' ', kind) - kind) + line.substr(line.rfind(' '));
        }
        return "";
    }
    [[nodiscard]] std::string count() const { return on(path, {"call", "gettablereccount('PEOPLE')"}).out; }
    std::string path;
};

TEST_F(ImportCutOff, TheOldRowsStayWhenTheNewOnesCannotHaveAnIndex) {
    exec(path, "create unique index by_name on people (name)");
    DbfBuilder().field("NAME", 'C', 8).record({"Bob"}).record({"Bob"}).write(file("people.dbf"));
    const Finished run = import("--replace");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(
        run.err.ends_with("in unique index \"BY_NAME\"\n  Problematic key value is (\"NAME\" = 'Bob')\n"))
        << run.err;
    EXPECT_EQ(names(), "TRIM,RECNO\r\nAna,1\r\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
}

// As one that is killed between the old table and the new one.
TEST_F(ImportCutOff, RowsWhoseTableWasDroppedForThemAreBroughtInByTheNextImport) {
    exec(path, "create index by_name on people (name)");
    forbid(path, "create trigger", "T_PEOPLE");
    const Finished run = import("--replace");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(
        run.err.find("the old records are gone; the new ones are whole in Z$PEOPLE, and the next import of "
                     "PEOPLE brings them in\n"),
        std::string::npos)
        << run.err;
    EXPECT_EQ(told("PEOPLE"), "unfinished 0");
    EXPECT_EQ(told("Z$PEOPLE"), "loaded 2");
    const std::string doctor = on(path, {"doctor"}).out;
    EXPECT_NE(doctor.find("Z$PEOPLE has the records of an import of PEOPLE that was cut off"),
              std::string::npos)
        << doctor;
    exec(path, "drop trigger forbids");
    const Finished dry = on(path, {"import", file("people.dbf"), "--dry-run"});
    EXPECT_EQ(dry.status, 1);
    EXPECT_NE(dry.out.find("this one would bring them in first\n"), std::string::npos) << dry.out;
    EXPECT_NE(dry.err.find("the table PEOPLE is there already"), std::string::npos) << dry.err;
    const Finished plain = on(path, {"import", file("people.dbf")});
    EXPECT_EQ(plain.status, 1);
    EXPECT_NE(plain.err.find("the table PEOPLE is there already"), std::string::npos) << plain.err;
    EXPECT_NE(plain.err.find(
                  "note: an earlier import was cut off while its records came into PEOPLE: they are there "
                  "now\n"),
              std::string::npos)
        << plain.err;
    EXPECT_EQ(names(), "TRIM,RECNO\r\nBob,1\r\nEva,2\r\n");
    EXPECT_EQ(told("PEOPLE"), "driver 2");
    EXPECT_EQ(count(), "2\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
    EXPECT_NE(on(path, {"struct", "people"}).out.find("BY_NAME "), std::string::npos);
    const Finished again = import("--replace");
    EXPECT_EQ(again.status, 0) << again.err;
}

// Somebody dropped the table that was being replaced, and not what was to come into it.
TEST_F(ImportCutOff, RowsWhoseTableIsGoneAreKeptUntilTheyAreDropped) {
    forbid(path, "create trigger", "T_PEOPLE");
    EXPECT_EQ(import("--replace").status, 1);
    exec(path, "drop trigger forbids");
    exec(path, "drop table people");
    const std::string refusal =
        "the table Z$PEOPLE has the records of an earlier import that was cut off, and PEOPLE is not there "
        "for them; zmfb drop 'Z$PEOPLE' drops them\n";
    for (const char* how : {"--replace", "--append", "--dry-run"}) {
        const Finished refused = import(how);
        EXPECT_EQ(refused.status, 1) << how;
        EXPECT_NE(refused.err.find(refusal), std::string::npos) << how << "\n" << refused.err;
        EXPECT_EQ(told("Z$PEOPLE"), "loaded 2") << how;
    }
    const Finished dropped = on(path, {"drop", "Z$PEOPLE", "--yes"});
    EXPECT_EQ(dropped.status, 0) << dropped.err;
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
    const Finished anew = on(path, {"import", file("people.dbf")});
    EXPECT_EQ(anew.status, 0) << anew.err;
    EXPECT_EQ(told("PEOPLE"), "driver 2");
}

TEST_F(ImportCutOff, AnIndexThatCannotBeMadeAgainIsTold) {
    exec(path, "create index by_name on people (name)");
    forbid(path, "create trigger", "T_PEOPLE");
    EXPECT_EQ(import("--replace").status, 1);
    exec(path, "drop trigger forbids");
    exec(path, "drop exception forbidden");
    forbid(path, "create index", "BY_NAME");
    const Finished run = import("--append");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("note: not made again: CREATE INDEX \"BY_NAME\""), std::string::npos) << run.err;
    EXPECT_EQ(told("PEOPLE"), "driver 4");
}

TEST_F(ImportCutOff, RowsThatWereCountedAndNotAddedAreTakenOffAgain) {
    kill_while_adding();
    EXPECT_EQ(told("PEOPLE"), "driver 1");
    EXPECT_EQ(told("Z$PEOPLE"), "loaded 2");
    EXPECT_EQ(count(), "3\n") << "the engine's generators have counted them";
    EXPECT_NE(on(path, {"doctor"}).out.find("PEOPLE is counted as 3 records and has 1"), std::string::npos);
    const Finished next = import("--append");
    EXPECT_EQ(next.status, 0) << next.err;
    EXPECT_NE(
        next.err.find("note: an earlier import was cut off before its records came into PEOPLE: they were "
                      "dropped\n"),
        std::string::npos)
        << next.err;
    EXPECT_EQ(told("PEOPLE"), "driver 3");
    EXPECT_EQ(count(), "3\n");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
}

// The rows of those who write may be among the counted ones.
TEST_F(ImportCutOff, WhileOthersWriteAWrongCountStaysAndIsTold) {
    kill_while_adding();
    exec(path, "create table sums (n bigint)");
    const Finished run = while_another(path, {"exec", "insert into sums " + endless_query("sums")},
                                       [this] { return import("--append"); });
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("note: the records of PEOPLE are counted wrong; zmfb doctor says what helps when "
                           "nobody else uses the database\n"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(lines(names()).size(), 4U) << names();
    EXPECT_EQ(count(), "5\n");
    const std::string doctor = on(path, {"doctor"}).out;
    EXPECT_NE(doctor.find("PEOPLE is counted as 5 records and has 3"), std::string::npos) << doctor;
}

TEST_F(ImportCutOff, RowsThatWereAddedStayWhenTheTableBesideCannotBeDropped) {
    forbid(path, "drop table", "Z$PEOPLE");
    const Finished run = import("--append");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err,
              "note: the table Z$PEOPLE could not be dropped; the next import of that name does it\n");
    EXPECT_EQ(told("PEOPLE"), "driver 3");
    EXPECT_EQ(told("Z$PEOPLE"), "unfinished 0");
    exec(path, "drop trigger forbids");
    EXPECT_EQ(import("--append").err, "");
    EXPECT_EQ(told("PEOPLE"), "driver 5");
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
}

TEST_F(ImportCutOff, ATableThatOthersHaveInUseStaysAsItWas) {
    exec(path, "create index by_name on people (name)");
    exec(path, "create view names as select name from people");
    const std::string before = on(path, {"struct", "people"}).out;
    const Finished run =
        while_another(path, {"query", endless_query("people")}, [this] { return import("--replace"); });
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("  the table PEOPLE is in use by another program\n"), std::string::npos)
        << run.err;
    EXPECT_EQ(names(), "TRIM,RECNO\r\nAna,1\r\n");
    EXPECT_EQ(on(path, {"struct", "people"}).out, before);
    EXPECT_EQ(on(path, {"query", "select * from names"}).status, 0);
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
    EXPECT_EQ(import("--replace").err, "");
}

TEST_F(ImportCutOff, ATableThatCannotBeMadeAnewGetsBackWhatItHad) {
    exec(path, "create index by_name on people (name)");
    exec(path, "create view names as select name from people");
    const auto parts = [&] { return lines(on(path, {"struct", "people"}).out).size(); };
    const std::size_t before = parts();
    forbid(path, "create sequence", "G_PEOPLE");
    const Finished run = import("--replace");
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("  not in this database\n"), std::string::npos) << run.err;
    EXPECT_EQ(names(), "TRIM,RECNO\r\nAna,1\r\n");
    EXPECT_EQ(parts(), before);
    EXPECT_EQ(told("PEOPLE"), "driver 1");
    EXPECT_EQ(on(path, {"query", "select * from names"}).status, 0);
    EXPECT_FALSE(has_table(path, "Z$PEOPLE"));
    exec(path, "drop trigger forbids");
    EXPECT_EQ(import("--replace").err, "");
}

TEST_F(ImportCutOff, ATableThatTheImportNeedsTheNameOfStays) {
    exec(path, "create table Z$PEOPLE (dear integer)");
    for (const char* how : {"--replace", "--append"}) {
        const Finished run = import(how);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("the table Z$PEOPLE is there, whose name the import needs\n"),
                  std::string::npos)
            << run.err;
    }
    EXPECT_TRUE(has_table(path, "Z$PEOPLE"));
    const Finished named = on(path, {"import", file("people.dbf"), "--table", "z$other"});
    EXPECT_EQ(named.status, 1);
    EXPECT_NE(named.err.find("tables that begin with Z$ are those that imports load"), std::string::npos);
}

TEST_F(ImportCutOff, GeneratorsThatADroppedTableLeftAreTakenOverAndTold) {
    exec(path, "create generator G_Z$PEOPLE_D");
    const Finished replaced = import("--replace");
    EXPECT_EQ(replaced.status, 0) << replaced.err;
    EXPECT_NE(replaced.out.find("the generator G_Z$PEOPLE_D, of a table that is gone, taken over\n"),
              std::string::npos)
        << replaced.out;
    exec(path, "drop table people");
    const Finished run = on(path, {"import", file("people.dbf")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("the generator G_PEOPLE_I, of a table that is gone, taken over\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(count(), "2\n");
    EXPECT_EQ(on(path, {"query", "--mode", "csv",
                        "select count(*) from rdb$generators where rdb$generator_name starting with 'G_Z$'"})
                  .out,
              "COUNT\r\n0\r\n");
}

TEST_F(ImportCutOff, OfTwoImportsOfOneNameOneIsToldWhoIsAtWork) {
    big_table().write(file("big.dbf"));
    int records = 0;
    for (const std::string how : {"--replace", "--append", "--replace"}) {
        const bool is_new = records == 0;
        std::vector<std::string> words{"import", file("big.dbf"), "--yes", how};
        if (is_new) words.pop_back();
        records = how == "--append" ? records + 300000 : 300000;
        std::vector<std::string> first_words{"--db", path};
        first_words.insert(first_words.end(), words.begin(), words.end());
        const auto first = start(first_words);
        wait_for_table(path, is_new ? "BIG" : "Z$BIG");
        const Finished second = on(path, words);
        EXPECT_EQ(second.status, 1) << second.out;
        EXPECT_EQ(second.err.find("error: " + file("big.dbf") +
                                  " was not imported\n  another import of BIG is at "
                                  "work: process " +
                                  std::to_string(first->pid()) + " of user SYSDBA"),
                  0U)
            << second.err;
        const Finished run = first->end();
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(told("BIG"), "driver " + std::to_string(records));
        EXPECT_EQ(told("Z$BIG"), "");
    }
}

}  // namespace
}  // namespace zmfb::test
