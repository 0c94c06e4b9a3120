// A file of every dialect, with every type that it has, and headers that lie.
#include <fmt/format.h>

#include <bit>
#include <filesystem>

#include "tests/support/dbf_builder.h"
#include "tests/support/memo_builder.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

class ImportDialects : public Tool {
  protected:
    ImportDialects() : path(database()) { std::filesystem::create_directory(file("data")); }
    // The rows of a table in the order of their records, as CSV.
    std::string rows(const std::string& table, const std::string& columns) const {
        const Finished run =
            on(path, {"query", "--mode", "csv", "select " + columns + " from " + table + " order by recno"});
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out.substr(std::min(run.out.size(), run.out.find('\n') + 1));
    }
    std::string path;
};

struct Dialect {
    int first_byte;
    const char* memo_ending;  ///< null when it has no memo file
    MemoFormat memo_format;
    bool binary_blocks = false;  ///< the number of a memo is in four bytes
};

constexpr Dialect dialects[] = {
    {0x02, nullptr, MemoFormat::dbase3},      {0x03, nullptr, MemoFormat::dbase3},
    {0x04, nullptr, MemoFormat::dbase4},      {0x05, nullptr, MemoFormat::dbase3},
    {0x30, ".fpt", MemoFormat::foxpro, true}, {0x31, ".FPT", MemoFormat::foxpro, true},
    {0x32, ".fpt", MemoFormat::foxpro, true}, {0x43, nullptr, MemoFormat::dbase4},
    {0x63, nullptr, MemoFormat::dbase4},      {0x7B, ".dbt", MemoFormat::dbase4},
    {0x83, ".DBT", MemoFormat::dbase3},       {0x8B, ".dbt", MemoFormat::dbase4},
    {0x8C, ".dbt", MemoFormat::dbase4},       {0xCB, ".dbt", MemoFormat::dbase4},
    {0xE5, ".smt", MemoFormat::six},          {0xF5, ".fpt", MemoFormat::foxpro},
    {0xFB, ".dbt", MemoFormat::dbase3},
};

std::string name_of(const Dialect& dialect) { return fmt::format("D{:02X}", dialect.first_byte); }

TEST_F(ImportDialects, AllComeInWithTheirMemos) {
    for (const Dialect& dialect : dialects) {
        MemoBuilder memos(dialect.memo_format);
        const auto memo = [&](const std::string& text) {
            const std::uint32_t block = memos.add(text);
            return dialect.binary_blocks ? low_first(block, 4) : fmt::format("{:10}", block);
        };
        DbfBuilder dbf = DbfBuilder().type(dialect.first_byte);
        dbf.field("NAME", 'C', 4).field("PRICE", 'N', 7, 2).field("OK", 'L', 1);
        std::vector<std::string> first{"Ana", "-12.50", "T"}, second{"", "", "?"};
        if (dialect.first_byte != 0x02) {
            dbf.field("BORN", 'D', 8);
            first.emplace_back("20070301");
            second.emplace_back("");
        }
        if (dialect.memo_ending != nullptr) {
            dbf.field("NOTE", 'M', dialect.binary_blocks ? 4 : 10);
            first.push_back(memo(std::string(600, 'x') + "\r\nend"));
            second.push_back(dialect.binary_blocks ? std::string(4, '\0') : "");
            write_file("data/" + name_of(dialect) + dialect.memo_ending, memos.bytes());
        }
        dbf.record(first).record(second, '*').write(file("data/" + name_of(dialect) + ".dbf"));
    }
    const Finished run = on(path, {"import", file("data")});
    ASSERT_EQ(run.status, 0) << run.err;
    for (const Dialect& dialect : dialects) {
        SCOPED_TRACE(name_of(dialect));
        EXPECT_EQ(rows(name_of(dialect), "trim(name), price, ok"), "Ana,-12.50,T\r\n\"\",0.00,\"\"\r\n");
        if (dialect.first_byte != 0x02) {
            EXPECT_EQ(rows(name_of(dialect), "born"), "2007-03-01 00:00:00.0000\r\n\r\n");
        }
        if (dialect.memo_ending != nullptr) {
            EXPECT_EQ(rows(name_of(dialect),
                           "char_length(note), right(note, 5) = ascii_char(13) || "
                           "ascii_char(10) || 'end'"),
                      "605,true\r\n,\r\n");
        }
    }
}

