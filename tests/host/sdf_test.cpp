#include "host/sdf.h"

#include <fmt/format.h>
#include <sys/resource.h>

#include <chrono>

#include "dbf_table_testing.h"
#include "host/date.h"
#include "memory_driver.h"
#include "tests/support/dbf_readers.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::field;
using host_test::is_same;
using test::DbfRecords;
using namespace std::string_literals;
using namespace std::string_view_literals;

class Sdf : public host_test::DbfTest {
  protected:
    // Appends a file of this content to the open table.
    Value append(std::string_view text) const { return dbappsdf(write_file("data.txt", text)); }
    // The fields C of the records of a table {C, 3} to which a file of this content was appended; by their
    // full length when `exactly`.
    std::vector<std::string> texts_of(std::string_view text, bool exactly = false) {
        Table& table = create(array_of(field("C", "C", 3)));
        const std::string file = write_file("data.txt", text);
        EXPECT_TRUE(is_same(exactly ? dbappsdf_exactly(file) : dbappsdf(file), true));
        std::vector<std::string> texts;
        for (table.go_top(); !table.eof(); table.skip(1)) texts.emplace_back(table.get(0).string());
        close();
        return texts;
    }
    static std::string rows(Table& table) {
        const Value all = array_of();
        for (table.go_top(); !table.eof(); table.skip(1)) {
            const Value row = array_of();
            for (std::size_t i = 0; i < table.fields().size(); ++i) row.push(table.get(i));
            all.push(row);
        }
        return test::show(all);
    }
    const Value person =
        array_of(field("NAME", "C", 4), field("AGE", "N", 5, 1), field("BORN", "D", 8), field("OK", "L", 1));
};

using Texts = std::vector<std::string>;

TEST_F(Sdf, FileWithoutAnExtensionIsTheOneWithTxtUnlessItsExactNameIsMeant) {
    create(array_of(field("C", "C", 3)));
    write_file("data", "abc\n");
    write_file("data.txt", "txt\n");
    write_file("data ", "end\n");
    EXPECT_TRUE(is_same(dbappsdf(path("data")), true));
    EXPECT_TRUE(is_same(dbappsdf(path("data ")), true));
    EXPECT_TRUE(is_same(dbappsdf_exactly(path("data")), true));
    EXPECT_TRUE(is_same(dbappsdf_exactly(path("data ")), true));
    EXPECT_EQ(rows(*table_of()), R"({{"txt"}, {"txt"}, {"abc"}, {"end"}})");
    close();
}

TEST_F(Sdf, ExactNameThatIsNoneIsRaised) {
    create(array_of(field("C", "C", 3)));
    for (const Value& name : {Value(), Value(7), Value(""), Value(" ")}) {
        const CaughtErrors caught;
        EXPECT_TRUE(is_same(dbappsdf_exactly(name), false));
        EXPECT_EQ(caught.text("description"), "Argument error: APPEND FROM");
    }
    close();
}

TEST_F(Sdf, ColumnsStandInTheOrderOfTheFields) {
    Table& table = create(person);
    EXPECT_TRUE(is_same(append("Ana  42.520070301T\n"
                               "Z\xE9  -1   00010101y\n"
                               "    999.5        N\n"
                               "Bob      20230230?\n"),
                        true));
    EXPECT_EQ(table.record_count(), 4);
    EXPECT_EQ(table.record_number(), 4);
    EXPECT_EQ(rows(table), R"({{"Ana ", 42.5, {^2007-03-01}, .T.}, {"Z\xe9  ", -1, {^0001-01-01}, .T.}, )"
                           R"({"    ", 999.5, {^}, .F.}, {"Bob ", 0, {^}, .F.}})");
}

TEST_F(Sdf, ALineEndsAtItsLineEnd) {
    EXPECT_EQ(texts_of("a\nbc\nxyz\nlonger\n"), (Texts{"a  ", "bc ", "xyz", "lon"}));
    EXPECT_EQ(texts_of("a\r\nbc\r\nxyz\r\nlonger\r\n"), (Texts{"a  ", "bc ", "xyz", "lon"}));
    EXPECT_EQ(texts_of("a\n\n\nb"), (Texts{"a  ", "   ", "   ", "b  "}));
    EXPECT_EQ(texts_of("a\0b\nxyz"sv), (Texts{"a\0b"s, "xyz"}));
    EXPECT_EQ(texts_of("xyz\n"), (Texts{"xyz"}));
    EXPECT_EQ(texts_of(""), Texts{});
}

