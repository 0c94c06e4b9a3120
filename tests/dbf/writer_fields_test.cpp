// Which fields a format has, and what the header of a file says.
#include "written.h"

namespace zmfb::dbf_test {
namespace {

using dbf::Format;
using dbf::NewField;
using dbf::WriteOptions;
using dbf::Writer;

// Fields that a format does not have, and why.
struct Case {
    std::string what;
    Format format;
    std::vector<NewField> fields;
    Lines problems;
    std::string code_page{};
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.what; }

class DbfFields : public ::testing::TestWithParam<Case> {};

TEST_P(DbfFields, AreRefusedWithAllThatIsWrongBeforeAFileIsMade) {
    const Case& c = GetParam();
    EXPECT_EQ(dbf::field_problems(c.format, c.fields, c.code_page), c.problems);
    const Folder folder;
    const auto begin = [&] {
        const Writer writer(folder.file("t.dbf"), c.fields, {.format = c.format, .code_page = c.code_page});
    };
    try {
        begin();
        EXPECT_EQ(c.problems, Lines());
    } catch (const dbf::Refused& refused) {
        EXPECT_EQ(refused.reasons(), c.problems);
    }
    EXPECT_EQ(folder.names(), std::set<std::string>());
}

std::vector<NewField> many(std::size_t count, std::size_t length) {
    std::vector<NewField> fields;
    for (std::size_t i = 0; i < count; ++i) fields.push_back({"F" + std::to_string(i), 'C', length});
    return fields;
}

const Case cases[] = {
    {"no fields", Format::dbase3, {}, {"would have no fields"}},
    {"two of a name in another case",
     Format::dbase3,
     {{"NAME", 'C', 3}, {"Name", 'L'}},
     {"would have two fields Name"}},
    {"names of no and too many letters",
     Format::foxpro,
     {{"", 'L'}, {"ABCDEFGHIJ", 'L'}, {"ABCDEFGHIJK", 'L'}},
     {"would have a field without a name", "would have a field ABCDEFGHIJK, a name longer than 10 bytes"}},
    {"names in a code page",
     Format::dbase3,
     {{"ÄÖÜÄÖÜÄÖÜÄ", 'L'}, {"A€", 'L'}},
     {"would have a field A€, a name with characters that its code page does not have"},
     "CP850"},
    {"a code page that there is none of",
     Format::dbase3,
     {{"A", 'L'}},
     {"cannot be written in CP0: there is no such code page that has ASCII in it"},
     "CP0"},
    {"a code page without ASCII",
     Format::dbase3,
     {{"A", 'L'}},
     {"cannot be written in UTF-16: there is no such code page that has ASCII in it"},
     "UTF-16"},
    {"types that dBASE III does not have",
     Format::dbase3,
     {{"A", 'F', 5}, {"B", 'I'}},
     {"would have a field A of type F, which dBASE III does not have",
      "would have a field B of type I, which dBASE III does not have"}},
    {"types that FoxPro 2 does not have",
     Format::foxpro,
     {{"A", 'F', 5}, {"B", 'T'}},
     {"would have a field B of type T, which FoxPro 2 does not have"}},
    {"types that nobody has",
     Format::visual_foxpro,
     {{"A", '0', 5}, {"B", 'X'}},
     {"would have a field A of type 0, which Visual FoxPro does not have",
      "would have a field B of type X, which Visual FoxPro does not have"}},
    {"NULL and bytes in dBASE III",
     Format::dbase3,
     {{"A", 'C', 5, 0, true}, {"B", 'C', 5, 0, false, true}},
     {"would have a field A that may be NULL, which dBASE III does not have",
      "would have a field B of type C for bytes, which dBASE III does not have"}},
    {"lengths",
     Format::foxpro,
     {{"A", 'C'},
      {"B", 'C', 254},
      {"C", 'C', 255},
      {"D", 'N', 20},
      {"E", 'N', 21},
      {"F", 'N', 3, 3},
      {"G", 'N', 3, 2}},
     {"would have a field A of no length", "would have a field C longer than 254 bytes",
      "would have a field E longer than 20 bytes", "would have a field F of 3 digits with 3 decimals"}},
    {"lengths of dBASE III",
     Format::dbase3,
     {{"A", 'C', 60000}, {"B", 'N', 255}, {"C", 'N', 256}},
     {"would have a field C longer than 255 bytes"}},
    {"a record as long as can be", Format::dbase3, {{"A", 'C', 65533}, {"B", 'L'}}, {}},
    {"a longer record",
     Format::dbase3,
     {{"A", 'C', 65533}, {"B", 'C', 2}},
     {"would have records of 65536 bytes, and a DBF file has at most 65535"}},
    {"255 fields", Format::visual_foxpro, many(255, 1), {}},
    {"256 fields",
     Format::visual_foxpro,
     many(256, 1),
     {"would have 256 fields, and Visual FoxPro has at most 255"}},
    {"more fields of dBASE III than a header has room for",
     Format::dbase3,
     many(2047, 1),
     {"would have 2047 fields, and dBASE III has at most 2046"}},
};

INSTANTIATE_TEST_SUITE_P(Dbf, DbfFields, ::testing::ValuesIn(cases), [](const auto& info) {
    std::string name = info.param.what;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

TEST(DbfFieldsAndValues, ThatAreNotOfOneKindAreTheProgramsMistake) {
    const Folder folder;
    Writer writer(folder.file("t.dbf"), {{"C", 'C', 5}, {"N", 'N', 5}, {"D", 'D'}, {"L", 'L'}, {"M", 'M'}});
    EXPECT_THROW(writer.number(0, 1), std::invalid_argument);
    EXPECT_THROW(writer.bytes(0, "x"), std::invalid_argument);
    EXPECT_THROW(writer.text(1, "1"), std::invalid_argument);
    EXPECT_THROW(writer.number(1, 1, -1), std::invalid_argument);
    EXPECT_THROW(writer.date(1, std::chrono::year(2007) / 3 / 1), std::invalid_argument);
    EXPECT_THROW(writer.real(2, 1), std::invalid_argument);
    EXPECT_THROW(writer.logical(2, true), std::invalid_argument);
    EXPECT_THROW(writer.text(3, "x"), std::invalid_argument);
    EXPECT_THROW(writer.timestamp(3, {}), std::invalid_argument);
    EXPECT_THROW(writer.bytes(4, "x"), std::invalid_argument);
    EXPECT_THROW(writer.null(5), std::invalid_argument);
}

// A code page, and how a file says it.
struct Page {
    std::string name;
    int language;
    std::string cpg;
};

TEST(DbfCodePages, OfAsciiAloneNeedNoFileBeside) {
    const Folder folder;
    const auto write = [&](const std::string& name, const std::string& text) {
        Writer writer(folder.file("t.dbf"), {{name, 'C', 5}}, {.code_page = "UTF-8"});
        writer.text(0, text);
        writer.append();
        writer.finish();
    };
    write("A", "plain");
    EXPECT_EQ(folder.names(), (std::set<std::string>{"t.dbf"}));
    write("Ä", "plain");
    EXPECT_EQ(folder.names(), (std::set<std::string>{"t.cpg", "t.dbf"}));
}

TEST(DbfCodePages, AreSaidInTheHeaderOrElseBeside) {
    const Page pages[] = {
        {"CP850", 0x02, ""},
        {"windows-1252", 0x03, ""},
        {"CP1251", 0xC9, ""},
        {"CP865", 0x66, ""},
        {"CP932", 0x7B, ""},
        {"UTF-8", 0, "UTF-8"},
        {"ISO-8859-15", 0, "ISO-8859-15"},
        {"KOI8-R", 0, "KOI8-R"},
    };
    for (const Page& page : pages) {
        SCOPED_TRACE(page.name);
        const Folder folder;
        const std::string path = folder.file("t.dbf");
        const bool is_russian = page.name == "CP1251" || page.name == "KOI8-R";
        const std::string letters = is_russian ? "Да" : page.name == "CP932" ? "は" : "ö";
        Writer writer(path, {{"A", 'C', 5}}, {.code_page = page.name});
        writer.text(0, letters);
        writer.append();
        writer.finish();
        EXPECT_EQ(static_cast<unsigned char>(bytes_of(path)[29]), page.language);
        EXPECT_EQ(bytes_of(folder.file("t.cpg")), page.cpg);
        const auto file = dbf::open_file(path);
        dbf::Header header = dbf::read_header(*file);
        dbf::ToUtf8 to_utf8(dbf::code_page(path, header));
        dbf::Records records(*file, header);
        ASSERT_TRUE(records.next());
        const auto value = dbf::read_value(header, header.fields[0], records.bytes());
        EXPECT_EQ(to_utf8.convert(std::get<dbf::Text>(value).bytes), letters);
        EXPECT_EQ(header.notes, Lines());
    }
}

TEST(DbfCodePages, AreNotSaidWhenTheyAreNotToBe) {
    const Folder folder;
    const std::string path = folder.file("t.dbf");
    for (const std::string page : {"CP850", "UTF-8"}) {
        Writer writer(path, {{"A", 'C', 5}}, {.code_page = page, .names_code_page = false});
        writer.finish();
        EXPECT_EQ(bytes_of(path)[29], '\0');
        EXPECT_EQ(folder.names(), (std::set<std::string>{"t.dbf"}));
    }
}

TEST(DbfHeaders, AreTheSameForTheSameDay) {
    const Folder folder;
    const std::string path = folder.file("t.dbf");
    const auto header_of = [&](dbf::Format format, std::vector<NewField> fields) {
        Writer writer(path, std::move(fields),
                      {.format = format, .changed = std::chrono::year(2007) / 3 / 1});
        writer.append();
        writer.finish();
        return bytes_of(path);
    };
    using namespace std::string_literals;
    const std::string zeros(300, '\0');
    EXPECT_EQ(header_of(Format::dbase3, {{"AB", 'C', 300}, {"N", 'N', 5, 2}, {"M", 'M'}}),
              "\x83\x6B\x03\x01\x01\0\0\0\x81\0\x3C\x01"s + zeros.substr(0, 20) +    //
                  "AB\0\0\0\0\0\0\0\0\0C\0\0\0\0\x2C\x01"s + zeros.substr(0, 14) +   //
                  "N\0\0\0\0\0\0\0\0\0\0N\0\0\0\0\x05\x02"s + zeros.substr(0, 14) +  //
                  "M\0\0\0\0\0\0\0\0\0\0M\0\0\0\0\x0A\0"s + zeros.substr(0, 14) + "\r" +
                  std::string(316, ' ') + "\x1A");
    EXPECT_EQ(header_of(Format::visual_foxpro, {{"I", 'I', 0, 0, true}, {"M", 'M'}}),
              "\x30\x6B\x03\x01\x01\0\0\0\x88\x01\x0A\0"s + zeros.substr(0, 16) + "\x02\0\0\0"s +  //
                  "I\0\0\0\0\0\0\0\0\0\0I\x01\0\0\0\x04\0\x02"s + zeros.substr(0, 13) +            //
                  "M\0\0\0\0\0\0\0\0\0\0M\x05\0\0\0\x04\0\0"s + zeros.substr(0, 13) +              //
                  "_NullFlags\0"
                  "0\x09\0\0\0\x01\0\x05"s +
                  zeros.substr(0, 13) + "\r" + zeros.substr(0, 263) + " " + zeros.substr(0, 9) + "\x1A");
}

TEST(DbfHeaders, HaveTheDayOnWhichTheFileWasWritten) {
    const Folder folder;
    const std::time_t before = std::time(nullptr);
    Writer(folder.file("t.dbf"), {{"A", 'L'}}).finish();
    const std::time_t after = std::time(nullptr);
    const auto three_bytes = [](std::time_t time) {
        const std::tm day = *std::localtime(&time);
        return std::string{static_cast<char>(day.tm_year), static_cast<char>(day.tm_mon + 1),
                           static_cast<char>(day.tm_mday)};
    };
    const std::string written = bytes_of(folder.file("t.dbf")).substr(1, 3);
    EXPECT_TRUE(written == three_bytes(before) || written == three_bytes(after));
}

}  // namespace
}  // namespace zmfb::dbf_test
