// The shapes that "zmfb query" gives its rows, on a terminal and elsewhere.
#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/support/environment.h"
#include "tests/support/terminal.h"
#include "tests/tool/tool.h"

namespace zmfb::test {
namespace {

constexpr const char* one_row = " from rdb$database";
constexpr const char* fails_on_the_second_row =
    "select 6 / n as x from (select 2 as n from rdb$database union all select 0 from rdb$database)";

class QueryModes : public Tool {
  protected:
    [[nodiscard]] Finished query(const std::string& columns, const std::string& mode,
                                 const std::string& from = one_row) const {
        return on(path, {"query", "select " + columns + from, "--mode", mode});
    }
    const std::string path = database();
};

struct Exact {
    const char* expression;
    const char* table;  // as shown in a table
    const char* json;   // as a value of JSON
};

TEST_F(QueryModes, ValuesAreExactInEveryMode) {
    const Exact cases[] = {
        {"cast(12345678901.25 as numeric(18,2))", "12345678901.25", "12345678901.25"},
        {"cast(-1.5 as numeric(9,2))", "-1.50", "-1.50"},
        {"cast(-0.05 as numeric(4,2))", "-0.05", "-0.05"},
        {"cast(9223372036854775807 as bigint)", "9223372036854775807", "9223372036854775807"},
        {"cast(0.1 as double precision)", "0.1", "0.1"},
        {"cast(1e22 as double precision)", "1e+22", "1e+22"},
        {"true", "true", "true"},
        {"date '2007-03-01'", "2007-03-01", "\"2007-03-01\""},
        {"time '14:05:09'", "14:05:09.0000", "\"14:05:09.0000\""},
        {"cast('text' as blob sub_type text)", "text", "\"text\""},
        {"cast(x'0001' as blob)", "<blob 2 bytes>", "\"<blob 2 bytes>\""},
        {"cast('NULL' as varchar(9))", "NULL", "\"NULL\""},
        {"cast(null as integer)", "NULL", "null"},
        {"cast('12' as varchar(9))", "12", "\"12\""},
    };
    std::string columns;
    for (const Exact& one : cases) {
        const std::string name = "C" + std::to_string(&one - cases);
        columns += (columns.empty() ? "" : ", ") + std::string(one.expression) + " as " + name;
    }
    std::string line_mode, json_mode;
    for (const Exact& one : cases) {
        const std::string name = "C" + std::to_string(&one - cases);
        line_mode += (name.size() == 2 ? " " : "") + name + " = " + one.table + "\n";
        json_mode += (json_mode.empty() ? "" : ", ") + ("\"" + name + "\": ") + one.json;
    }
    EXPECT_EQ(query(columns, "line").out, line_mode + "\n(1 row)\n");
    EXPECT_EQ(query(columns, "json").out, "[\n  {" + json_mode + "}\n]\n");
    const Finished table = query(columns, "table");
    for (const Exact& one : cases) EXPECT_NE(lines(table.out).at(2).find(one.table), std::string::npos);
}

TEST_F(QueryModes, TableHasNumbersToTheRightAndControlCharactersMadeVisible) {
    EXPECT_EQ(query("n, t", "table",
                    " from (select 5 as n, cast('a' || ascii_char(10) || ascii_char(27) as varchar(9)) as t "
                    "from rdb$database union all select 12345, 'ação' from rdb$database)")
                  .out,
              "    N  T\n"
              "-----  -------\n"
              "    5  a\\n\\x1b\n"
              "12345  ação\n"
              "(2 rows)\n");
}

TEST_F(QueryModes, TableIsNotCutWhereThereIsNoTerminal) {
    const Finished run = query("rpad('', 300, 'x') as t", "table");
    EXPECT_EQ(lines(run.out).at(2), std::string(300, 'x'));
}

// 2,000 rows, a wider number and a wider text in the second thousand.
constexpr const char* widens_late =
    "with recursive r as (select 1 as n from rdb$database union all select n + 1 from r where n < 1000), "
    "two as (select 1 as m from rdb$database union all select 2 from rdb$database) "
    "select iif(m = 2 and n = 500, 1000000, n) as k, iif(m = 2 and n = 600, 'long', 'e') as t, "
    "cast(null as varchar(3)) as z from two, r order by m, n";

TEST_F(QueryModes, TableIsAlignedBehindTheRowsThatAreKeptInMemory) {
    const Finished run = on(path, {"query", widens_late});
    EXPECT_EQ(run.err, "");
    const auto rows = lines(run.out);
    ASSERT_EQ(rows.size(), 2003u);
    EXPECT_EQ(rows[0], "      K  T     Z");
    EXPECT_EQ(rows[1], "-------  ----  ----");
    EXPECT_EQ(rows[2], "      1  e     NULL");
    EXPECT_EQ(rows[1001], "   1000  e     NULL");
    EXPECT_EQ(rows[1002], "      1  e     NULL");
    EXPECT_EQ(rows[1501], "1000000  e     NULL");
    EXPECT_EQ(rows[1601], "    600  long  NULL");
    EXPECT_EQ(rows[2001], "   1000  e     NULL");
    EXPECT_EQ(rows[2002], "(2000 rows)");
}

TEST_F(QueryModes, DatesWithoutATimeAreShownAsDatesToPeople) {
    const std::string columns =
        "timestamp '2007-03-01 00:00' as d, timestamp '2007-03-01 14:05:09.1234' as t";
    EXPECT_EQ(lines(query(columns, "table").out).at(2), "2007-03-01  2007-03-01 14:05:09.1234");
    EXPECT_EQ(lines(query(columns, "line").out).at(0), "D = 2007-03-01");
    EXPECT_EQ(lines(query(columns, "csv").out).at(1), "2007-03-01 00:00:00.0000,2007-03-01 14:05:09.1234\r");
    EXPECT_EQ(nlohmann::json::parse(query(columns, "json").out)[0]["D"], "2007-03-01 00:00:00.0000");
    EXPECT_EQ(lines(query("cast('x 00:00:00.0000' as varchar(20)) as t", "table").out).at(2),
              "x 00:00:00.0000");
}

TEST_F(QueryModes, LineModeKeepsTheLinesOfATextUnderOneAnother) {
    EXPECT_EQ(query("1 as number, cast('a' || ascii_char(10) || 'b' as varchar(9)) as t", "line").out,
              "NUMBER = 1\n"
              "     T = a\n"
              "         b\n"
              "\n(1 row)\n");
}

TEST_F(QueryModes, CsvQuotesWhatNeedsItAndTellsNullFromTheEmptyText) {
    const Finished run = query(
        "cast(null as varchar(3)) as n, cast('' as varchar(3)) as e, cast('a,b' as varchar(3)) as \"x,y\", "
        "cast('say \"hi\"' as varchar(9)) as q, cast('a' || ascii_char(10) || 'b' as varchar(3)) as l, "
        "cast(' b ' as varchar(3)) as b, cast(-0.5 as numeric(9,2)) as d",
        "csv");
    EXPECT_EQ(run.out,
              "N,E,\"x,y\",Q,L,B,D\r\n"
              ",\"\",\"a,b\",\"say \"\"hi\"\"\",\"a\nb\", b ,-0.50\r\n");
}

TEST_F(QueryModes, JsonIsReadByAParserAndRepeatedNamesAreNumbered) {
    const Finished run = query("1 as a, 2 as a, 'x\"\\' as a_2, cast('ação' as varchar(9)) as t", "json");
    const auto json = nlohmann::json::parse(run.out);
    ASSERT_EQ(json.size(), 1u);
    EXPECT_EQ(json[0]["A"], 1);
    EXPECT_EQ(json[0]["A_2"], 2);
    EXPECT_EQ(json[0]["A_2_2"], "x\"\\");
    EXPECT_EQ(json[0]["T"], "ação");
}

TEST_F(QueryModes, JsonOptionIsModeJson) {
    EXPECT_EQ(on(path, {"--json", "query", "select 7 as n from rdb$database"}).out, "[\n  {\"N\": 7}\n]\n");
}

TEST_F(QueryModes, TextsOfAUtf8ColumnAreNotEncodedTwice) {
    EXPECT_EQ(query("cast(_utf8 'Łódź' as varchar(9) character set utf8) as t", "csv").status, 2);
    on(path, {"exec", "create table u (t varchar(9) character set utf8)"});
    on(path, {"exec", "insert into u values (_utf8 x'C581C3B364C5BA')"});
    EXPECT_EQ(query("t", "csv", " from u").out, "T\r\nŁódź\r\n");
}

TEST_F(QueryModes, NoRowsAreShownAsSuch) {
    const std::string none = " from rdb$database where 1 = 0";
    EXPECT_EQ(query("1 as n", "table", none).out, "N\n-\n(0 rows)\n");
    EXPECT_EQ(query("1 as n", "line", none).out, "(0 rows)\n");
    EXPECT_EQ(query("1 as n", "csv", none).out, "N\r\n");
    EXPECT_EQ(query("1 as n", "json", none).out, "[]\n");
}

TEST_F(QueryModes, FailureAmongTheRowsComesAfterTheRowsBeforeIt) {
    const std::pair<const char*, const char*> expected[] = {
        {"table", "X\n-\n3\n"}, {"line", "X = 3\n"}, {"csv", "X\r\n3\r\n"}, {"json", "[\n  {\"X\": 3}\n]\n"}};
    for (const auto& [mode, out] : expected) {
        const Finished run = on(path, {"query", fails_on_the_second_row, "--mode", mode});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, out);
        EXPECT_EQ(lines(run.err).at(0), "error: the query failed");
        EXPECT_NE(run.err.find("Integer divide by zero"), std::string::npos) << run.err;
    }
}

TEST_F(QueryModes, StatementWithoutRowsIsToldToGoElsewhere) {
    const Finished run = on(path, {"query", "create table t (a integer)"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "error: the statement returns no rows: exec runs such statements\n");
    EXPECT_EQ(on(path, {"query", "select a from t"}).status, 1);
}

TEST_F(QueryModes, OutputGoesToAFileWhichAFailureLeavesAlone) {
    const std::string out = write_file("rows.csv", "before");
    const Finished failed = on(path, {"query", "select nosuch from rdb$database", "-o", out});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(read_file(out), "before");
    const Finished run =
        on(path, {"query", "select 7 as n from rdb$database", "--mode", "csv", "--output", out});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(read_file(out), "N\r\n7\r\n");
}

TEST_F(QueryModes, FileThatCannotBeWrittenIsAnError) {
    for (const std::string& out : {file("nosuch/rows.csv"), std::string("/dev/full")}) {
        const Finished run = on(path, {"query", "select 7 from rdb$database", "-o", out});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.err.starts_with("error: cannot write " + out + ": ")) << run.err;
    }
}

TEST_F(QueryModes, UnknownModeIsWrongUsage) {
    EXPECT_EQ(query("1", "nosuch").status, 2);
    EXPECT_EQ(on(path, {"query", "select 1 from rdb$database", "--mode"}).status, 2);
}

// What a terminal of so many columns shows of a query.
class QueryOnATerminal : public QueryModes {
  protected:
    Performance shown(int columns, const std::string& statement, const std::string& setting = "ZMFB_X=1") {
        const std::string command = "env -u FIREBIRD -u FIREBIRD_LOCK -u NO_COLOR XDG_CACHE_HOME=" +
                                    (process_folder() / "cache").string() + " " + setting + " " + ZMFB_TOOL +
                                    " --db " + path + " query \"" + statement + "\"";
        return perform(10, columns, "xterm", [command](const Stage& stage) {
            if (std::system(command.c_str()) != 0) throw std::runtime_error("the query failed");
            stage.snapshot("end");
        });
    }
};

TEST_F(QueryOnATerminal, TextsAreCutToItsWidthAndNumbersAreNot) {
    const Performance run =
        shown(40, "select 1234567890 as n, rpad('', 60, 'abc') as t, 'short' as s from rdb\\$database");
    EXPECT_EQ(run.snapshot("end").line(0).substr(0, 39), "         N  T                      S   ");
    EXPECT_NE(run.bytes.find("1234567890  abcabcabcabcabcabcab…  short\r\n"), std::string::npos) << run.bytes;
    EXPECT_NE(run.bytes.find("(1 row; cut to the width of the terminal: --mode line shows all)"),
              std::string::npos)
        << run.bytes;
}

TEST_F(QueryOnATerminal, ColumnsThatDoNotFitAreLeftOut) {
    const Performance run =
        shown(30, "select 1234567890 as a, 1234567891 as b, 1234567892 as c from rdb\\$database");
    EXPECT_NE(run.bytes.find("1234567890  1234567891\r\n"), std::string::npos) << run.bytes;
    EXPECT_NE(run.bytes.find("1 of 3 columns left out"), std::string::npos) << run.bytes;
}

TEST_F(QueryOnATerminal, AutoIsLinesOnlyWhereARowIsTooWide) {
    const std::string statement = "select 'text' as t, 1234567890 as n from rdb\\$database";
    EXPECT_NE(shown(20, statement + "\" --mode \"auto")
                  .bytes.find("T              N\r\n----  ----------\r\ntext  1234567890\r\n(1 row)"),
              std::string::npos);
    EXPECT_NE(
        shown(15, statement + "\" --mode \"auto").bytes.find("T = text\r\nN = 1234567890\r\n\r\n(1 row)\r\n"),
        std::string::npos);
    EXPECT_EQ(query("rpad('', 300, 'x') as t", "auto").out, query("rpad('', 300, 'x') as t", "table").out);
}

TEST_F(QueryOnATerminal, HeadIsWrittenAgainWhenALateNumberIsWiderAndLateTextsAreCut) {
    std::string statement = widens_late;
    for (std::size_t i = 0; (i = statement.find('$', i)) != std::string::npos; i += 2)
        statement.insert(i, "\\");
    const std::string bytes = shown(80, statement + "\" --no-pager --mode \"table").bytes;
    EXPECT_NE(bytes.find("   K  T  Z\r\n----  -  ----\r\n   1  e  \x1b[2mNULL"), std::string::npos);
    EXPECT_NE(bytes.find("\r\n\r\n      K  T  Z\r\n-------  -  ----\r\n1000000  e  \x1b[2mNULL"),
              std::string::npos)
        << bytes;
    EXPECT_NE(bytes.find("\r\n    600  …  \x1b[2mNULL"), std::string::npos);
}

TEST_F(QueryOnATerminal, NullIsDimAndATextOfThatNameIsNot) {
    const std::string statement =
        "select cast(null as varchar(4)) as a, 'NULL' as b, 1 as c from rdb\\$database";
    EXPECT_NE(shown(80, statement).bytes.find("\x1b[2mNULL\x1b[0m  NULL  1\r\n"), std::string::npos);
    EXPECT_NE(shown(80, statement, "NO_COLOR=1").bytes.find("NULL  NULL  1\r\n"), std::string::npos);
    EXPECT_EQ(shown(80, statement, "NO_COLOR=1").bytes.find('\x1b'), std::string::npos);
}

}  // namespace
}  // namespace zmfb::test