TEST_F(Sdf, ShortLinesAreNeverJoined) {
    // Together with the line ends between them they are as long as a record.
    EXPECT_EQ(texts_of("a\nb\n"), (Texts{"a  ", "b  "}));
    EXPECT_EQ(texts_of("a\nb\nc\nd\n"), (Texts{"a  ", "b  ", "c  ", "d  "}));
    EXPECT_EQ(texts_of("a\nb"), (Texts{"a  ", "b  "}));
    EXPECT_EQ(texts_of("a\nb\r\n\r\nxy\r\n"), (Texts{"a  ", "b  ", "   ", "xy "}));
    EXPECT_EQ(texts_of("\n\n\n\n"), (Texts{"   ", "   ", "   ", "   "}));
}

TEST_F(Sdf, TheEndMarkEndsTheFileWhereALineBegins) {
    EXPECT_EQ(texts_of("ab\x1A\n\x1Anothing\nmore\n"), (Texts{"ab\x1A"}));
    EXPECT_EQ(texts_of("xyz\n\x1A"), (Texts{"xyz"}));
    EXPECT_EQ(texts_of("\x1A"), Texts{});
    Table& table = create(array_of(field("C", "C", 1)));
    EXPECT_TRUE(is_same(append("a\nb\n\x1A"), true));
    EXPECT_EQ(table.record_count(), 2);
}

TEST_F(Sdf, LinesOfFullLengthMayHoldAnyByte) {
    EXPECT_EQ(texts_of("a\nb\nc\nd\n\n\n\n\n\x1A\x1A\x1A\n\0\r\n\n"sv, true),
              (Texts{"a\nb", "c\nd", "\n\n\n", "\x1A\x1A\x1A", "\0\r\n"s}));
    EXPECT_EQ(texts_of("", true), Texts{});
}

TEST_F(Sdf, ALineThatIsNotOfFullLengthIsRaised) {
    CaughtErrors caught;
    for (const char* text :
         {"xyz\nab\nc\n", "xyz\nabcd\n", "xyz\nabc", "xyz\nab", "xyz\n\x1A", "xyz\nabc\r\n"}) {
        Table& table = create(array_of(field("C", "C", 3)));
        const std::string file = write_file("data.txt", text);
        EXPECT_TRUE(is_same(dbappsdf_exactly(file), false)) << text;
        EXPECT_EQ(caught.take_count(), 1) << text;
        EXPECT_EQ(caught.number("gencode"), 32);
        EXPECT_EQ(caught.text("description"), "Read error, line 2 is not as long as a record: " + file);
        EXPECT_EQ(table.record_count(), 1) << text;
        close();
    }
}

TEST_F(Sdf, ShortLinesAreFilledUpWithBlanks) {
    Table& table = create(person);
    EXPECT_TRUE(is_same(append("Ana  4\nBob\n\n"), true));
    EXPECT_EQ(rows(table), R"({{"Ana ", 4, {^}, .F.}, {"Bob ", 0, {^}, .F.}, {"    ", 0, {^}, .F.}})");
    close();
    EXPECT_EQ(content(path("t.dbf")).substr(161),
              " Ana   4.0          Bob   0.0                0.0         \x1A"s);
}

TEST_F(Sdf, LinesMayBeLongerThanAnyBuffer) {
    EXPECT_EQ(texts_of(std::string(1000000, 'x') + "\nab\n" + std::string(600000, 'y')),
              (Texts{"xxx", "ab ", "yyy"}));
    const std::string widest(60000, 'w');
    Table& table = create(array_of(field("C", "C", 60000)));
    std::string text;
    for (int i = 0; i < 20; ++i) text += widest + '\n';
    EXPECT_TRUE(is_same(append(text), true));
    EXPECT_EQ(table.record_count(), 20);
    EXPECT_TRUE(is_same(table.get(0), widest));
}

