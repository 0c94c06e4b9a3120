// What fields of every type become.
#include <algorithm>
#include <bit>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportTypes : public Tool {
  protected:
    ImportTypes() : path(database()) {}
    std::string made(const std::string& name, const DbfBuilder& dbf) const {
        dbf.write(file(name));
        return file(name);
    }
    Finished import(const std::string& name, const DbfBuilder& dbf,
                    std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"import", made(name, dbf)});
        return on(path, options);
    }
    std::string query(const std::string& text) const {
        const Finished run = on(path, {"query", "--mode", "csv", text});
        EXPECT_EQ(run.status, 0) << run.err;
        const std::string lines_below = run.out.substr(std::min(run.out.size(), run.out.find('\n') + 1));
        return lines_below;
    }
    // The columns of a table: name, type, sub-type and length of each.
    std::vector<std::string> columns(const std::string& table) const {
        std::vector<std::string> all;
        for (const std::string& line : lines(query(
                 "select trim(f.rdb$field_name) || ' ' || t.rdb$field_type || ' ' || "
                 "coalesce(t.rdb$field_sub_type, 0) || ' ' || t.rdb$field_length from rdb$relation_fields f "
                 "join rdb$fields t on t.rdb$field_name = f.rdb$field_source where f.rdb$relation_name = '" +
                 table + "' order by f.rdb$field_position"))) {
            all.push_back(line.substr(0, line.size() - 1));
        }
        return all;
    }
    std::string path;
};

std::string real(double value) { return low_first(std::bit_cast<std::uint64_t>(value), 8); }

TEST_F(ImportTypes, OfVisualFoxProComeInWithTheirValues) {
    const std::string julian = low_first(2454161, 4) + low_first(34225123, 4);  // 2007-03-01 09:30:25.123
    const Finished run = import(
        "v.dbf", DbfBuilder()
                     .type(0x30)
                     .field("I", 'I', 4)
                     .field("Y", 'Y', 8)
                     .field("B", 'B', 8)
                     .field("T", 'T', 8)
                     .field("NAME", 'C', 4)
                     .record({low_first(0xFFFFFFFE, 4), low_first(123456789, 8), real(0.1), julian, "Ana"})
                     .record({low_first(7, 4), low_first(static_cast<std::uint64_t>(-1), 8),
                              real(-1.7976931348623157e308), std::string(8, '\0'), "Bob"})
                     .record({low_first(0, 4), low_first(0, 8), real(5e-324), julian, ""}));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(query("select i, y, b, t, trim(name) from v order by recno"),
              "-2,12345.6789,0.1,2007-03-01 09:30:25.1230,Ana\r\n"
              "7,-0.0001,-1.7976931348623157e+308,,Bob\r\n"
              "0,0.0000,5e-324,2007-03-01 09:30:25.1230,\"\"\r\n");
    EXPECT_EQ(columns("V"), (std::vector<std::string>{"I 8 0 4", "Y 16 1 8", "B 27 0 8", "T 35 0 8",
                                                      "NAME 14 0 4", "RDD_AREAID 37 0 50", "RECNO 27 0 8"}));
}

TEST_F(ImportTypes, LogicalsAreYesNoOrNotSaidAndOddOnesAreCounted) {
    DbfBuilder dbf = DbfBuilder().field("OK", 'L', 1);
    for (const char* value : {"T", "t", "Y", "y", "F", "f", "N", "n", "?", " ", "x"}) dbf.record({value});
    const Finished run = import("l.dbf", dbf);
    EXPECT_EQ(lines(run.out).at(1), "1 logical neither yes nor no: left blank");
    EXPECT_EQ(query("select list(ok, '') from l"), "TTTTFFFF   \r\n");
}

