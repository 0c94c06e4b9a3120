// Records of DBF tables: moving about, values in and out, appending.
#include <random>

#include "dbf_table_testing.h"
#include "host/date.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::expect_rows;
using host_test::field;
using host_test::is_same;
using namespace std::string_view_literals;

class DbfRecord : public host_test::DbfTest {
  protected:
    const Value all_types =
        array_of(field("C", "C", 5), field("N", "N", 6, 2), field("D", "D", 8), field("L", "L", 1));
    static std::string values(Table& table) {
        const Value row = array_of();
        for (std::size_t i = 0; i < table.fields().size(); ++i) row.push(table.get(i));
        return test::show(row);
    }
    // The bytes of the first field of the first record.
    [[nodiscard]] std::string stored(std::size_t length) const {
        return content(path("t.dbf")).substr(66, length);
    }
};

TEST_F(DbfRecord, ValuesComeBackAsTheyWere) {
    Table& table = create(all_types);
    add(table, array_of("a\0b\x1A\n"sv, -99.99, stod("20240229"sv), true));
    add(table, array_of("", 0, Date{}, false));
    add(table, array_of("longer than five", 999.994, stod("00010101"sv), true));
    close();
    Table& again = *open();
    EXPECT_EQ(values(again), R"({"a\x00b\x1a\x0a", -99.99, {^2024-02-29}, .T.})");
    again.skip(1);
    EXPECT_EQ(values(again), R"({"     ", 0, {^}, .F.})");
    again.skip(1);
    EXPECT_EQ(values(again), R"({"longe", 999.99, {^0001-01-01}, .T.})");
    EXPECT_EQ(again.get(1).picture(), (Picture{6, 2}));
    EXPECT_TRUE(is_same(again.get(4), Value()));
}

TEST_F(DbfRecord, ANewRecordIsEmpty) {
    Table& table = create(all_types);
    table.append();
    EXPECT_EQ(values(table), R"({"     ", 0, {^}, .F.})");
    EXPECT_FALSE(table.deleted());
    EXPECT_EQ(table.record_number(), 1);
}