TEST_F(Sdf, FullWidthNumbersKeepEveryDigit) {
    create(array_of(field("N", "N", 18), field("M", "N", 19, 4)));
    append("123456789012345678-1234567890123.567 \n-12345678901234567  99999999999999.99\n");
    close();
    EXPECT_EQ(test::read_with_dbfdump(path("t.dbf")),
              (DbfRecords{{"123456789012345678", "-1234567890123.5670"},
                          {"-12345678901234567", "99999999999999.9900"}}));
}

TEST_F(Sdf, ANumberThatDoesNotFitEndsTheReadingAndIsNoRecord) {
    Table& table = create(array_of(field("N", "N", 5, 2)));
    CaughtErrors caught;
    EXPECT_TRUE(is_same(append("12.50\n123  \n1.5  \n"), false));
    EXPECT_EQ(caught.take_count(), 1);
    EXPECT_EQ(caught.number("gencode"), 33);
    EXPECT_EQ(table.record_count(), 1);
}

TEST_F(Sdf, FieldsNarrowTheColumnsDown) {
    Table& table = create(person);
    EXPECT_TRUE(is_same(dbappsdf(write_file("a.txt", "Ana T\nBob F\n"), array_of("ok", " NAME ")), true));
    EXPECT_EQ(rows(table), R"({{"Ana ", 0, {^}, .T.}, {"Bob ", 0, {^}, .F.}})")
        << "the order is that of the table";
    CaughtErrors caught;
    EXPECT_TRUE(is_same(dbappsdf(path("a.txt"), array_of("NOBODY")), false));
    EXPECT_TRUE(is_same(dbappsdf(path("a.txt"), array_of(1)), false));
    EXPECT_EQ(caught.take_count(), 2);
    EXPECT_TRUE(is_same(dbappsdf(path("a.txt"), array_of()), true));
    EXPECT_EQ(table.record_count(), 4);
}

TEST_F(Sdf, LinesCanBeChosen) {
    write_file("data.txt", "a\nb\nc\nd\ne\n");
    const std::string file = path("data.txt");
    const auto appended = [&](const Value& for_block, const Value& while_block, const Value& next,
                              const Value& record) {
        Table& table = create(array_of(field("C", "C", 1)));
        EXPECT_TRUE(is_same(dbappsdf(file, {}, for_block, while_block, next, record), true));
        std::string all;
        for (table.go_top(); !table.eof(); table.skip(1)) all += table.get(0).string();
        close();
        return all;
    };
    const Value not_b = Value::block([](Args) { return table_of()->get(0).string() != "b"; });
    const Value not_d = Value::block([](Args) { return table_of()->get(0).string() != "d"; });
    EXPECT_EQ(appended({}, {}, 3, {}), "abc");
    EXPECT_EQ(appended({}, {}, 0, {}), "");
    EXPECT_EQ(appended({}, {}, {}, 4), "d");
    EXPECT_EQ(appended({}, {}, {}, 9), "");
    EXPECT_EQ(appended(not_b, {}, {}, {}), "acde");
    EXPECT_EQ(appended({}, not_d, {}, {}), "abc");
    EXPECT_EQ(appended(not_b, not_d, 2, {}), "a");
}

TEST_F(Sdf, ABlockMayEvenCloseTheTable) {
    create(array_of(field("C", "C", 1)));
    write_file("data.txt", "a\nb\n");
    const Value closes = Value::block([](Args) {
        dbclosearea("T");
        return true;
    });
    EXPECT_TRUE(is_same(dbappsdf(path("data.txt"), {}, {}, closes), false));
    create(array_of(field("C", "C", 1)));
    dbappsdf(path("data.txt"), {}, closes);
    EXPECT_EQ(table_of("T"), nullptr);
}

TEST_F(Sdf, OtherDriversTakeTheSameLines) {
    auto driver = std::make_shared<host_test::MemoryDriver>();
    register_driver("MEMORY", driver);
    dbcreate("m", array_of(field("NAME", "C", 4), field("NOTE", "M", 10), field("BORN", "D", 8)), "MEMORY");
    dbusearea(true, "MEMORY", "m", "T");
    EXPECT_TRUE(is_same(append("Ana 20070301\n"), true));
    EXPECT_EQ(rows(*table_of("T")), R"({{"Ana ", NIL, {^2007-03-01}}})");
}

