// What the writer writes, as the reader finds it.
#include "dbf/writer.h"

#include <fmt/format.h>

#include <functional>
#include <limits>

#include "written.h"

namespace zmfb::dbf_test {
namespace {

using namespace std::chrono_literals;
using dbf::Format;
using dbf::NewField;
using dbf::WriteOptions;
using dbf::Writer;

class DbfWriter : public ::testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder_.file("t.dbf"); }

    Folder folder_;
};

constexpr auto day = std::chrono::year(2007) / 3 / 1;

TEST_F(DbfWriter, WritesTheTypesOfDbase3) {
    Writer writer(path(),
                  {{"NAME", 'C', 10}, {"PRICE", 'N', 8, 2}, {"BORN", 'D'}, {"PAID", 'L'}, {"NOTE", 'M'}});
    writer.text(0, "Ana");
    writer.number(1, -1250, 2);
    writer.date(2, day);
    writer.logical(3, true);
    writer.text(4, "a long text");
    writer.append();
    writer.append();
    writer.text(0, "full width");
    writer.number(1, 3);
    writer.null(2);
    writer.text(3, "?");
    writer.text(4, "");
    writer.append();
    EXPECT_EQ(writer.records(), 3U);
    writer.finish();
    EXPECT_EQ(read_back(path()),
              (Lines{"\"Ana\"|-12.50|2007-03-01|true|memo \"a long text\"", "\"\"|blank|blank|blank|blank",
                     "\"full width\"|3.00|blank|blank|memo \"\""}));
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf", "t.dbt"}));
}

TEST_F(DbfWriter, WritesTheTypesOfFoxpro) {
    Writer writer(path(), {{"A", 'F', 8, 3}, {"NOTE", 'M'}, {"FORM", 'G'}, {"PHOTO", 'P'}},
                  {.format = Format::foxpro});
    writer.real(0, 1.5);
    writer.text(1, "a text with \x1A");
    writer.bytes(2, std::string_view("\0\x1A\xFF", 3));
    writer.bytes(3, std::string(1000, 'p'));
    writer.append();
    writer.finish();
    EXPECT_EQ(read_back(path()),
              (Lines{"1.500|memo \"a text with \x1A\"|memo \"" + std::string("\0\x1A\xFF", 3) + "\"|memo \"" +
                     std::string(1000, 'p') + "\""}));
    EXPECT_EQ(folder_.names(), (std::set<std::string>{"t.dbf", "t.fpt"}));
    EXPECT_EQ(bytes_of(path())[0], '\xF5');
}

TEST_F(DbfWriter, WritesTheTypesOfVisualFoxpro) {
    Writer writer(path(),
                  {{"I", 'I'},
                   {"B", 'B'},
                   {"Y", 'Y'},
                   {"T", 'T'},
                   {"V", 'V', 5},
                   {"Q", 'Q', 3},
                   {"M", 'M', 0, 0, false, true}},
                  {.format = Format::visual_foxpro});
    writer.number(0, -2147483648);
    writer.real(1, 0.1);
    writer.number(2, -5, 1);
    writer.timestamp(3, std::chrono::local_days(day) + 10h + 5ms);
    writer.text(4, "ab ");
    writer.bytes(5, std::string_view("\0\x01", 2));
    writer.bytes(6, "bytes");
    writer.append();
    writer.append();
    writer.text(4, "abcde");
    writer.bytes(5, "xyz");
    writer.append();
    writer.finish();
    EXPECT_EQ(read_back(path()),
              (Lines{"-2147483648|0.1|-5000/10000|2007-03-01 10:00:00.005|\"ab \"|bytes \"" +
                         std::string("\0\x01", 2) + "\"|memo \"bytes\"",
                     "0|0|0/10000|blank|\"\"|bytes \"\"|blank",
                     "0|0|0/10000|blank|\"abcde\"|bytes \"xyz\"|blank"}));
    EXPECT_EQ(bytes_of(path())[0], '\x32');
}

TEST_F(DbfWriter, KeepsNullInEveryTypeOfVisualFoxpro) {
    std::vector<NewField> fields;
    for (const char type : std::string("CNFDLMGPIBYTVQ"))
        fields.push_back({std::string(1, type), type, 5, 0, true});
    Writer writer(path(), fields, {.format = Format::visual_foxpro});
    for (std::size_t i = 0; i < fields.size(); ++i) writer.null(i);
    writer.append();
    writer.append();
    for (std::size_t i = 0; i < fields.size(); ++i) writer.null(i);
    writer.text(0, "no");
    writer.text(12, "five!");
    writer.append();
    writer.finish();
    const std::string nulls = "NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL|NULL";
    EXPECT_EQ(read_back(path()),
              (Lines{nulls + "|NULL|NULL|NULL",
                     "\"\"|blank|blank|blank|blank|blank|blank|blank|0|0|0/10000|blank|\"\"|bytes \"\"",
                     "\"no\"" + nulls.substr(4) + "|NULL|\"five!\"|NULL"}));
}

TEST_F(DbfWriter, WritesNoMemoThatIsLongerThanTheReaderTakes) {
    const std::string longest(dbf::MemoFile::longest, 'x');
    const std::vector<NewField> fields{{"NOTE", 'M'}, {"PHOTO", 'P'}};
    Writer strict(path(), fields, {.format = Format::foxpro});
    Writer lossy(path(), fields, {.format = Format::foxpro, .lossy = true});
    const std::pair<const char*, std::function<void(Writer&)>> cases[] = {
        {"NOTE", [&](Writer& writer) { writer.text(0, longest + "y"); }},
        {"PHOTO", [&](Writer& writer) { writer.bytes(1, longest + "y"); }}};
    for (const auto& [name, set] : cases) {
        try {
            set(strict);
            ADD_FAILURE() << "nothing was refused";
        } catch (const dbf::Unfit& unfit) {
            EXPECT_EQ(unfit.what(),
                      fmt::format("record 1, field {}: of 67108865 bytes is longer than the field", name));
            EXPECT_EQ(unfit.loss(), dbf::Loss::too_long);
        }
        set(lossy);
    }
    lossy.append();
    lossy.finish();
    EXPECT_TRUE(read_back(path()) == Lines{"memo \"" + longest + "\"|memo \"" + longest + "\""});
    ASSERT_EQ(lossy.converted().size(), 2U);
    for (const dbf::Converted& one : lossy.converted()) EXPECT_EQ(one.loss, dbf::Loss::too_long);
}

}  // namespace
}  // namespace zmfb::dbf_test