TEST_F(DbfRecord, TheEndsOfATable) {
    Table& table = create(all_types);
    EXPECT_TRUE(table.eof() && table.bof()) << "just opened";
    table.go_top();
    EXPECT_TRUE(table.eof() && table.bof());
    EXPECT_EQ(table.record_number(), 1);
    EXPECT_EQ(table.record_count(), 0);
    for (int i = 1; i <= 3; ++i) add(table, array_of("r" + std::to_string(i), i, Date{}, true));
    EXPECT_FALSE(table.bof());
    table.go_top();
    EXPECT_TRUE(!table.eof() && !table.bof() && table.record_number() == 1);
    table.skip(2);
    EXPECT_TRUE(!table.eof() && table.record_number() == 3);
    table.skip(1);
    EXPECT_TRUE(table.eof() && table.record_number() == 4);
    EXPECT_EQ(values(table), R"({"     ", 0, {^}, .F.})");
    EXPECT_FALSE(table.put(0, "x") || table.put_columns(0, "x") || table.set_deleted(true) ||
                 table.deleted());
    table.skip(100);
    EXPECT_EQ(table.record_number(), 4);
    table.skip(-1);
    EXPECT_TRUE(!table.eof() && table.record_number() == 3);
    table.skip(-3);
    EXPECT_TRUE(table.bof() && table.record_number() == 1);
    EXPECT_TRUE(is_same(table.get(0), "r1   "));
    table.skip(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(table.record_number(), 4);
    table.skip(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(table.record_number(), 1);
    for (const std::int64_t nowhere :
         {std::int64_t{0}, std::int64_t{-1}, std::int64_t{4}, std::numeric_limits<std::int64_t>::max()}) {
        table.go_to(2);
        table.go_to(nowhere);
        EXPECT_TRUE(table.eof());
        EXPECT_EQ(table.record_number(), 4);
    }
}

TEST_F(DbfRecord, DeletedRecordsStayAndCanBeRecalled) {
    Table& table = create(all_types);
    add(table, array_of("a", 1, Date{}, true));
    EXPECT_TRUE(table.set_deleted(true));
    close();
    Table& again = *open();
    EXPECT_TRUE(again.deleted());
    EXPECT_TRUE(again.set_deleted(false));
    close();
    EXPECT_FALSE(open()->deleted());
}

struct NumberCase {
    std::string_view columns;
    int length;
    int decimals;
    std::string_view bytes;  ///< "" when it does not fit
};

TEST_F(DbfRecord, NumbersOfTextFilesKeepTheirDigits) {
    const NumberCase cases[] = {
        {"123456789012345678", 18, 0, "123456789012345678"},
        {"-12345678901234567", 18, 0, "-12345678901234567"},
        {"1234567890123456.78", 19, 2, "1234567890123456.78"},
        {"42   ", 5, 0, "   42"},
        {"  42", 5, 0, "   42"},
        {"", 5, 2, " 0.00"},
        {"   ", 3, 0, "  0"},
        {"007", 3, 0, "  7"},
        {"-0.00", 5, 2, " 0.00"},
        {"-0.004", 5, 2, " 0.00"},
        {"-0.005", 5, 2, "-0.01"},
        {"0.995", 5, 2, " 1.00"},
        {"9.995", 5, 2, "10.00"},
        {"99.5", 3, 0, "100"},
        {"99.49", 3, 0, " 99"},
        {"1.5", 6, 3, " 1.500"},
        {"+7", 3, 0, "  7"},
        {"12x4", 4, 0, "  12"},
        {"- 12", 4, 0, "   0"},
        {".5", 4, 1, " 0.5"},
        {"-.5", 3, 1, "-.5"},
        {".25", 3, 2, ".25"},
        {"0", 1, 0, "0"},
        {"***", 3, 0, "  0"},
        {"1e5", 4, 0, "   1"},
        {"1000", 3, 0, ""},
        {"-100", 3, 0, ""},
        {"99.995", 5, 2, ""},
        {"-1.25", 4, 2, ""},
    };
    for (const auto& [columns, length, decimals, bytes] : cases) {
        Table& table = create(array_of(field("N", "N", length, decimals)));
        table.append();
        CaughtErrors caught;
        EXPECT_EQ(table.put_columns(0, columns), !bytes.empty()) << columns;
        EXPECT_EQ(caught.take_count(), bytes.empty() ? 1 : 0) << columns;
        close();
        const std::string blank(static_cast<std::size_t>(length), ' ');
        EXPECT_EQ(stored(blank.size()), bytes.empty() ? blank : bytes) << columns;
    }
}

TEST_F(DbfRecord, LogicalsOfTextFilesThatSayNothingStayAsTheyAre) {
    Table& table = create(array_of(field("L", "L", 1)));
    std::string marks;
    for (const std::string_view columns : {"T", "t", "Y", "y", "F", "f", "N", "n", "x", " ", "?", ""}) {
        table.append();
        EXPECT_TRUE(table.put_columns(0, columns));
        table.commit();
        marks += content(path("t.dbf"))[65 + 2 * static_cast<std::size_t>(table.record_number()) - 1];
        EXPECT_TRUE(is_same(table.get(0), marks.back() == 'T'));
    }
    EXPECT_EQ(marks, "TTTTFFFFF ? ");
}

TEST_F(DbfRecord, DatesOfTextFilesThatAreNoneBecomeEmpty) {
    Table& table = create(array_of(field("D", "D", 8)));
    table.append();
    expect_rows({{table.put_columns(0, "20240229"), true},
                 {table.get(0), stod("20240229"sv)},
                 {table.put_columns(0, "20230229"), true},
                 {table.get(0), Date{}},
                 {table.put_columns(0, "2024"), true},
                 {table.get(0), Date{}}});
}

TEST_F(DbfRecord, ANumberThatDoesNotFitIsRaisedAndTheFieldKeeps) {
    Table& table = create(all_types);
    table.append();
    table.put(1, 1.5);
    for (const Value& wide :
         {Value(1000), Value(-100), Value(999.995), Value(1e300), Value(1.0 / 0.0), Value(std::nan(""))}) {
        CaughtErrors caught;
        EXPECT_FALSE(table.put(1, wide));
        EXPECT_EQ(caught.take_count(), 1);
        EXPECT_EQ(caught.number("gencode"), 33);
        EXPECT_EQ(caught.number("subcode"), 1021);
        EXPECT_EQ(caught.text("description"), "Number too wide for field N, record 1: " + path("t.dbf"));
        EXPECT_TRUE(is_same(table.get(1), 1.5));
    }
}

TEST_F(DbfRecord, AValueOfAnotherKindIsRaised) {
    Table& table = create(all_types);
    table.append();
    for (std::size_t i = 0; i < 4; ++i) {
        CaughtErrors caught;
        EXPECT_FALSE(table.put(i, Value()));
        EXPECT_FALSE(table.put(i, i == 0 ? Value(1) : Value("1")));
        EXPECT_EQ(caught.take_count(), 2);
        EXPECT_EQ(caught.number("gencode"), 34);
        EXPECT_EQ(caught.number("subcode"), 1020);
    }
    EXPECT_FALSE(table.put(4, 1));
}

TEST_F(DbfRecord, ManyRecordsAreKeptInTheirPlaces) {
    constexpr int records = 60000;
    Table& table = create(array_of(field("ID", "N", 8), field("TEXT", "C", 20)));
    for (int i = 1; i <= records; ++i) add(table, array_of(i, "record " + std::to_string(i)));
    const auto is_in_place = [&](Table& opened, int record) {
        return opened.get(0).number() == record &&
               opened.get(1).string().starts_with("record " + std::to_string(record) + " ");
    };
    std::mt19937 random(4711);
    for (int i = 0; i < 200; ++i) {
        const int record = std::uniform_int_distribution(1, records)(random);
        table.go_to(record);
        ASSERT_TRUE(is_in_place(table, record)) << record;
    }
    close();
    EXPECT_EQ(std::filesystem::file_size(path("t.dbf")), 97U + records * 29U + 1U);
    Table& again = *open();
    EXPECT_EQ(again.record_count(), records);
    int backwards = records;
    for (again.go_to(records); !again.bof(); again.skip(-1), --backwards)
        ASSERT_TRUE(is_in_place(again, backwards));
    EXPECT_EQ(backwards, 0);
}

TEST_F(DbfRecord, ChangesReachTheRecordTheyWereMadeIn) {
    constexpr int records = 30000;
    Table& table = create(array_of(field("ID", "N", 8), field("TEXT", "C", 20)));
    for (int i = 1; i <= records; ++i) add(table, array_of(i, "old"));
    for (int i = 7; i <= records; i += 4999) {
        table.go_to(i);
        table.put(1, "new");
    }
    close();
    Table& again = *open();
    for (int i = 1; i <= records; ++i, again.skip(1)) {
        ASSERT_EQ(again.get(0).number(), i);
        ASSERT_EQ(again.get(1).string().substr(0, 3), (i - 7) % 4999 == 0 && i >= 7 ? "new" : "old") << i;
    }
}

TEST_F(DbfRecord, AppendingGoesOnWhereAnEarlierUseEnded) {
    // Records of 32 KB: eight of them fill a block, so every place in a block is met.
    create(array_of(field("TEXT", "C", 32767)));
    close();
    for (int round = 1; round <= 20; ++round) {
        Table& table = *open();
        ASSERT_TRUE(add(table, array_of("round " + std::to_string(round))));
        close();
    }
    Table& table = *open();
    EXPECT_EQ(table.record_count(), 20);
    for (int round = 1; round <= 20; ++round, table.skip(1)) {
        EXPECT_EQ(table.get(0).string().substr(0, 9), ("round " + std::to_string(round) + "  ").substr(0, 9));
    }
    EXPECT_EQ(std::filesystem::file_size(path("t.dbf")), 65U + 20U * 32768U + 1U);
    EXPECT_EQ(content(path("t.dbf")).back(), '\x1A');
}

TEST_F(DbfRecord, WhatWasAppendedLastCanBeTakenBack) {
    Table& table = create(all_types);
    add(table, array_of("kept", 1, Date{}, true));
    add(table, array_of("gone", 2, Date{}, true));
    EXPECT_TRUE(table.take_back());
    EXPECT_EQ(table.record_count(), 1);
    EXPECT_TRUE(table.eof());
    add(table, array_of("more", 3, Date{}, true));
    close();
    EXPECT_EQ(counted(path("t.dbf")), 2U);
    Table& again = *open();
    again.go_to(2);
    EXPECT_TRUE(is_same(again.get(0), "more "));
    EXPECT_TRUE(again.take_back());
    EXPECT_TRUE(again.deleted()) << "a record of an earlier use is only marked";
}

TEST_F(DbfRecord, ARecordThatLeftTheMemoryIsOnlyMarkedWhenItIsTakenBack) {
    // Records of 60 KB: four of them fill a block, and the fifth begins another.
    Table& table = create(array_of(field("TEXT", "C", 60000)));
    for (int record = 1; record <= 5; ++record) add(table, array_of(std::to_string(record)));
    EXPECT_TRUE(table.take_back());
    table.go_to(4);
    EXPECT_TRUE(table.take_back());
    EXPECT_EQ(table.record_count(), 4);
    EXPECT_TRUE(table.deleted());
    EXPECT_EQ(table.get(0).string().substr(0, 2), "4 ");
    close();
    EXPECT_EQ(counted(path("t.dbf")), 4U);
}

TEST_F(DbfRecord, CommittingMakesTheFileWhole) {
    Table& table = create(all_types);
    add(table, array_of("a", 1, Date{}, true));
    EXPECT_EQ(counted(path("t.dbf")), 0U);
    EXPECT_TRUE(table.commit());
    EXPECT_EQ(counted(path("t.dbf")), 1U);
    EXPECT_EQ(content(path("t.dbf")).substr(161), " a      1.00        T\x1A");
}

}  // namespace
}  // namespace zmfb::host
