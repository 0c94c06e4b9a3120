// Exported files as programs that have nothing to do with ours read them: every value of every record.
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/process.h"
#include "tests/tool/export_folder.h"

namespace zmfb::test {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// Columns are named after the types of their fields, as read_by_others.py wants it.
struct ExportedTable {
    const char* columns;
    const char* values;
    Rows rows;
    const char* format;
    std::vector<const char*> readers;
};

// As many digits as a double keeps, which GDAL takes wide numbers for.
const char* const plain =
    "c1 char(20) not null, n1 numeric(9, 2) not null, d1 date not null, l1 boolean not null, n2 bigint not "
    "null";
const char* const plain_values =
    "select 'São Paulo', -12.5, date '2007-03-01', true, -999999999999999 from rdb$database union all "
    "select '', 0, date '0001-01-01', false, 0 from rdb$database union all "
    "select 'O''Neill; \"Cork\"', 9999999.99, date '9999-12-31', true, 1 from rdb$database";
const Rows plain_rows{{"São Paulo", "-12.5", "2007-03-01", "T", "-999999999999999"},
                      {"", "0", "0001-01-01", "F", "0"},
                      {"O'Neill; \"Cork\"", "9999999.99", "9999-12-31", "T", "1"}};

const char* const with_memos = "c1 char(5) not null, m1 blob sub_type text not null";
const char* const memo_values =
    "select 'one', 'a note of é' from rdb$database union all select 'two', rpad('', 3000, 'long ') || '.' "
    "from "
    "rdb$database";

Rows memo_rows() {
    std::string text;
    while (text.size() < 3000) text += "long ";
    return {{"one", "a note of é"}, {"two", text + "."}};
}

const char* const typed =
    "c1 char(5) not null, i1 integer not null, b1 double precision not null, y1 numeric(18, 4) not null, "
    "t1 timestamp not null, d1 date not null";
const char* const typed_values =
    "select 'one', -2147483648, -0.125, -99999999999999.9999, timestamp '2007-03-01 10:11:12.345', "
    "date '2007-03-01' from rdb$database union all "
    "select 'two', 7, 1e10, 0.0001, timestamp '1999-12-31 00:00:00', date '1999-12-31' from rdb$database";
const Rows typed_rows{
    {"one", "-2147483648", "-0.125", "-99999999999999.9999", "2007-03-01 10:11:12.345", "2007-03-01"},
    {"two", "7", "10000000000", "0.0001", "1999-12-31 00:00:00.000", "1999-12-31"}};

class ExportReaders : public ExportFolder {
  protected:
    [[nodiscard]] Rows read_with(const char* reader) const {
        const Finished script = run({"/usr/bin/python3", ZMFB_READ_BY_OTHERS, reader, folder_out + "/t.dbf"},
                                    "", {"PATH=/usr/bin:/bin"});
        EXPECT_EQ(script.status, 0) << script.err;
        std::istringstream out(script.out);
        Rows rows;
        for (std::string line; std::getline(out, line);)
            rows.push_back(nlohmann::json::parse(line).get<std::vector<std::string>>());
        return rows;
    }
    // A reader shows "-" for memos and types that it does not know; one of them knows each.
    static void compare(const Rows& found, const Rows& expected, std::vector<bool>& known) {
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t row = 0; row < expected.size(); ++row) {
            ASSERT_EQ(found[row].size(), expected[row].size());
            for (std::size_t i = 0; i < expected[row].size(); ++i) {
                if (found[row][i] == "-") continue;
                known[i] = true;
                EXPECT_EQ(found[row][i], expected[row][i]) << "record " << row + 1 << ", field " << i + 1;
            }
        }
    }
};

TEST_F(ExportReaders, FindEveryValueInEachFormat) {
    const ExportedTable tables[] = {
        {plain, plain_values, plain_rows, "dbase3", {"dbfread", "gdal", "dbf", "dbfdump", "dbview"}},
        {plain, plain_values, plain_rows, "foxpro", {"dbfread", "gdal", "dbf", "dbfdump", "dbview"}},
        {plain, plain_values, plain_rows, "vfp", {"dbfread", "gdal", "dbf", "dbfdump"}},
        {with_memos, memo_values, memo_rows(), "dbase3", {"dbfread", "gdal", "dbf", "dbfdump", "dbview"}},
        {with_memos, memo_values, memo_rows(), "foxpro", {"dbfread", "gdal", "dbf", "dbfdump"}},
        {with_memos, memo_values, memo_rows(), "vfp", {"dbfread", "gdal", "dbf", "dbfdump"}},
        {typed, typed_values, typed_rows, "vfp", {"dbfread", "gdal", "dbf", "dbfdump"}}};
    for (const ExportedTable& table : tables) {
        exec(std::string("recreate table t (") + table.columns + ")");
        exec(std::string("insert into t ") + table.values);
        const Finished exported =
            export_to_folder({"t", "--yes", "--format", table.format, "--encoding", "CP1252"});
        ASSERT_EQ(exported.status, 0) << exported.err;
        std::vector<bool> known(table.rows.front().size());
        for (const char* const reader : table.readers) {
            SCOPED_TRACE(std::string(table.format) + " of " + table.columns + ", read with " + reader);
            compare(read_with(reader), table.rows, known);
        }
        EXPECT_EQ(known, std::vector<bool>(known.size(), true));
    }
}

}  // namespace
}  // namespace zmfb::test
