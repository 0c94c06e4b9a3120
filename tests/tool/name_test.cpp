#include "tool/name.h"

#include <gtest/gtest.h>

#include "tests/support/process.h"
#include "tool/encoding.h"

namespace zmfb::tool {
namespace {

TEST(Name, IsPlainWhenItMeansTheSameWithoutQuotes) {
    for (const char* plain : {"A", "CUSTOMERS", "T_1", "RDB$X", "ABCDEFGHIJKLMNOPQRSTUVWXYZABCDE"}) {
        EXPECT_TRUE(Name(plain).is_plain()) << plain;
        EXPECT_EQ(Name(plain).shown(), plain);
    }
    for (const char* odd : {"", "a", "A b", " A", "1A", "_A", "$A", "A-B", "A\"", "\xC3\x81", "A\n", "A;"}) {
        EXPECT_FALSE(Name(odd).is_plain()) << odd;
    }
    EXPECT_TRUE(Name("A  ").is_plain()) << "blanks at the end are not part of it";
}

TEST(Name, IsQuotedForSql) {
    const Name name("it's \"B\"");
    EXPECT_EQ(name.quoted(), "\"it's \"\"B\"\"\"");
    EXPECT_EQ(name.shown(), name.quoted());
    EXPECT_EQ(Name("\xC3\x81GUA").shown(), "\"ÁGUA\"");
    EXPECT_EQ(Name("\xC1GUA").shown(), "\"ÁGUA\"") << "before the engine looked at names";
}

TEST(Name, IsTypedAsInSql) {
    const std::pair<const char*, const char*> cases[] = {
        {"customers", "CUSTOMERS"},
        {"  Customers ", "CUSTOMERS"},
        {"\"Customers\"", "Customers"},
        {"\" a\"", " a"},
        {"\"a\"\"b\"", "a\"b"},
        {"\"\"\"\"", "\""},
        {"\"\"", "\"\""},
        {"a\"b", "A\"B"},
        {"\"a", "\"A"},
        {"", ""},
    };
    for (const auto& [typed, name] : cases) EXPECT_EQ(typed_name(typed).bytes(), name) << typed;
}

TEST(Name, AShellTakesAWordAsItIs) {
    for (const std::string text :
         {"drop table A", "drop table \"a\"", "it's", "$HOME `id` $(id) !! \\", "a\tb\x1b[31m'\\\x7f", "água",
          "\xC2\x9B"
          "31m",
          ""}) {
        const std::string word = shell_word(text);
        EXPECT_EQ(test::run({"bash", "-c", "printf %s " + word}).out, text) << word;
        for (const char c : word) EXPECT_FALSE(c >= 0 && c < ' ') << word;
        EXPECT_EQ(word.find("\xC2\x9B"), std::string::npos);
    }
    EXPECT_EQ(exec_command_line("drop table A"), "zmfb exec \"drop table A\"");
    EXPECT_EQ(exec_command_line("drop table \"a\""), "zmfb exec 'drop table \"a\"'");
}

TEST(ShownBytes, EscapesWhatCannotBeReadAndShowsTheRestInUtf8) {
    EXPECT_EQ(shown_bytes(std::string_view("a\0\x1A\\\x80\xE7\x7F", 7)), "a\\x00\\x1A\\x5C\\x80ç\\x7F");
}

}  // namespace
}  // namespace zmfb::tool
