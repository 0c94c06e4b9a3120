// What key expressions become in SQL, and what is refused with which words.
#include "rdd/key_expression.h"

#include <gtest/gtest.h>

namespace zmfb::test {
namespace {

const Structure& customers() {
    static const Structure fields{{"NAME", "C", 20, 0}, {"CITY", "C", 8, 0}, {"CREDIT", "N", 10, 2},
                                  {"CODE", "N", 6, 0},  {"BORN", "D", 8, 0}, {"GOOD", "L", 1, 0},
                                  {"RATE", "F", 15, 0}, {"NOTE", "U", 8, 0}, {"RECNO", "N", 15, 0}};
    return fields;
}

rdd::Term key(std::string_view expression, std::vector<std::string> aliases = {}) {
    return rdd::key_of(expression, {customers(), std::move(aliases)});
}

const std::string name = "cast(coalesce(\"NAME\", '') as char(20) character set none)";
const std::string city = "cast(coalesce(\"CITY\", '') as char(8) character set none)";

std::string digits(const std::string& column, int decimals) {
    return "cast(cast(coalesce(" + column + ", 0) as numeric(18, " + std::to_string(decimals) +
           ")) as varchar(21) character set none)";
}

struct Translated {
    const char* expression;
    std::string sql;
    char type;
    std::size_t width;
};

class KeyExpression : public ::testing::TestWithParam<Translated> {};

TEST_P(KeyExpression, BecomesSql) {
    const rdd::Term made = key(GetParam().expression);
    EXPECT_EQ(made.sql, GetParam().sql);
    EXPECT_EQ(made.type, GetParam().type);
    EXPECT_EQ(made.width, GetParam().width);
}

INSTANTIATE_TEST_SUITE_P(
    Table, KeyExpression,
    ::testing::Values(
        Translated{"NAME", name, 'C', 20}, Translated{" name ", name, 'C', 20},
        Translated{"FIELD->NAME", name, 'C', 20}, Translated{"_field -> name", name, 'C', 20},
        Translated{"CUST->NAME", name, 'C', 20}, Translated{"((NAME))", name, 'C', 20},
        Translated{"CITY+NAME", city + " || " + name, 'C', 28},
        Translated{"UPPER(NAME)", "upper(" + name + ")", 'C', 20},
        Translated{"lower( CITY )", "lower(" + city + ")", 'C', 8},
        Translated{"TRIM(CITY)", "cast(trim(trailing from " + city + ") as char(8) character set none)", 'C',
                   8},
        Translated{"CITY + \"it's\" + '\"' + [']",
                   city + " || _none x'69742773' || _none x'22' || _none x'27'", 'C', 14},
        Translated{"SUBSTR(NAME, 3, 2)", "substring(" + name + " from 3 for 2)", 'C', 2},
        Translated{"SUBSTR(NAME, 3)", "substring(" + name + " from 3 for 18)", 'C', 18},
        Translated{"SUBSTR(NAME, 19, 5)", "substring(" + name + " from 19 for 2)", 'C', 2},
        Translated{"SUBSTR(NAME, -3)", "substring(" + name + " from 18 for 3)", 'C', 3},
        Translated{"SUBSTR(NAME, 0, 2.9)", "substring(" + name + " from 1 for 2)", 'C', 2},
        Translated{"PADR(CITY, 3)", "cast(rpad(" + city + ", 3) as char(3) character set none)", 'C', 3},
        Translated{"PADL(TRIM(CITY), 9)",
                   "cast(lpad(trim(trailing from " + city + "), 9) as char(9) character set none)", 'C', 9},
        Translated{"STR(CREDIT)",
                   "cast(iif(octet_length(" + digits("\"CREDIT\"", 2) + ") > 10, " +
                       rdd::literal("**********") + ", lpad(" + digits("\"CREDIT\"", 2) +
                       ", 10)) as char(10) character set none)",
                   'C', 10},
        Translated{"STRZERO(CODE, 3)",
                   "cast(iif(octet_length(" + digits("\"CODE\"", 0) + ") > 3, " + rdd::literal("***") +
                       ", iif(" + digits("\"CODE\"", 0) +
                       " starting with _none x'2d', _none x'2d' || lpad(substring(" + digits("\"CODE\"", 0) +
                       " from 2), 2, _none x'30'), lpad(" + digits("\"CODE\"", 0) +
                       ", 3, _none x'30'))) as char(3) character set none)",
                   'C', 3},
        Translated{"STR(CREDIT + CODE + 1.5, 12, 3)",
                   "cast(zmstr(((coalesce(\"CREDIT\", 0) + coalesce(\"CODE\", 0)) + 1.5), 12, 3) as char(12) "
                   "character "
                   "set none)",
                   'C', 12},
        Translated{"STRZERO(RATE, 8, 1)",
                   "cast(zmstrzero(coalesce(\"RATE\", 0), 8, 1) as char(8) character set none)", 'C', 8},
        Translated{"CREDIT",
                   "cast(cast(coalesce(\"CREDIT\", 0) as numeric(18, 2)) + 50000000000000000 as char(20) "
                   "character set none)",
                   'N', 20},
        Translated{"BORN",
                   "coalesce(cast(cast(\"BORN\" as date) as char(10) character set none), _none "
                   "x'20202020202020202020')",
                   'D', 10},
        Translated{"GOOD", "cast(coalesce(\"GOOD\", 'F') as char(1) character set none)", 'L', 1}));

TEST(KeyExpressionAliases, AreThoseOfTheAreaWhereTheyAreKnown) {
    EXPECT_EQ(key("cust->NAME", {"Customers", "Cust"}).sql, name);
    EXPECT_THROW(key("STOCK->NAME", {"CUSTOMERS", "CUST"}), rdd::OrderError);
}

struct Refused {
    const char* expression;
    const char* why;
};

class RefusedKey : public ::testing::TestWithParam<Refused> {};

TEST_P(RefusedKey, TellsWhatWasNotUnderstood) {
    try {
        key(GetParam().expression);
        FAIL() << "taken";
    } catch (const rdd::OrderError& error) {
        EXPECT_EQ(error.what(),
                  std::string(GetParam().expression) + " cannot be a key: " + GetParam().why +
                      ". A key is made of fields, texts, numbers, +, UPPER, LOWER, TRIM, SUBSTR, STR, "
                      "STRZERO, DTOS, PADR and PADL");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedKey,
    ::testing::Values(
        Refused{"", "it ends too early"}, Refused{"NAME +", "it ends too early"},
        Refused{"SOUNDEX(NAME)", "\"SOUNDEX\" is not understood"},
        Refused{"UPPER(SURNAME)", "\"SURNAME\" is not understood"},
        Refused{"NAME - CITY", "\"-\" is not understood"}, Refused{"NAME CITY", "\"CITY\" is not understood"},
        Refused{"NAME = 'a'", "\"=\" is not understood"}, Refused{"NAME + 'a", "\"'a\" is not understood"},
        Refused{"M->NAME", "\"M->\" is not understood"},
        Refused{"FIELD->", "a field is missing behind FIELD->"},
        Refused{"FIELD->(NAME)", "a field is missing behind FIELD->"},
        Refused{"UPPER(NAME", ") is missing before its end"},
        Refused{"UPPER(NAME; CITY)", ") is missing before \";\""},
        Refused{"UPPER(NAME, CITY)", "UPPER takes at most 1 arguments"},
        Refused{"UPPER(CREDIT)", "UPPER takes a text"}, Refused{"DTOS(NAME)", "DTOS takes a date"},
        Refused{"STR(NAME, 5)", "STR takes a number"},
        Refused{"NAME + CREDIT", "+ joins two texts, or adds two numbers"},
        Refused{"BORN + 1", "+ joins two texts, or adds two numbers"},
        Refused{"SUBSTR(NAME, CODE)", "SUBSTR takes lengths and positions that stand there themselves"},
        Refused{"SUBSTR(NAME)", "SUBSTR takes lengths and positions that are numbers"},
        Refused{"STR(CODE + CODE)", "STR of what is no field needs a length"},
        Refused{"STR(CODE, 256)", "STR gives at most 255 characters"},
        Refused{"RATE + 1", "it is made of floating numbers; STR of it can be one"},
        Refused{"CREDIT + 0.12345678901",
                "it may have more than 18 digits, those behind the point among them"},
        Refused{"STR(CODE + CREDIT + 0.12345678901, 20, 2)",
                "it may have more than 18 digits, those behind the point among them"},
        Refused{"NOTE", "NOTE is a field of no type that keys are made of"},
        Refused{"'constant'", "it has no field in it"}, Refused{"SUBSTR(NAME, 1, 0)", "it is always empty"},
        Refused{"CODE + 12345678901234567890", "\"12345678901234567890\" is not understood"},
        Refused{"NAME+'a'; drop table T", "\";\" is not understood"}));

std::string nested(std::string_view begin, int times, std::string_view inner, std::string_view end) {
    std::string expression, behind;
    for (; times > 0; --times) expression += begin, behind += end;
    return expression + std::string(inner) + behind;
}

std::string refusal(const std::string& expression) {
    try {
        key(expression);
        return "";
    } catch (const rdd::OrderError& error) {
        return error.what();
    }
}

TEST(LongKey, IsRefusedBeforeItFillsTheMemoryOrTheStack) {
    EXPECT_EQ(refusal(nested("(", 90, "NAME", ")")), "");
    EXPECT_NE(refusal(nested("(", 10'000, "NAME", ")")).find(": it nests too deeply."), std::string::npos);
    EXPECT_EQ(refusal(nested("SUBSTR(", 5, "TRIM(NAME)", ",-1)")), "");
    EXPECT_NE(refusal(nested("SUBSTR(", 20, "TRIM(NAME)", ",-1)")).find(": it becomes too long in SQL."),
              std::string::npos);
    EXPECT_NE(refusal(nested("NAME+", 10'000, "NAME", "")).find(": it becomes too long in SQL."),
              std::string::npos);
}

TEST(UniqueOrder, LeavesOutWhatHasAnEarlierRecordOfItsValue) {
    const rdd::Order order = rdd::order_of("CUST", "CITY", "CITY", true, {customers()});
    const std::string of_this = "cast(coalesce(\"CUST\".\"CITY\", '') as char(8) character set none)";
    const std::string other =
        "cast(coalesce(ZM_O.\"CITY\", '') as char(8) character set none) || "
        "cast(cast(ZM_O.RECNO as bigint) + 1000000000000000 as char(16) character set none)";
    EXPECT_EQ(
        order.only,
        "not exists (select 1 from \"CUST\" ZM_O where " + other + " >= " + of_this + " and " + other +
            " < " + of_this +
            " || cast(cast(\"CUST\".RECNO as bigint) + 1000000000000000 as char(16) character set none))");
    EXPECT_EQ(rdd::order_of("CUST", "CITY", "CITY", false, {customers()}).only, "");
}

}  // namespace
}  // namespace zmfb::test
