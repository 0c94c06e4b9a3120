#include <gtest/gtest.h>
#include <sys/resource.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "host/number.h"
#include "tests/support/database.h"
#include "tests/support/environment.h"

namespace zmfb::test {
namespace {

// An SQL expression and its value, in brackets so that its blanks show; SQL NULL is NULL.
struct Expected {
    std::string expression;
    std::string value;
};

// The most memory that this process, and with it the embedded engine, has had at a time.
long peak_kilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class UdfInSql : public Database {
  protected:
    void expect(const std::vector<Expected>& cases, const std::string& from = "rdb$database") {
        BareClient client(database());
        for (const Expected& given : cases) {
            const std::string query = "select '[' || " + given.expression + " || ']' from " + from;
            EXPECT_EQ(client.rows(query), (Rows{{given.value}})) << query;
        }
    }

    void expect_refused(const std::string& query) { EXPECT_THROW(rows(query), std::runtime_error) << query; }
};

TEST_F(UdfInSql, AllElevenAreThere) {
    const std::string module = functions_of_this_run() == Functions::module ? "= 'zmrddudfs' " : "is null ";
    EXPECT_EQ(
        rows("select rdb$function_name from rdb$functions where rdb$system_flag = 0 and rdb$module_name " +
             module + "order by rdb$function_name"),
        (Rows{{"SKIPPAD"},
              {"ZMBLOBSUBSTR"},
              {"ZMDTOS"},
              {"ZMLOWER"},
              {"ZMPADL"},
              {"ZMPADR"},
              {"ZMSTR"},
              {"ZMSTRZERO"},
              {"ZMSUBSTR"},
              {"ZMTRIM"},
              {"ZMUPPER"}}));
}

TEST_F(UdfInSql, TextsAreTrimmedChangedAndCut) {
    expect({{"zmtrim('  ab cd  ')", "[ab cd]"},
            {"zmtrim(cast('ab' as char(10)))", "[ab]"},
            {"zmtrim('   ')", "[]"},
            {"zmtrim('')", "[]"},
            {"zmlower('ABC')", "[abc]"},
            {"zmlower('\xC7\xD7\xDF')", "[\xE7\xD7\xDF]"},
            {"zmupper('abc')", "[ABC]"},
            {"zmupper('descri\xE7\xE3o \xF7\xFF')", "[DESCRI\xC7\xC3O \xF7\xFF]"},
            {"zmsubstr('abcdef', 2, 3)", "[bcd]"},
            {"zmsubstr('abcdef', -2, 5)", "[ef]"},
            {"zmsubstr('abcdef', 7, 1)", "[]"},
            {"zmpadr('ab', 5)", "[ab   ]"},
            {"zmpadl('ab', 5)", "[   ab]"},
            {"zmpadl(12, 5)", "[   12]"},
            {"zmpadl('abcdef', 5)", "[abcde]"},
            {"zmpadr('ab', 0)", "[]"}});
}

TEST_F(UdfInSql, DatesBecomeEightDigits) {
    expect({{"zmdtos(timestamp '2007-03-01 14:05:09.1234')", "[20070301]"},
            {"zmdtos(date '2008-02-29')", "[20080229]"},
            {"zmdtos(timestamp '0001-01-01 00:00:00')", "[00010101]"},
            {"zmdtos(timestamp '9999-12-31 23:59:59.9999')", "[99991231]"},
            {"zmdtos(cast(null as timestamp))", "[        ]"}});
}

TEST_F(UdfInSql, SkippadGivesTheDateBehindTheMark) {
    expect({{"SkipPad('{{D}}'||timestamp '2007-03-01 00:00:00')", "[20070301]"},
            {"SkipPad('{{D}}'||timestamp '2007-03-01 14:05:09.1234')", "[20070301]"},
            {"SkipPad('{{D}}'||date '2007-03-01')", "[20070301]"},
            {"SkipPad('{{D}}'||cast(null as timestamp))", "[        ]"},
            {"SkipPad('{{D}}2007-03-01   ')", "[20070301]"},
            {"SkipPad('{{D}}')", "[        ]"}});
}

TEST_F(UdfInSql, SkippadGivesAnyOtherColumnAsItsText) {
    execute("create table t (c char(6), v varchar(6), n numeric(9,2), i integer, d timestamp, f char(4))");
    execute("insert into t values ('ab', ' v ', -1.5, 7, '2007-03-01 14:05:09', null)");
    expect({{"skippad(c)", "[ab    ]"},
            {"skippad(v)", "[ v ]"},
            {"skippad(n)", "[-1.50]"},
            {"skippad(i)", "[7]"},
            {"skippad(d)", "[2007-03-01 14:05:09.0000]"},
            {"skippad(f)", "[        ]"}},
           "t");
}

TEST_F(UdfInSql, NumbersArePrinted) {
    expect({{"zmstr(12.345, 8, 2)", "[   12.35]"},
            {"zmstr(-1.5, 8, 2)", "[   -1.50]"},
            {"zmstr(100000, 5, 0)", "[*****]"},
            {"zmstr(5, 0, 0)", "[         5]"},
            {"zmstrzero(12.345, 8, 2)", "[00012.35]"},
            {"zmstrzero(-1.5, 8, 2)", "[-0001.50]"},
            {"zmstrzero(100000, 5, 0)", "[*****]"}});
}

TEST_F(UdfInSql, NumbersArePrintedAsTheRuntimePrintsThem) {
    BareClient client(database());
    const std::vector<std::string> numbers{"0",     "1",      "-1",     "0.5",       "-0.4",      "2.5",
                                           "1.005", "-2.675", "99.995", "123456789", "-99999999", "0.0001",
                                           "1e15",  "1.1e-7", "0.3",    "1e17",      "-1.5e20",   "33.333"};
    for (const std::string& number : numbers) {
        const double n = std::stod(number);
        for (const int length : {-1, 5, 12, 25}) {
            for (const int decimals : {-1, 0, 2, 6}) {
                const std::string arguments = "(cast('" + number + "' as double precision), " +
                                              std::to_string(length) + ", " + std::to_string(decimals) + ")";
                const std::string query = "select zmstr" + arguments + " || '|', zmstrzero" + arguments +
                                          " || '|' from rdb$database";
                const std::string blanks = host::str(n, length, decimals).string();
                const std::string zeros = host::strzero(n, length, decimals).string();
                EXPECT_EQ(client.rows(query), (Rows{{blanks + "|", zeros + "|"}})) << query;
            }
        }
    }
}

TEST_F(UdfInSql, NullValueGivesNull) {
    expect({{"zmtrim(null)", "NULL"},
            {"zmlower(null)", "NULL"},
            {"zmupper(null)", "NULL"},
            {"zmsubstr(null, 1, 1)", "NULL"},
            {"zmstr(null, 5, 0)", "NULL"},
            {"zmstrzero(null, 5, 0)", "NULL"},
            {"zmpadr(null, 5)", "NULL"},
            {"zmpadl(null, 5)", "NULL"}});
}

TEST_F(UdfInSql, NullStartLengthOrDecimalsCountAsZero) {
    expect({{"zmsubstr('abc', null, 2)", "[ab]"},
            {"zmsubstr('abc', 1, null)", "[]"},
            {"zmpadr('abc', null)", "[]"},
            {"zmpadl('abc', null)", "[]"},
            {"zmstr(1.5, 5, null)", "[    2]"},
            {"zmstr(1.5, null, 1)", "[       1.5]"}});
}

TEST_F(UdfInSql, TextEndsBeforeItsFirstZeroByte) {
    expect({{"zmtrim(' a'||x'00'||'b')", "[a]"},
            {"zmlower('A'||x'00'||'B')", "[a]"},
            {"zmupper('a'||x'00'||'b')", "[A]"},
            {"zmsubstr('ab'||x'00'||'cd', -1, 5)", "[b]"},
            {"zmpadr('a'||x'00'||'b', 3)", "[a  ]"},
            {"zmpadl('a'||x'00'||'b', 3)", "[  a]"},
            {"skippad('ab'||x'00'||'cd')", "[ab]"},
            {"skippad('{{D}}2007-03-01'||x'00'||'x')", "[20070301]"}});
}

TEST_F(UdfInSql, TextOf4000BytesPassesAndALongerOneIsRefused) {
    expect({{"char_length(zmtrim(rpad('x', 4000, 'x')))", "[4000]"},
            {"char_length(skippad(rpad('x', 4000, 'x')))", "[4000]"},
            {"char_length(zmtrim(cast('x' as char(8000))))", "[1]"}});
    for (const std::string function : {"zmtrim", "zmlower", "zmupper", "skippad"}) {
        expect_refused("select " + function + "(rpad('x', 4001, 'x')) from rdb$database");
    }
    expect_refused("select zmsubstr(rpad('x', 4001, 'x'), 1, 1) from rdb$database");
    expect_refused("select zmpadr(rpad('x', 4001, 'x'), 1) from rdb$database");
}

TEST_F(UdfInSql, LengthsBeyondTheLimitsAreCut) {
    expect({{"char_length(zmpadr('x', 2147483647))", "[4000]"},
            {"char_length(zmpadl('x', 4001))", "[4000]"},
            {"char_length(zmpadl('x', -2147483648))", "[0]"},
            {"char_length(zmstr(1, 2147483647, 0))", "[255]"},
            {"zmstr(1, 5, 2147483647)", "[*****]"}});
}

TEST_F(UdfInSql, CallsByTheThousandGiveTheirMemoryBack) {
    if (on_server()) GTEST_SKIP() << "the engine's memory is that of another process";
    execute("create table t (id integer)");
    execute(
        "execute block as declare i integer = 0; begin while (i < 300) do begin "
        "insert into t values (:i); i = i + 1; end end");
    const long before = peak_kilobytes();
    EXPECT_EQ(rows("select count(*) from t a cross join t b where zmpadl(a.id + b.id, 4000) <> ''"),
              (Rows{{"90000"}}));
    // 90,000 results of 4000 bytes that stay would be 360 million bytes.
    EXPECT_LT(peak_kilobytes() - before, 100'000);
}

}  // namespace
}  // namespace zmfb::test
