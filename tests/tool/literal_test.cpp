#include "tool/literal.h"

#include <gtest/gtest.h>

#include "host/error.h"
#include "tests/support/runtime.h"
#include "tool/json.h"

namespace zmfb::test {
namespace {

using host::Value;
using tool::parse_call;
using tool::SyntaxError;
using tool::to_literal;

class Literal : public Runtime {
  protected:
    static Value argument(const std::string& source) {
        return parse_call("f(" + source + ")").parts.at(0).value;
    }
};

struct ReadCase {
    const char* source;
    const char* shown;  // as show() has it: bytes outside ASCII as \xnn
};

TEST_F(Literal, ValuesAreReadAsTheyAreTyped) {
    for (const auto& [source, shown] : std::vector<ReadCase>{
             {"\"CUSTOMER\"", "\"CUSTOMER\""},
             {"'it \"is\"'", R"("it \"is\"")"},
             {"\"\"", "\"\""},
             {"12", "12"},
             {"-1.50", "-1.5"},
             {"+7", "7"},
             {".5", "0.5"},
             {"12345678901", "12345678901"},
             {".T.", ".T."},
             {".f.", ".F."},
             {"NIL", "NIL"},
             {"nil", "NIL"},
             {"{^2007-03-01}", "{^2007-03-01}"},
             {"{}", "{}"},
             {"{1, {\"b\", .F.}, NIL}", "{1, {\"b\", .F.}, NIL}"},
             {"\"a\" + CHR(10) + 'b'", R"("a\x0ab")"},
             {"chr(0)", R"("\x00")"},
             {"\"descrição\"", R"("descri\xe7\xe3o")"},
             {"  7  ", "7"},
         }) {
        EXPECT_EQ(show(argument(source)), shown) << source;
    }
}

TEST_F(Literal, WhatIsNoLiteralIsRefusedInWords) {
    for (const char* source : {"f(",
                               "f(1",
                               "f(1,)",
                               "f(\"a)",
                               "f(abc)",
                               "f(1)x",
                               "1",
                               "",
                               "f({1)",
                               "f({^2007-13-01})",
                               "f({^20070301})",
                               "f({^2007-03-01)",
                               "f(1.2.3)",
                               "f(12x)",
                               "f(.X.)",
                               "f(1 + 2)",
                               "f(chr(256))",
                               "f(\"\xE2\x82\xAC\")",
                               "f(\"\xFF\")",
                               "f(1e5)",
                               "f(--1)",
                               "f(inf)"}) {
        EXPECT_THROW(parse_call(source), SyntaxError) << source;
    }
}

TEST_F(Literal, ArraysNestedBeyondReasonAreRefused) {
    EXPECT_THROW(parse_call("f(" + std::string(100000, '{') + ")"), SyntaxError);
}

TEST_F(Literal, ANameAloneIsACallWithoutArguments) {
    for (const char* source : {"isconnected", "isconnected()", " IsConnected ( ) "}) {
        const tool::Expression call = parse_call(source);
        EXPECT_EQ(call.method, "isconnected");
        EXPECT_TRUE(call.parts.empty());
    }
}

TEST_F(Literal, CallsMayStandWhereValuesMay) {
    using Kind = tool::Expression::Kind;
    const tool::Expression call = parse_call("f(g(1, h()), 'a' + g() + 'b', {1, g()}, :area, {1, {2}})");
    ASSERT_EQ(call.parts.size(), 5u);
    EXPECT_EQ(call.parts[0].method, "g");
    EXPECT_EQ(call.parts[0].parts.at(1).method, "h");
    EXPECT_EQ(call.parts[1].kind, Kind::join);
    EXPECT_EQ(call.parts[2].kind, Kind::array);
    EXPECT_EQ(call.parts[3].method, "getuniqueareaid");
    EXPECT_EQ(call.parts[4].kind, Kind::value);
    for (const char* source :
         {"f(g)", "f(g(1)", "f(g(1) + 2)", "f({1} + g())", "f(:nosuch)", "f(:)", "f(1g())"})
        EXPECT_THROW(parse_call(source), SyntaxError) << source;
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "f(";
    EXPECT_THROW(parse_call(deep), SyntaxError);
}

TEST_F(Literal, TheEmptyDateHasALiteral) {
    EXPECT_EQ(argument("{^}").date(), host::Date{});
    EXPECT_EQ(to_literal(argument("{^}")), "{^}");
}

TEST_F(Literal, EveryValueIsWrittenSoThatItReadsBackTheSame) {
    for (const Value& value :
         {Value(), Value(""), Value("plain"), Value("it's"), Value("say \"x\""), Value("both ' and \""),
          Value("\"'\"'"), Value(std::string_view("a\0b", 3)), Value("line\r\nend\x7F"),
          Value("\xE7\xE3\xFF"), Value(0), Value(-1.5), Value(1e20), Value(0.1), Value(1.0 / 3),
          Value(123456789012345.0), Value(true), Value(false)}) {
        const std::string literal = to_literal(value);
        EXPECT_EQ(literal.find('\n'), std::string::npos);
        EXPECT_TRUE(argument(literal).same(value)) << literal;
    }
}

TEST_F(Literal, ControlsAreWrittenByTheirNumbersLettersAsTheyAre) {
    EXPECT_EQ(to_literal("a\x1b[2Jb"), "\"a\" + CHR(27) + \"[2Jb\"");
    EXPECT_EQ(to_literal("a\x9b"
                         "2Jb\xe9"),
              "\"a\" + CHR(155) + \"2Jb\u00e9\"");
}

TEST_F(Literal, ArraysAreWrittenWithTheirElements) {
    EXPECT_EQ(to_literal(host::array_of(1, host::array_of("a", Value()), host::array_of())),
              "{1, {\"a\", NIL}, {}}");
}

TEST_F(Literal, JsonHasNullForNilDatesAsTextsAndUtf8) {
    const Value value = host::array_of(Value(), true, 7, 1.5, "\xE7", host::Date{2454161}, host::Date{});
    EXPECT_EQ(tool::to_json(value).dump(), "[null,true,7,1.5,\"ç\",\"2007-03-01\",\"\"]");
}

// No call gives them today; whoever prints a value may meet them.
TEST_F(Literal, WhatHasNoLiteralIsNamed) {
    const Value block = Value::block([](host::Args) { return Value(); });
    const Value object = host::error_new();
    EXPECT_EQ(to_literal(block), "<block>");
    EXPECT_EQ(tool::to_json(block), "<block>");
    EXPECT_EQ(to_literal(object), "<object ERROR>");
    EXPECT_EQ(tool::to_json(object), "<object ERROR>");
}

}  // namespace
}  // namespace zmfb::test