TEST_F(ImportTypes, ANumberOfMoreThanEighteenDigitsGetsTheNarrowestColumn) {
    const struct {
        std::vector<std::string> values;
        const char *type, *stored;
    } cases[] = {
        {{"123456789.1234", "", "-0.50000"}, "NUMERIC(13,4)", "123456789.1234\r\n0.0000\r\n-0.5000\r\n"},
        {{"00000000000000007.000"}, "NUMERIC(1,0)", "7\r\n"},
        {{"-99999999999999.9999"}, "NUMERIC(18,4)", "-99999999999999.9999\r\n"},
        {{""}, "NUMERIC(1,0)", "0\r\n"},
        {{"12345678901234567890"}, "DOUBLE PRECISION", "1.2345678901234567e+19\r\n"},
        {{"1e3", ".5"}, "DOUBLE PRECISION", "1000\r\n0.5\r\n"},
    };
    for (const auto& one : cases) {
        DbfBuilder dbf = DbfBuilder().field("V", 'N', 20, 4);
        for (const std::string& value : one.values) dbf.record({value});
        const Finished run = import("n.dbf", dbf, {"--replace", "--yes"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.out.find(std::string("the field V has more digits than a NUMERIC: it becomes ") +
                               one.type + "\n"),
                  std::string::npos)
            << run.out;
        EXPECT_EQ(query("select v from n order by recno"), one.stored);
    }
}

TEST_F(ImportTypes, NumbersThatDoublePrecisionDoesNotKeepAreCountedAsRounded) {
    const std::vector<std::string> kept{"1e3", ".1", "-0.30", "12345678901234500000", "1234567890123e-3",
                                        "0",   ""};
    DbfBuilder dbf = DbfBuilder().field("V", 'N', 20, 4);
    for (const std::string& value : kept) dbf.record({value});
    const Finished exact = import("n.dbf", dbf);
    EXPECT_EQ(exact.out.find("rounded"), std::string::npos) << exact.out;
    for (const char* value : {"12345678901234567890", "-1234567890.123456789", "90071992547409931e3"})
        dbf.record({value});
    const Finished run = import("n.dbf", dbf, {"--replace", "--yes"});
    EXPECT_NE(run.out.find("\n3 numbers rounded to the digits that the column keeps\n"), std::string::npos)
        << run.out;
    const Finished narrow =
        import("m.dbf", DbfBuilder().field("V", 'N', 20, 4).record({"123456789012345.678"}));
    EXPECT_EQ(narrow.out.find("rounded"), std::string::npos) << narrow.out;
}

TEST_F(ImportTypes, AnFFieldWhoseNumbersItsDigitsDoNotHoldBecomesDoublePrecision) {
    const struct {
        std::vector<std::string> values;
        const char *type, *stored;
        int rounded;
    } cases[] = {
        {{"1.5e+19", "", "-2.25"}, "DOUBLE PRECISION", "1.5e+19\r\n0\r\n-2.25\r\n", 0},
        {{"1.5e-05"}, "DOUBLE PRECISION", "0.000015\r\n", 0},
        {{"1.23456", "1.5e+19"}, "DOUBLE PRECISION", "1.23456\r\n1.5e+19\r\n", 0},
        {{"1.5e+09", "2.5e-01", "0e+99"}, "NUMERIC(11,3)", "1500000000.000\r\n0.250\r\n0.000\r\n", 0},
        {{"1.2345", "7"}, "NUMERIC(11,3)", "1.235\r\n7.000\r\n", 1},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.values[0]);
        DbfBuilder dbf = DbfBuilder().field("V", 'F', 11, 3);
        for (const std::string& value : one.values) dbf.record({value});
        const auto plan = nlohmann::json::parse(
            on(path, {"--json", "import", "--dry-run", made("f.dbf", dbf), "--replace", "--yes"}).out);
        EXPECT_EQ(plan.at("columns").at(0).at("type"), one.type);
        EXPECT_EQ(plan.at("rounded_numbers"), one.rounded);
        const bool is_real = std::string(one.type) == "DOUBLE PRECISION";
        EXPECT_EQ(plan.at("notes"),
                  is_real
                      ? nlohmann::json{"the field V has numbers that NUMERIC(11,3) does not hold: it becomes "
                                       "DOUBLE PRECISION"}
                      : nlohmann::json::array());
        const Finished run = import("f.dbf", dbf, {"--replace", "--yes"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(query("select v from f order by recno"), one.stored);
    }
    EXPECT_NE(import("n.dbf", DbfBuilder().field("V", 'N', 11, 3).record({"1.5e+19"}))
                  .err.find("record 1, field V: \"    1.5e+19\": too wide for NUMERIC(11,3)\n"),
              std::string::npos);
    for (const int length : {11, 20}) {
        const Finished beyond = import("f.dbf", DbfBuilder().field("V", 'F', length, 3).record({"1e999"}),
                                       {"--replace", "--yes"});
        EXPECT_NE(beyond.err.find("too wide for DOUBLE PRECISION\n"), std::string::npos) << beyond.err;
    }
}

TEST_F(ImportTypes, AnFFieldIsAddedToAColumnAsThisTakesIt) {
    ASSERT_EQ(import("f.dbf", DbfBuilder().field("V", 'F', 11, 3).record({"1"})).status, 0);
    const Finished run =
        import("f.dbf", DbfBuilder().field("V", 'F', 11, 3).record({"1.5e+19"}), {"--append"});
    EXPECT_NE(run.err.find("too wide for NUMERIC(11,3)\n"), std::string::npos) << run.err;
    EXPECT_EQ(query("select v from f"), "1.000\r\n");
}

TEST_F(ImportTypes, NullsOfColumnsThatHaveNoneAreCounted) {
    DbfBuilder dbf = DbfBuilder().type(0x30);
    const std::pair<char, int> fields[] = {{'C', 3}, {'N', 5}, {'L', 1}, {'D', 8}, {'I', 4}, {'V', 3}};
    for (const auto& [type, length] : fields) dbf.field(std::string(1, type), type, length, 0, 2);
    dbf.field("_NullFlags", '0', 1, 0, 5);
    // A bit for each field, and before that of the last one the bit of its length.
    for (const char* flags : {"\x01", "\x5F"})
        dbf.record({"abc", "12", "T", "20070301", low_first(7, 4), "xyz", flags});
    const Finished run = import("n.dbf", dbf);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(lines(run.out).at(1), "4 NULLs came in as blanks or 0: C, N, F and L columns have none");
    EXPECT_EQ(query("select trim(c), n, l, d, i, v from n order by recno"),
              "\"\",12,T,2007-03-01 00:00:00.0000,7,xyz\r\n\"\",0,\"\",,,\r\n");
    const Finished plan = on(path, {"--json", "import", "--dry-run", file("n.dbf"), "--append"});
    EXPECT_EQ(nlohmann::json::parse(plan.out).at("lost_nulls"), 4) << plan.err;
}

TEST_F(ImportTypes, AColumnCanSayWhichRecordsWereDeleted) {
    const DbfBuilder dbf = DbfBuilder().field("DELETED_", 'C', 2).record({"a"}).record({"b"}, '*');
    const Finished run = import("d.dbf", dbf, {"--mark-deleted"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(query("select trim(deleted_), deleted__2 from d order by recno"), "a,F\r\nb,T\r\n");
}

TEST_F(ImportTypes, MemosComeInWhateverTheirLength) {
    MemoBuilder memos(MemoFormat::foxpro, 64);
    const std::string longest(100000, 'x'), middle(31990, 'y');
    const auto digits = [](std::uint32_t block) { return std::to_string(block); };
    DbfBuilder dbf = DbfBuilder().type(0xF5).field("N", 'N', 4).field("NOTE", 'M', 10).field("PIC", 'G', 10);
    dbf.record({"1", digits(memos.add("short")), digits(memos.add(std::string("a\0b", 3)))});
    dbf.record({"2", digits(memos.add(longest)), ""});
    dbf.record({"3", "", digits(memos.add(middle))});
    dbf.record({"4", digits(memos.add(middle)), digits(memos.add(longest))});
    dbf.record({"5", digits(memos.add("end")), ""});
    write_file("m.fpt", memos.bytes());
    const Finished run = import("m.dbf", dbf);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(
        query("select recno, n, char_length(note), left(note, 5), octet_length(pic) from m order by recno"),
        "1,1,5,short,3\r\n2,2,100000,xxxxx,\r\n3,3,,,31990\r\n4,4,31990,yyyyy,100000\r\n5,5,3,end,\r\n");
    EXPECT_EQ(query("select count(*) from m where note = '" + std::string(5, 's') + "'"), "0\r\n");
}

TEST_F(ImportTypes, AMissingMemoFileIsSaidForEachMemo) {
    const DbfBuilder dbf = DbfBuilder().type(0x83).field("NOTE", 'M', 10).record({"1"}).record({""});
    const Finished run = import("m.dbf", dbf);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("record 1, field NOTE: \"1         \": there is no memo file\n"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(import("m.dbf", dbf, {"--on-bad-value", "default"}).status, 0);
    EXPECT_EQ(query("select count(*) from m where note is null"), "2\r\n");
}

TEST_F(ImportTypes, RecordsLongerThanAPieceComeInRight) {
    const auto text = [](char letter, std::size_t size) { return std::string(size, letter); };
    DbfBuilder dbf =
        DbfBuilder().field("A", 'C', 30000).field("N", 'N', 8, 2).field("B", 'C', 30000).field("C", 'C', 5);
    for (int i = 0; i < 3; ++i) {
        const char letter = static_cast<char>('p' + i);
        dbf.record({text(letter, 30000), std::to_string(i) + ".25", text(letter, 29999), "end"});
    }
    const Finished run = import("wide.dbf", dbf);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(
        query("select recno, left(a, 2), char_length(trim(a)), n, char_length(trim(b)), trim(c) from wide "
              "order by recno"),
        "1,pp,30000,0.25,29999,end\r\n2,qq,30000,1.25,29999,end\r\n3,rr,30000,2.25,29999,end\r\n");
    EXPECT_EQ(import("one.dbf", DbfBuilder().field("A", 'C', 32765).record({text('z', 32765)})).status, 0);
    EXPECT_EQ(query("select char_length(trim(a)) from one"), "32765\r\n");
}

TEST_F(ImportTypes, TextsAreConvertedFromThePageThatTheFileNames) {
    const DbfBuilder dbf = DbfBuilder().language(2).field("NAME", 'C', 5).record({"Jo\xC6o"});  // CP850
    ASSERT_EQ(import("c.dbf", dbf).status, 0);
    EXPECT_EQ(query("select trim(name) from c"), "João\r\n");
    write_file("d.cpg", "ISO 88591");
    ASSERT_EQ(import("d.dbf", dbf).status, 0);
    EXPECT_EQ(query("select trim(name) from d"), "JoÆo\r\n");
    ASSERT_EQ(import("d.dbf", dbf, {"--encoding-from", "CP850", "--table", "e"}).status, 0);
    EXPECT_EQ(query("select trim(name) from e"), "João\r\n");
    const Finished unknown = import("f.dbf", DbfBuilder().field("NAME", 'C', 5).record({"Jo\xE3o"}));
    EXPECT_EQ(lines(unknown.out).at(1),
              "1 text beyond ASCII brought in as bytes: nothing says their code page; --encoding-from does");
    EXPECT_EQ(query("select trim(name) from f"), "João\r\n");
}

}  // namespace
}  // namespace zmfb::test
