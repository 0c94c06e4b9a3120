// What --append adds to a table that is there, and what it refuses.
#include <bit>

#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportAppend : public Tool {
  protected:
    ImportAppend() : path(database()) {}
    // Adds a file to the table of its name.
    Finished append(const std::string& name, const DbfBuilder& dbf,
                    std::vector<std::string> options = {}) const {
        dbf.write(file(name));
        options.insert(options.begin(), {"import", file(name), "--append"});
        return on(path, options);
    }
    std::string query(const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", "csv", text});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out.substr(std::min(run.out.size(), run.out.find('\n') + 1));
    }
    std::string path;
};

std::string real(double value) { return low_first(std::bit_cast<std::uint64_t>(value), 8); }

TEST_F(ImportAppend, ATableThatIsNotThereIsRefusedWithAHint) {
    for (const char* option : {"--dry-run", "--yes"}) {
        const Finished run = append("p.dbf", DbfBuilder().field("N", 'N', 4).record({"1"}), {option});
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("imported\n  there is no table P to add to; without --append it is made\n"),
                  std::string::npos)
            << run.err;
    }
    EXPECT_FALSE(has_table(path, "P"));
}

TEST_F(ImportAppend, ColumnsThatTheFileDoesNotHaveAreSaidAndGetTheirDefaults) {
    on(path, {"call", "createtable('P', {{'A', 'N', 4, 0}, {'B', 'C', 4, 0}, {'C', 'L', 1, 0}})"});
    const Finished run = append("p.dbf", DbfBuilder().field("A", 'N', 4).record({"1"}));
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(lines(run.out).at(1),
              "the table P has more columns than the file, which get their defaults: B, C");
    EXPECT_EQ(query("select a, trim(b), c from p"), "1,\"\",F\r\n");
    exec(path, "delete from p");
    exec(path, "alter table p add d integer not null");
    const Finished refused = append("p.dbf", DbfBuilder().field("A", 'N', 4).record({"1"}), {"--dry-run"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("the column D of the table P has to have a value, and the file has none\n"),
              std::string::npos)
        << refused.err;
}

TEST_F(ImportAppend, FieldsOfAnotherKindThanTheColumnAreRefused) {
    on(path, {"call",
              "createtable('P', {{'T', 'C', 8, 0}, {'N', 'N', 8, 2}, {'D', 'D', 8, 0}, {'L', 'L', 1, 0}})"});
    exec(path, "alter table p add m blob sub_type text, add b blob, add x computed by (n * 2)");
    const struct {
        const char *field, *is;
        char fits;
    } columns[] = {{"T", "is CHAR(8)", 'C'},
                   {"N", "is NUMERIC(8,2)", 'N'},
                   {"D", "is TIMESTAMP", 'D'},
                   {"L", "is a logical", 'L'},
                   {"M", "is BLOB SUB_TYPE TEXT", 'M'},
                   {"B", "is BLOB SUB_TYPE BINARY", 'G'}};
    const struct {
        char type;
        int length;
    } fields[] = {{'C', 8}, {'N', 8}, {'D', 8}, {'L', 1}, {'M', 10}, {'G', 10}};
    for (const auto& [name, is, fits] : columns) {
        for (const auto& [type, length] : fields) {
            SCOPED_TRACE(std::string(name) + type);
            const Finished run =
                append("p.dbf", DbfBuilder().type(0xF5).field(name, type, length), {"--dry-run"});
            const bool is_taken = type == fits || (type == 'C' && fits == 'M');
            EXPECT_EQ(run.status, is_taken ? 0 : 1) << run.err;
            const std::string reason = std::string("the column ") + name + " of the table P " + is +
                                       ", which takes no such field of type " + type + "\n";
            EXPECT_EQ(run.err.find(reason) == std::string::npos, is_taken) << run.err;
        }
    }
    const Finished computed = append("p.dbf", DbfBuilder().field("X", 'N', 8));
    EXPECT_NE(computed.err.find("the column X of the table P is computed"), std::string::npos)
        << computed.err;
}

// Each is a word that the engine would read as a value of its own.
TEST_F(ImportAppend, ValuesAreHeldAgainstTheColumnsThatAreThere) {
    on(path, {"call",
              "createtable('P', {{'T', 'C', 4, 0}, {'N', 'N', 4, 0}, {'D', 'D', 8, 0}, {'L', 'L', 1, 0}})"});
    exec(path, "alter table p add v varchar(3), add i smallint, add w date not null");
    const struct {
        std::string name;
        char type;
        int length, decimals;
        std::string value, reason;
    } bad[] = {
        {"T", 'C', 8, 0, "hello", "the text is longer than its column"},
        {"V", 'C', 8, 0, "four", "the text is longer than its column"},
        {"N", 'N', 10, 2, "99999", "too wide for NUMERIC(4,0)"},
        {"I", 'N', 10, 0, "32768", "too wide for NUMERIC(4,0)"},
        {"W", 'D', 8, 0, "", "nothing, where the column has to have a value"},
        {"W", 'D', 8, 0, "TODAY", "nothing, where the column has to have a value"},
    };
    for (const auto& one : bad) {
        SCOPED_TRACE(one.name + one.value);
        DbfBuilder dbf = DbfBuilder().field(one.name, one.type, one.length, one.decimals);
        std::vector<std::string> values{one.value};
        if (one.name != "W") {
            dbf.field("W", 'D', 8);
            values.emplace_back("20070301");
        }
        const DbfBuilder file_of_one = dbf.record(values);
        for (const char* option : {"--dry-run", "--yes"}) {
            const Finished run = append("p.dbf", file_of_one, {option});
            EXPECT_EQ(run.status, 1) << run.out;
            EXPECT_NE(run.err.find("record 1, field " + one.name), std::string::npos) << run.err;
            EXPECT_NE(run.err.find(": " + one.reason + "\n"), std::string::npos) << run.err;
        }
    }
    EXPECT_EQ(query("select count(*) from p"), "0\r\n");
}

TEST_F(ImportAppend, RoundedNumbersOddLogicalsAndImpossibleDatesAreCounted) {
    on(path, {"call", "createtable('P', {{'N', 'N', 10, 0}, {'D', 'D', 8, 0}, {'L', 'L', 1, 0}})"});
    DbfBuilder dbf = DbfBuilder().field("N", 'N', 10, 4).field("D", 'D', 8).field("L", 'L', 1);
    dbf.record({"1.5678", "TODAY", "x"}).record({"7.0000", "20070301", "y"});
    for (const char* option : {"--dry-run", "--yes"}) {
        const Finished run = append("p.dbf", dbf, {option});
        EXPECT_EQ(run.status, 0) << run.err;
        for (const char* line : {"\n1 number rounded to the digits that the column keeps\n",
                                 "\n1 impossible date ", "\n1 logical neither yes nor no: left blank\n"})
            EXPECT_NE(run.out.find(line), std::string::npos) << run.out;
    }
    EXPECT_EQ(query("select n, d, l from p order by recno"), "2,,\"\"\r\n7,2007-03-01 00:00:00.0000,T\r\n");
}

TEST_F(ImportAppend, ValuesTravelIntoColumnsOfOtherTypesOfTheirKind) {
    on(path, {"call", "createtable('P', {{'A', 'N', 4, 0}})"});
    exec(
        path,
        "alter table p drop a, add n19 double precision, add wide numeric(18,2), add i bigint, add y double "
        "precision, add b double precision not null, add c blob sub_type text, add v varchar(8), add d date, "
        "add q blob");
    const DbfBuilder dbf = DbfBuilder()
                               .type(0x30)
                               .field("N19", 'N', 5, 1)
                               .field("WIDE", 'N', 20, 3)
                               .field("I", 'I', 4)
                               .field("Y", 'Y', 8)
                               .field("B", 'B', 8)
                               .field("C", 'C', 8)
                               .field("V", 'C', 20)
                               .field("D", 'D', 8)
                               .record({"12.5", "0000000000000042.120", low_first(0xFFFFFFFE, 4),
                                        low_first(123456, 8), real(0.1), "memo", "varchar", "20070301"})
                               .record({"", "", low_first(7, 4), low_first(0, 8), real(-3), "", "", ""});
    for (const char* option : {"--dry-run", "--yes"}) {
        const Finished run = append("p.dbf", dbf, {option});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out.find("rounded"), std::string::npos) << run.out;
    }
    EXPECT_EQ(query("select n19, wide, i, y, b, c, v, d from p order by recno"),
              "12.5,42.12,-2,12.3456,0.1,memo,varchar,2007-03-01\r\n0,0.00,7,0,-3,\"\",\"\",\r\n");
}