struct Type {
    char type;
    int length;
    std::string bytes;
    const char *sql, *value;
    int decimals = 0;
    int flags = 0;
};

// Of a memo that is there, in each form, and of none.
const std::string block = low_first(1, 4), digits = "         1", no_block(4, '\0');

std::string julian(std::uint64_t day, std::uint64_t milliseconds) {
    return low_first(day, 4) + low_first(milliseconds, 4);
}

std::string turned(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return high_first(value < 0 ? ~bits : bits ^ (1ULL << 63), 8);
}

// Every type in each of its forms, a file with a field of each.
const struct {
    const char* name;
    int first_byte;
    MemoFormat memo_format;
    const char* memo;
    std::vector<Type> types;
} files[] = {
    {"THREE",
     0x83,
     MemoFormat::dbase3,
     ".dbt",
     {{'C', 3, "a b", "CHAR(3)", "a b"},
      {'C', 300, "long", "CHAR(300)", "long"},
      {'N', 4, "-12", "NUMERIC(4,0)", "-12"},
      {'N', 8, "1.5", "NUMERIC(8,3)", "1.500", 3},
      {'N', 18, "-1234567890123.567", "NUMERIC(18,3)", "-1234567890123.567", 3},
      {'N', 20, "12345678901234567.5", "NUMERIC(18,1)", "12345678901234567.5", 3},
      {'N', 19, "1e300", "DOUBLE PRECISION", "1e+300"},
      {'F', 20, "0.25", "NUMERIC(2,2)", "0.25", 10},
      {'F', 9, "+5", "NUMERIC(9,2)", "5.00", 2},
      {'N', 5, std::string("7\0\0\0\0", 5), "NUMERIC(5,0)", "7"},
      {'D', 8, "20240229", "TIMESTAMP", "2024-02-29 00:00:00.0000"},
      {'D', 8, "00000000", "TIMESTAMP", ""},
      {'D', 10, "20240229", "TIMESTAMP", "2024-02-29 00:00:00.0000"},
      {'L', 1, "y", "CHAR(1)", "T"},
      {'L', 1, "N", "CHAR(1)", "F"},
      {'L', 1, "?", "CHAR(1)", "\"\""},
      {'M', 10, digits, "BLOB SUB_TYPE TEXT", "the memo"},
      {'M', 10, "", "BLOB SUB_TYPE TEXT", ""},
      {'c', 3, "a", "CHAR(3)", "a"},
      {'C', 0, "", "CHAR(1)", "\"\""},
      {'N', 0, "", "NUMERIC(1,0)", "0"}}},
    {"FIVE",
     0x8B,
     MemoFormat::dbase4,
     ".dbt",
     {{'F', 9, "1.5e3", "NUMERIC(9,2)", "1500.00", 2},
      {'B', 10, digits, "BLOB SUB_TYPE BINARY", "746865206D656D6F"},
      {'G', 10, digits, "BLOB SUB_TYPE BINARY", "746865206D656D6F"},
      {'B', 10, "", "BLOB SUB_TYPE BINARY", ""},
      {'M', 10, digits, "BLOB SUB_TYPE TEXT", "the memo"}}},
    {"SEVEN",
     0x8C,
     MemoFormat::dbase4,
     ".dbt",
     {{'C', 3, "abc", "CHAR(3)", "abc"},
      {'I', 4, high_first(0x80000007, 4), "INTEGER", "7"},
      {'I', 4, high_first(0x7FFFFFFE, 4), "INTEGER", "-2"},
      {'+', 4, high_first(0x80000001, 4), "INTEGER", "1"},
      {'O', 8, turned(0.1), "DOUBLE PRECISION", "0.1"},
      {'O', 8, turned(-74.62), "DOUBLE PRECISION", "-74.62"},
      {'@', 8, turned(63308424625123.0), "TIMESTAMP", "2007-03-01 09:30:25.1230"},
      {'B', 10, digits, "BLOB SUB_TYPE BINARY", "746865206D656D6F"},
      {'M', 10, digits, "BLOB SUB_TYPE TEXT", "the memo"}}},
    {"FOX",
     0x32,
     MemoFormat::foxpro,
     ".fpt",
     {{'I', 4, low_first(0xFFFFFFFE, 4), "INTEGER", "-2"},
      {'+', 4, low_first(5, 4), "INTEGER", "5", 0, 0x0C},
      {'B', 8, low_first(std::bit_cast<std::uint64_t>(-0.1), 8), "DOUBLE PRECISION", "-0.1", 2},
      {'Y', 8, low_first(static_cast<std::uint64_t>(-12345), 8), "NUMERIC(18,4)", "-1.2345"},
      {'T', 8, julian(2454161, 34225123), "TIMESTAMP", "2007-03-01 09:30:25.1230"},
      {'T', 8, julian(0, 0), "TIMESTAMP", ""},
      {'V', 6, "three!", "VARCHAR(6)", "three!"},
      {'V', 6, std::string("two\0\0\3", 6), "VARCHAR(6)", "two"},
      {'V', 6, "      ", "VARCHAR(6)", "", 0, 2},
      {'Q', 3, std::string("\1\0\1", 3), "VARCHAR(3) CHARACTER SET OCTETS", "01"},
      {'Q', 3, std::string("\1\0\xFF", 3), "VARCHAR(3) CHARACTER SET OCTETS", "0100FF"},
      {'I', 4, low_first(9, 4), "INTEGER", "", 0, 2},
      {'M', 4, block, "BLOB SUB_TYPE TEXT", "the memo"},
      {'M', 4, block, "BLOB SUB_TYPE BINARY", "746865206D656D6F", 0, 4},
      {'G', 4, block, "BLOB SUB_TYPE BINARY", "746865206D656D6F"},
      {'P', 4, block, "BLOB SUB_TYPE BINARY", "746865206D656D6F"},
      {'W', 4, block, "BLOB SUB_TYPE BINARY", "746865206D656D6F"},
      {'M', 4, no_block, "BLOB SUB_TYPE TEXT", ""}}},
};

