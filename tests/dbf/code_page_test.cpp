#include "dbf/code_page.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "dbf/memo.h"
#include "tests/host/folder.h"
#include "tests/support/dbf_builder.h"
#include "tests/support/process.h"

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

// Each byte of a single-byte set as hex digits of its UTF-8, "-" for none, as Python has it.
std::vector<std::string> characters_by_python(const std::string& set) {
    const std::string script =
        "import sys\n"
        "for byte in range(256):\n"
        "    try: print(bytes([byte]).decode(sys.argv[1]).encode().hex())\n"
        "    except UnicodeDecodeError: print('-')\n";
    const test::Finished run = test::run({ZMFB_PYTHON, "-c", script, set});
    EXPECT_EQ(run.status, 0) << run.err;
    std::vector<std::string> lines;
    std::istringstream rest(run.out);
    for (std::string line; std::getline(rest, line);) lines.push_back(line);
    return lines;
}

TEST(DbfCodePage, EachByteOfASingleByteSetIsTheCharacterThatPythonSays) {
    const std::set<std::string> of_two_bytes{"CP932", "CP936", "CP949", "CP950"};
    std::set<std::string> compared;
    for (int language = 0; language < 256; ++language) {
        const std::string set = code_page_of(static_cast<std::uint8_t>(language));
        if (set.empty() || of_two_bytes.contains(set) || !compared.insert(set).second) continue;
        const std::vector<std::string> expected = characters_by_python(set);
        ASSERT_EQ(expected.size(), 256U) << set;
        ToUtf8 converter(set);
        for (std::size_t byte = 0; byte < expected.size(); ++byte) {
            const auto utf8 = converter.convert(std::string(1, static_cast<char>(byte)));
            std::string shown = utf8 ? "" : "-";
            for (const char c : utf8.value_or(""))
                shown += fmt::format("{:02x}", static_cast<unsigned char>(c));
            EXPECT_EQ(shown, expected[byte]) << fmt::format("{} {:02X}", set, byte);
        }
    }
    EXPECT_EQ(compared.size(), 18U);
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