TEST_F(ImportAppend, WhatWasImportedCanBeAddedOnceMore) {
    MemoBuilder memos(MemoFormat::foxpro, 64);
    const std::uint32_t block = memos.add("a memo");
    write_file("p.fpt", memos.bytes());
    const std::string julian = low_first(2454161, 4) + low_first(34225123, 4);
    const DbfBuilder dbf = DbfBuilder()
                               .type(0x32)
                               .field("T", 'C', 6)
                               .field("N", 'N', 6, 2)
                               .field("D", 'D', 8)
                               .field("L", 'L', 1)
                               .field("M", 'M', 4)
                               .field("V", 'V', 6)
                               .field("Q", 'Q', 3)
                               .field("I", 'I', 4)
                               .field("Y", 'Y', 8)
                               .field("B", 'B', 8)
                               .field("S", 'T', 8)
                               .field("W", 'N', 20)
                               .record({"Ana", "1.50", "20070301", "T", low_first(block, 4), "var", "\1\2\3",
                                        low_first(5, 4), low_first(15000, 8), real(0.25), julian, "77"},
                                       '*');
    dbf.write(file("p.dbf"));
    ASSERT_EQ(on(path, {"import", file("p.dbf"), "--mark-deleted"}).status, 0);
    for (const char* option : {"--dry-run", "--yes"}) {
        const Finished run = append("p.dbf", dbf, {option, "--mark-deleted"});
        EXPECT_EQ(run.status, 0) << run.err;
    }
    EXPECT_EQ(query("select count(*) from (select distinct t, n, d, l, cast(m as varchar(9)) as m, v, q, i, "
                    "y, b, s, w, "
                    "deleted_ from p)"),
              "1\r\n");
    EXPECT_EQ(query("select recno from p order by recno"), "1\r\n2\r\n");
}

}  // namespace
}  // namespace zmfb::test
