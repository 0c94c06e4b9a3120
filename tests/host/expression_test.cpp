#include "expression.h"

#include <gtest/gtest.h>

#include <string>

#include "errors.h"
#include "functions.h"
#include "host/date.h"
#include "host/number.h"
#include "values.h"

namespace zmfb::host_test {
namespace {

using host::array_of;
using host::Value;
using namespace std::string_view_literals;

TEST(Expression, KnowsTheLiterals) {
    expect_rows({{evaluate("\"text\""), "text"},
                 {evaluate("'it \"is\"'"), "it \"is\""},
                 {evaluate("[bracketed]"), "bracketed"},
                 {evaluate(R"("a\000b\0000\t\n\r\\\"\x41\377")"), "a\0b\0000\t\n\r\\\"A\xFF"sv},
                 {evaluate("10.25"), 10.25},
                 {evaluate(".5"), 0.5},
                 {evaluate("5."), 5},
                 {evaluate("0x1F"), 31},
                 {evaluate("-3"), -3},
                 {evaluate(".T."), true},
                 {evaluate(".f."), false},
                 {evaluate("nil"), {}},
                 {evaluate("0d20070301"), host::stod("20070301")},
                 {evaluate("{^2007-03-01}"), host::stod("20070301")},
                 {evaluate("{^}"), host::Date{}},
                 {evaluate("{}"), array_of()},
                 {evaluate("{1, {\"a\"}, , NIL}"), array_of(1, array_of("a"), Value(), Value())}});
}

TEST(Expression, LiteralsHaveTheirPictures) {
    const auto shown = [](const char* literal) { return host::str(evaluate(literal)); };
    expect_rows({{shown("10"), "        10"},
                 {shown("10.50"), "        10.50"},
                 {shown("10.0"), "        10.0"},
                 {shown("999999999"), " 999999999"},
                 {shown("1000000000"), " 1000000000"},
                 {shown("12345678901"), " 12345678901"},
                 {shown("1234567890.5"), "1234567890.5"},
                 {shown("12345678901.5"), "12345678901.5"},
                 {shown("-10.50"), "       -10.50"},
                 {shown("-5000000000"), "         -5000000000"}});
}

TEST(Expression, OperatorsBindByTheirLevels) {
    expect_rows({{evaluate("2 + 3 * 4"), 14},
                 {evaluate("(2 + 3) * 4"), 20},
                 {evaluate("2 * 3 ^ 2"), 18},
                 {evaluate("2 ** 3"), 8},
                 {evaluate("7 % 4 - 1"), 2},
                 {evaluate("10 - 3 - 2"), 5},
                 {evaluate("-2 + 5"), 3},
                 {evaluate("- -2"), 2},
                 {evaluate("1 + 1 = 2"), true},
                 {evaluate("1 < 2 .AND. 2 <= 2 .AND. 3 > 2 .AND. 3 >= 3"), true},
                 {evaluate("1 <> 2 .and. 1 # 2 .and. 1 != 2"), true},
                 {evaluate(".NOT. 1 = 2"), true},
                 {evaluate("! .F. .OR. .F."), true},
                 {evaluate(".F. .OR. .T. .AND. .F."), false},
                 {evaluate("\"b\" $ \"abc\""), true},
                 {evaluate("\"ab\" == \"a\" .OR. \"ab\" = \"a\""), true},
                 {evaluate("\"A  \" - \"B\""), "AB  "},
                 {evaluate("1 = 1.AND.2 = 2.OR..F."), true}});
}

TEST(Expression, EvaluatesOnlyWhatItNeeds) {
    expect_rows({{evaluate(".F. .AND. LEN(1)"), false},
                 {evaluate(".T. .OR. LEN(1)"), true},
                 {evaluate("IF(.T., 1, LEN(1))"), 1},
                 {evaluate("IIF(1 = 2, LEN(1), \"else\")"), "else"}});
}

TEST(Expression, IndexesArraysAndObjects) {
    expect_rows({{evaluate("{1, 2, 3}[2]"), 2},
                 {evaluate("{1, {\"a\", \"b\"}}[2][1]"), "a"},
                 {evaluate("{1, {\"a\", \"b\"}}[2, 2]"), "b"},
                 {evaluate("ERRORNEW():severity"), 0},
                 {evaluate("LEN(oErr:description)"), 0}});
}

TEST(Expression, EvaluatesBlocks) {
    expect_rows({{evaluate("EVAL({|a, b| a + b}, 1, 2)"), 3},
                 {evaluate("EVAL({|| 5})"), 5},
                 {evaluate("EVAL({|| })"), {}},
                 {evaluate("EVAL({|x| x}, )"), {}},
                 {evaluate("EVAL({|x, y| y}, 1)"), {}},
                 {evaluate("EVAL({|x| 1, x * 2}, 4)"), 8},
                 {evaluate("ASCAN({1, 2, 3}, {|x| x = 2})"), 2},
                 {evaluate("EVAL({|x| ASCAN({4, 5}, {|y| y = x})}, 5)"), 2}});
}

TEST(Expression, KnowsVariables) {
    expect_rows({{evaluate("(a := {1, 2}, AADD(a, 3), LEN(a))"), 3},
                 {evaluate("(n := 1, n := n + 1, n)"), 2},
                 {evaluate("VALTYPE(oErr)"), "O"},
                 {evaluate("oErr == oErr"), true},
                 {evaluate("oErr == oError"), false}});
    EXPECT_THROW(evaluate("nUnknown"), SyntaxError);
}

TEST(Expression, WhatIsNoneIsRefused) {
    for (const char* text : {"", "1 +", "(1", "{1", "{|a 1}", "F(1)", "\"open", "[open", "1 2", "1 @ 2",
                             "a[1", "{^2007", "IF(.T.)", "0x", "()", "1:", "\"\\x\""}) {
        EXPECT_THROW(evaluate(text), SyntaxError) << text;
    }
}

TEST(Expression, ErrorsReachTheHandler) {
    CaughtErrors caught("substitute");
    for (const char* text :
         {"1 .AND. .T.", "{1}[2]", "{1}[0]", "{1}[\"a\"]", "\"a\"[1]", "1 % 0", "5:field", ".NOT. 1",
          "SQRT(\"a\")", "ROUND(1)", "MIN(1, \"a\")", "MAX()", "MOD(1, 0)", "EVAL(1)"}) {
        evaluate(text);
        EXPECT_GE(caught.take_count(), 1) << text;
    }
}

TEST(Functions, BeyondTheRuntimesOwn) {
    expect_rows({{evaluate("ROUND(2.675, 2)"), 2.68},
                 {evaluate("STR(ROUND(2.5, 0))"), "         3"},
                 {evaluate("ROUND(-2.5, 0)"), -3},
                 {evaluate("ROUND(1250, -2)"), 1300},
                 {evaluate("MIN(2, 1)"), 1},
                 {evaluate("MAX(0d20070301, 0d20070302)"), host::stod("20070302")},
                 {evaluate("MOD(7, 3)"), 1},
                 {evaluate("MOD(-7, 3)"), 2},
                 {evaluate("SQRT(16)"), 4},
                 {evaluate("STR(SQRT(16))"), "         4.00"},
                 {evaluate("SQRT(-1)"), 0},
                 {evaluate("LOG(1)"), 0},
                 {evaluate("EXP(0)"), 1},
                 {evaluate("ATAIL({1, 2})"), 2},
                 {evaluate("ATAIL({})"), {}},
                 {evaluate("SET(87)"), {}}});
}

TEST(Functions, AreFoundByName) {
    for (const char* name :
         {"UPPER",  "ALLTRIM", "TRIM",    "RTRIM",   "LTRIM", "LEN",   "SUBSTR",    "LEFT",  "RIGHT",
          "AT",     "RAT",     "STRTRAN", "PADR",    "PADL",  "SPACE", "REPLICATE", "STR",   "STRZERO",
          "VAL",    "CHR",     "ASC",     "VALTYPE", "EMPTY", "ARRAY", "AADD",      "ASCAN", "ACOPY",
          "ACLONE", "ABS",     "INT",     "BIN2I",   "BIN2L", "DATE",  "TIME",      "DTOC",  "DTOS",
          "STOD",   "CTOD",    "YEAR",    "MONTH",   "DAY",   "LOWER", "STRPEEK",   "ROUND"}) {
        EXPECT_NE(find_function(name), nullptr) << name;
    }
    EXPECT_EQ(find_function("upper"), nullptr);
    EXPECT_EQ(evaluate("upper(\"a\")").string(), "A");
}

}  // namespace
}  // namespace zmfb::host_test