TEST_F(Sdf, ADriverThatCannotTakeARecordBackMarksItDeleted) {
    auto driver = std::make_shared<host_test::MemoryDriver>();
    register_driver("MEMORY", driver);
    dbcreate("m", array_of(field("C", "C", 1)), "MEMORY");
    dbusearea(true, "MEMORY", "m", "T");
    const Value not_b = Value::block([](Args) { return table_of()->get(0).string() != "b"; });
    EXPECT_TRUE(is_same(dbappsdf(write_file("data.txt", "a\nb\nc\n"), {}, not_b), true));
    EXPECT_EQ(driver->asked.back(), "delete 2");
    EXPECT_EQ(rows(*table_of("T")), R"({{"a"}, {"b"}, {"c"}})");
    driver->keeps_records = true;
    EXPECT_TRUE(is_same(dbappsdf(path("data.txt"), {}, not_b), false));
    EXPECT_EQ(rows(*table_of("T")), R"({{"a"}, {"b"}, {"c"}, {"a"}, {"b"}})");
}

TEST_F(Sdf, WhatKeepsItFromReadingIsRaised) {
    CaughtErrors caught;
    EXPECT_TRUE(is_same(dbappsdf(path("data.txt")), false));
    EXPECT_EQ(caught.number("gencode"), 35);
    create(array_of(field("C", "C", 1)));
    EXPECT_TRUE(is_same(dbappsdf({}), false));
    EXPECT_EQ(caught.number("gencode"), 1);
    EXPECT_TRUE(is_same(dbappsdf(path("missing")), false));
    EXPECT_EQ(caught.number("gencode"), 21);
    EXPECT_EQ(caught.number("oscode"), 2);
    EXPECT_EQ(caught.text("description"), "Open error: " + path("missing.txt"));
    EXPECT_EQ(caught.take_count(), 3);
}

TEST_F(Sdf, AFullDiskLeavesTheTableAsItWas) {
    std::string lines;
    for (int i = 0; i < 20000; ++i) lines += std::string(99, 'x') + "\n";
    write_file("data.txt", lines);
    const int outcome = host_test::in_child([&] {
        create(array_of(field("C", "C", 99)));
        host_test::limit_files_to(1500000);
        CaughtErrors caught;
        if (!is_same(dbappsdf(path("data.txt")), false)) return 1;
        if (caught.take_count() != 1 || caught.number("gencode") != 24 || caught.number("oscode") != 29)
            return 2;
        close();
        return caught.take_count();
    });
    EXPECT_EQ(outcome, 0);
    EXPECT_EQ(counted(path("t.dbf")), 0U);
    EXPECT_EQ(content(path("t.dbf")).size(), 66U);
}

long peak_kilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST_F(Sdf, MemoryDoesNotGrowWithTheFile) {
    constexpr int records = 300000;
    {
        std::ofstream out(path("data.txt"), std::ios::binary);
        for (int i = 0; i < records; ++i) {
            out << fmt::format("{:<20}{:>10}{:>9}.5020070301T\n", "name " + std::to_string(i), i, i % 1000);
        }
    }
    const int outcome = host_test::in_child([&] {
        Table& table =
            create(array_of(field("NAME", "C", 20), field("ID", "N", 10), field("AMOUNT", "N", 12, 2),
                            field("BORN", "D", 8), field("OK", "L", 1)));
        const long before = peak_kilobytes();
        const auto start = std::chrono::steady_clock::now();
        if (!is_same(dbappsdf(path("data.txt")), true)) return 1;
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        const long growth = peak_kilobytes() - before;
        std::printf("%d records in %.2f s, peak memory %ld KB more\n", records, took.count(), growth);
        std::fflush(stdout);
        if (table.record_count() != records) return 2;
        close();
        return growth < 8192 ? 0 : 3;
    });
    EXPECT_EQ(outcome, 0);
    Table& table = *open();
    table.go_to(123457);
    EXPECT_TRUE(is_same(table.get(0), "name 123456         "));
    EXPECT_TRUE(is_same(table.get(2), 456.5));
}

}  // namespace
}  // namespace zmfb::host
