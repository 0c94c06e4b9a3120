#include "catalog/regex.h"

#include "tests/support/runtime.h"
#include "zmfbconn/connection.h"

namespace zmfb::test {
namespace {

using catalog::matchregex;
using catalog::substr;

class Regex : public Runtime {};

struct Match {
    std::string str;
    std::string pattern;
    std::string result;
};

const Match matches[] = {
    {"NUMERIC(10,2)", R"(.*\((.*),.*)", "10"},
    {"NUMERIC(10,2) and (7,1)", R"(.*\((.*),.*)", "7"},
    {"NUMERIC", R"(.*\((.*),.*)", ""},
    {"", R"(.*\((.*),.*)", ""},
    // The last of the consecutive groups stays.
    {"ab", "(a)(b)", "b"},
    {"abcdefghij", "(a)(b)(c)(d)(e)(f)(g)(h)(i)", "i"},
    {"abcdefghij", "(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)", "i"},
    // A group without a part in the match ends the count, also when later ones matched.
    {"ac", "(a)(b)?(c)", "a"},
    {"c", "(b)?(c)", ""},
    // The whole match is no group.
    {"abc", "b", ""},
    {"abc", "x(y)", ""},
    // A group that matched nothing gives the rest of the text from its place.
    {"abc", "a(x*)", "bc"},
    {"abc", "abc(x*)", ""},
    {"abc", "(x*)abc", "abc"},
    // Extended expressions; "." crosses line ends unless the pattern begins with "^".
    {"aaab", "(a{2})b", "aa"},
    {"one\ntwo", "e(.t)", "\nt"},
    {"one\ntwo", "(two)", "two"},
    {"one\ntwo", "^(t.*)", "two"},
    {"one\ntwo", "x|^(t.*)", ""},
    {"one\ntwo\n", "^(o.*)", "one"},
    // No valid pattern.
    {"abc", "(", ""},
    {"abc", "a{2,1}(b)", ""},
    {"abc", "", ""},
    // Texts end at their first zero byte.
    {std::string("ab\0(c)", 6), "b(.*)", ""},
    {"abc", std::string("(b)\0(c)", 7), "b"},
    {std::string("\0abc", 4), "(.*)", ""},
};

TEST_F(Regex, ExecregexGivesTheLastGroupThatMatched) {
    zmFBConn connection;
    for (const Match& match : matches) {
        SCOPED_TRACE(match.str + " ~ " + match.pattern);
        EXPECT_EQ(connection.call("execregex", match.str, match.pattern).string(), match.result);
        EXPECT_EQ(matchregex(match.str, match.pattern), match.result);
    }
}

TEST_F(Regex, CapturesLongerThan1023BytesComeWhole) {
    zmFBConn connection;
    for (const std::size_t size : {1022U, 1023U, 1024U, 5000U, 32000U}) {
        const std::string capture(size, 'x');
        EXPECT_EQ(connection.call("execregex", "(" + capture + ",)", R"(.*\((.*),.*)").string(), capture)
            << size;
    }
}

TEST_F(Regex, PositionsWrapAt16Bits) {
    // A group that starts behind position 32767 has a negative start: nothing.
    EXPECT_EQ(matchregex(std::string(32767, 'x') + "ab", "x(a)"), "");
    EXPECT_EQ(matchregex(std::string(32766, 'x') + "ab", "x(a)"), "a");
    // A capture longer than 32767 bytes has a negative length: up to the end of the text.
    EXPECT_EQ(matchregex(std::string(40000, 'x') + "ab", "(x*)a"), std::string(40000, 'x') + "ab");
}

TEST_F(Regex, SubstrCountsFromOneAndALengthBelowOneMeansUpToTheEnd) {
    EXPECT_EQ(substr("abcdef", 1, 2), "ab");
    EXPECT_EQ(substr("abcdef", 3, 0), "cdef");
    EXPECT_EQ(substr("abcdef", 3, -5), "cdef");
    EXPECT_EQ(substr("abcdef", 5, 9), "ef");
    EXPECT_EQ(substr("abcdef", 6, 1), "f");
    EXPECT_EQ(substr("abcdef", 7, 1), "");
    EXPECT_EQ(substr("abcdef", 8, 0), "");
    EXPECT_EQ(substr("abcdef", 0, 3), "");
    EXPECT_EQ(substr("abcdef", -1, 3), "");
    EXPECT_EQ(substr("", 1, 3), "");
}

TEST_F(Regex, AnArgumentThatIsNoTextIsRaised) {
    zmFBConn connection;
    EXPECT_EQ(connection.call("execregex").string(), "");
    EXPECT_EQ(raised().size(), 2U);
}

}  // namespace
}  // namespace zmfb::test