// Of the fields of the file of Visual FoxPro: not full are the second V, the third, and the first Q; NULL are
// the third V and the last I. Bits: V, V, V, its NULL, Q, Q, the I's NULL.
const std::string null_flags(1, '\x5A');

TEST_F(ImportDialects, EveryTypeComesInWithItsValue) {
    for (const auto& one : files) {
        SCOPED_TRACE(one.name);
        MemoBuilder memos(one.memo_format);
        ASSERT_EQ(memos.add("the memo"), 1U);
        write_file(std::string("data/") + one.name + one.memo, memos.bytes());
        DbfBuilder dbf = DbfBuilder().type(one.first_byte);
        std::vector<std::string> record;
        for (const Type& type : one.types) {
            dbf.field(fmt::format("F{}", record.size()), type.type, type.length, type.decimals, type.flags);
            record.push_back(type.bytes);
        }
        if (one.first_byte == 0x32) {
            dbf.field("_NullFlags", '0', 1, 0, 5);
            record.push_back(null_flags);
        }
        const std::string path_of_file = file(std::string("data/") + one.name + ".dbf");
        dbf.record(record).write(path_of_file);
        const Finished plan = on(path, {"import", "--dry-run", path_of_file});
        EXPECT_EQ(plan.status, 0) << plan.err;
        ASSERT_EQ(on(path, {"import", path_of_file}).status, 0);
        for (std::size_t i = 0; i < one.types.size(); ++i) {
            const Type& type = one.types[i];
            SCOPED_TRACE(fmt::format("field {} of type {}", i, type.type));
            const std::string column = fmt::format("F{}", i), sql = type.sql;
            EXPECT_NE(plan.out.find(fmt::format("\n{:<6}  {}\n", column, sql)), std::string::npos)
                << plan.out;
            const std::string shown = sql == "BLOB SUB_TYPE BINARY"
                                          ? "cast(" + column + " as varchar(99) character set octets)"
                                      : type.length == 300 ? "trim(" + column + ")"
                                                           : column;
            EXPECT_EQ(rows(one.name, shown), std::string(type.value) + "\r\n");
        }
    }
}

}  // namespace
}  // namespace zmfb::test
