#include "dbf/code_page.h"

#include <gtest/gtest.h>

#include "dbf/memo.h"
#include "tests/host/folder.h"
#include "tests/support/dbf_builder.h"

namespace zmfb::dbf {
namespace {

TEST(DbfCodePage, EveryLanguageByteHasASetThatIsKnown) {
    int said = 0;
    for (int language = 0; language < 256; ++language) {
        const std::string name = code_page_of(static_cast<std::uint8_t>(language));
        if (name.empty()) continue;
        ++said;
        EXPECT_TRUE(ToUtf8(name).known()) << name;
    }
    EXPECT_EQ(said, 35);
}

TEST(DbfCodePage, LanguageBytes) {
    struct Case {
        std::uint8_t language;
        std::string code_page;
    };
    for (const Case& c : {Case{0x00, ""},
                          {0x01, "CP437"},
                          {0x02, "CP850"},
                          {0x03, "CP1252"},
                          {0x26, "CP866"},
                          {0x57, "CP1252"},
                          {0x65, "CP866"},
                          {0xC8, "CP1250"},
                          {0xFF, ""}}) {
        EXPECT_EQ(code_page_of(c.language), c.code_page) << int(c.language);
    }
}

TEST(DbfCodePage, WordsOfACpgFile) {
    struct Case {
        std::string words;
        std::string code_page;
    };
    for (const Case& c : {Case{"UTF-8", "UTF-8"},
                          {"utf8\r\n", "UTF-8"},
                          {"65001", "UTF-8"},
                          {"1252", "CP1252"},
                          {"ANSI 1251", "CP1251"},
                          {"OEM 850", "CP850"},
                          {"cp866", "CP866"},
                          {"windows-1250", "CP1250"},
                          {"ISO 88591", "ISO-8859-1"},
                          {"ISO-8859-15", "ISO-8859-15"},
                          {"8859_2", "ISO-8859-2"},
                          {"Big5", "big5"},
                          {"", ""},
                          {"System", ""},
                          {"ANSI 99999", ""}}) {
        EXPECT_EQ(code_page_named(c.words), c.code_page) << c.words;
    }
}

TEST(DbfCodePage, TextsBecomeUtf8) {
    EXPECT_EQ(ToUtf8("CP850").convert("\x87"), "ç");
    EXPECT_EQ(ToUtf8("CP1252").convert("\x80 1"), "€ 1");
    EXPECT_EQ(ToUtf8("CP866").convert("\x8F\xE0"), "Пр");
    EXPECT_EQ(ToUtf8("CP932").convert("\x93\xFA"), "日");
    EXPECT_EQ(ToUtf8("UTF-8").convert("ç"), "ç");
    EXPECT_EQ(ToUtf8("CP1252").convert(""), "");
    EXPECT_EQ(ToUtf8("CP1252").convert("\x81"), std::nullopt) << "no character";
    EXPECT_EQ(ToUtf8("CP932").convert("\x93"), std::nullopt) << "half a character";
    EXPECT_EQ(ToUtf8("UTF-8").convert("\xE7"), std::nullopt) << "no UTF-8";
    EXPECT_EQ(ToUtf8("NO_SUCH_SET").convert("a"), std::nullopt);
}

class Companions : public host_test::FolderTest {
  protected:
    std::string write(const std::string& name, const std::string& content = "x") {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }
};

TEST_F(Companions, ACpgFileGoesBeforeTheLanguageByte) {
    Header header;
    header.language = 0x03;
    const std::string table = write("a.dbf");
    EXPECT_EQ(code_page(table, header), "CP1252");
    write("A.CPG", "UTF-8");
    EXPECT_EQ(code_page(table, header), "UTF-8");
}

TEST_F(Companions, WhatNamesNoCodePageThatIsKnownIsNoted) {
    const std::string table = write("a.dbf");
    write("a.cpg", "System\r\n");
    Header header;
    header.language = 0x03;
    EXPECT_EQ(code_page(table, header), "CP1252");
    EXPECT_EQ(header.notes,
              std::vector<std::string>{"its .cpg file names no code page that is known: system"});
    Header odd;
    odd.language = 0x05;
    EXPECT_EQ(code_page(write("b.dbf"), odd), "");
    EXPECT_EQ(odd.notes, std::vector<std::string>{"its language byte 05 means no code page that is known"});
    Header plain;
    EXPECT_EQ(code_page(path("b.dbf"), plain), "");
    EXPECT_EQ(plain.notes, std::vector<std::string>{}) << "0 says nothing";
}

TEST_F(Companions, AMemoFileIsFoundInAnyLetterCaseAndByTheDialectFirst) {
    Header header;
    header.dialect = Dialect::visual_foxpro;
    const std::string table = write("Table.DBF");
    EXPECT_EQ(find_memo_file(table, header), "");
    const std::string dbt = write("TABLE.dbt");
    EXPECT_EQ(find_memo_file(table, header), dbt);
    const std::string fpt = write("TABLE.FPT");
    EXPECT_EQ(find_memo_file(table, header), fpt);
    const std::string same = write("Table.fpt");
    EXPECT_EQ(find_memo_file(table, header), same);
    header.dialect = Dialect::dbase4;
    EXPECT_EQ(find_memo_file(table, header), dbt);
}

TEST_F(Companions, AFileOfAnotherNameIsNone) {
    write("Tables.fpt");
    write("Table.fpt.old");
    EXPECT_EQ(find_memo_file(write("Table.dbf"), Header()), "");
}

TEST_F(Companions, AFileIsReadFromAnyPlaceAndAFolderIsNone) {
    const auto file = open_file(write("f", "0123456789"));
    EXPECT_EQ(file->size(), 10U);
    EXPECT_EQ(read_bytes(*file, 3, 4), "3456");
    EXPECT_EQ(read_bytes(*file, 8, 4), "89");
    EXPECT_EQ(read_bytes(*file, 10, 4), "");
    EXPECT_THROW(open_file(path("")), std::system_error);
    EXPECT_THROW(open_file(path("nosuch")), std::system_error);
}

}  // namespace
}  // namespace zmfb::dbf
