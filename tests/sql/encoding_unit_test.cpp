// Between UTF-8 and the bytes of a database.
#include <gtest/gtest.h>

#include "sql/typed/encoding.h"

namespace zmfb::test {
namespace {

using typed::Encoding;

constexpr std::string_view e_acute = "\xC3\xA9", euro = "\xE2\x82\xAC", sign = "?";
constexpr std::size_t all_known = std::string_view::npos;

TEST(TextEncoding, OfOneByteACharacterIsKnownByItsName) {
    for (const char* name : {"ISO-8859-1", "iso-8859-15", "CP1252", "CP850", "CP437", "KOI8-R"})
        EXPECT_NE(Encoding::named(name), nullptr) << name;
    for (const char* name : {"", "nosuch", "UTF-16", "EBCDIC-US", "SHIFT-JIS", "GB18030", "ASCII"})
        EXPECT_EQ(Encoding::named(name), nullptr) << name;
}

TEST(TextEncoding, BringsEveryByteThereAndBack) {
    for (const char* name : {"ISO-8859-1", "CP1252", "CP850", "CP437"}) {
        const auto encoding = Encoding::named(name);
        for (int code = 0; code < 256; ++code) {
            const char byte = static_cast<char>(code);
            std::string utf8, back;
            if (encoding->decode({&byte, 1}, utf8, sign) != all_known) continue;
            EXPECT_TRUE(typed::holds_utf8(utf8));
            EXPECT_EQ(encoding->encode(utf8, back), "");
            EXPECT_EQ(back, std::string(1, byte)) << name << " " << code;
        }
    }
}

TEST(TextEncoding, TellsTheFirstCharacterThatItDoesNotHave) {
    std::string bytes;
    EXPECT_EQ(Encoding::latin1()->encode("ab" + std::string(e_acute) + std::string(euro) + "c", bytes), euro);
    bytes.clear();
    EXPECT_EQ(Encoding::named("CP1252")->encode(euro, bytes), "");
    EXPECT_EQ(bytes, "\x80");
}

TEST(TextEncoding, TellsTheFirstByteThatIsNoCharacter) {
    std::string utf8;
    EXPECT_EQ(Encoding::named("CP1252")->decode("ab\x81\xE9", utf8, sign), 2u);
    EXPECT_EQ(utf8, "ab?" + std::string(e_acute));
}

TEST(TextEncoding, Utf8StaysAsItIs) {
    const auto encoding = Encoding::named("utf-8");
    std::string utf8, bytes;
    EXPECT_EQ(encoding->decode(euro, utf8, sign), all_known);
    EXPECT_EQ(utf8, euro);
    EXPECT_EQ(encoding->encode(euro, bytes), "");
    EXPECT_EQ(bytes, euro);
    utf8.clear();
    EXPECT_EQ(encoding->decode("a\xE9z", utf8, sign), 1u);
    EXPECT_EQ(utf8, "a?z");
}

TEST(TextEncoding, KnowsWhatIsUtf8) {
    for (const std::string_view good :
         {std::string_view(""), std::string_view("a"), e_acute, euro, std::string_view("\xF0\x9F\x98\x80"),
          std::string_view("\xEF\xBF\xBD")})
        EXPECT_TRUE(typed::holds_utf8(good)) << good;
    for (const std::string_view bad :
         {"\x80", "\xC3", "\xC3(", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x80\x80\x80",
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xE2\x82"})
        EXPECT_FALSE(typed::holds_utf8(bad)) << bad;
}

}  // namespace
}  // namespace zmfb::test
