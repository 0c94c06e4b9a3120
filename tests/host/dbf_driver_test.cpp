// What the native driver puts into a file, byte by byte, and what other programs read there.
#include <ctime>

#include "dbf_table_testing.h"
#include "host/date.h"
#include "tests/support/dbf_readers.h"
#include "tests/support/samples.h"

namespace zmfb::host {
namespace {

using host_test::CaughtErrors;
using host_test::field;
using host_test::is_same;
using test::DbfRecords;
using test::read_with_dbfdump;
using test::read_with_dbfread;
using namespace std::string_literals;
using namespace std::string_view_literals;

class DbfFile : public host_test::DbfTest {
  protected:
    [[nodiscard]] std::string bytes() const { return content(path("t.dbf")); }
};

std::string change_date_of_today() {
    const std::time_t now = std::time(nullptr);
    const std::tm day = *std::localtime(&now);
    return {static_cast<char>(day.tm_year), static_cast<char>(day.tm_mon + 1),
            static_cast<char>(day.tm_mday)};
}

std::string descriptor(std::string_view name, char type, int length, int decimals) {
    std::string bytes(32, '\0');
    bytes.replace(0, name.size(), name);
    bytes[11] = type;
    bytes[16] = static_cast<char>(length);
    bytes[17] = static_cast<char>(decimals);
    return bytes;
}

TEST_F(DbfFile, AnEmptyTableIsAHeaderAndTheEndMark) {
    create(array_of(field("NAME", "C", 10), field("AGE", "N", 5, 2), field("BORN", "D", 8),
                    field("OK", "L", 1)));
    close();
    const std::string expected = "\x03" + change_date_of_today() + "\0\0\0\0\xA1\0\x19\0"s +
                                 std::string(20, '\0') + descriptor("NAME", 'C', 10, 0) +
                                 descriptor("AGE", 'N', 5, 2) + descriptor("BORN", 'D', 8, 0) +
                                 descriptor("OK", 'L', 1, 0) + "\r\x1A";
    EXPECT_EQ(bytes(), expected);
}

TEST_F(DbfFile, RecordsFollowTheHeaderAndTheEndMarkFollowsThem) {
    Table& table = create(
        array_of(field("NAME", "C", 6), field("AGE", "N", 5, 2), field("BORN", "D", 8), field("OK", "L", 1)));
    add(table, array_of("Ana", 7.5, stod("20070301"sv), true));
    add(table, array_of("Zé d'Ávila"_l1, -1.25, Date{}, false));
    table.set_deleted(true);
    table.append();
    close();
    EXPECT_EQ(bytes().substr(4, 4), "\3\0\0\0"sv);
    EXPECT_EQ(bytes().substr(161), std::string(" Ana    7.5020070301T*") + std::string("Zé d'Á"_l1) +
                                       "-1.25        F" + std::string(21, ' ') + "\x1A");
}

TEST_F(DbfFile, TheDateIsThatOfTheLastChange) {
    Table& table = create(array_of(field("A", "C", 1)));
    table.append();
    close();
    std::string old = bytes();
    old.replace(1, 3, "\x50\x01\x02");
    write_file("t.dbf", old);
    open();
    table_of("T")->get(0);
    close();
    EXPECT_EQ(bytes(), old) << "reading changes nothing";
    open()->put(0, "x");
    close();
    EXPECT_EQ(bytes().substr(1, 3), change_date_of_today());
}

TEST_F(DbfFile, LongTextFieldsHaveTheirLengthInTwoBytes) {
    Table& table = create(array_of(field("A", "C", 300), field("B", "C", 256), field("C", "C", 64000)));
    const std::string text(300, 'x');
    add(table, array_of(text, "short", std::string(64000, 'z')));
    close();
    EXPECT_EQ(bytes().substr(32 + 16, 2), "\x2C\x01");
    EXPECT_EQ(bytes().substr(64 + 16, 2), "\0\x01"sv);
    EXPECT_EQ(bytes().substr(96 + 16, 2), "\0\xFA"sv);
    EXPECT_EQ(read_with_dbfread(path("t.dbf")), (DbfRecords{{text, "short", std::string(64000, 'z')}}));
    Table& again = *open();
    EXPECT_EQ(again.fields()[0].length, 300);
    EXPECT_EQ(again.fields()[2].length, 64000);
    EXPECT_TRUE(is_same(again.get(0), text));
}

TEST_F(DbfFile, ALongTextFieldMayBeGivenAsTheFileKeepsIt) {
    struct Case {
        int length, decimals, made;
    };
    for (const auto& [length, decimals, made] : {Case{44, 1, 300},
                                                 {0, 1, 256},
                                                 {255, 0, 255},
                                                 {255, 2, 767},
                                                 {0, 250, 64000},
                                                 {256, 1, 256},
                                                 {300, 7, 300},
                                                 {5, -1, 5}}) {
        Table& table = create(array_of(field("A", "C", length, decimals)));
        EXPECT_EQ(table.fields()[0], (Field{"A", 'C', made, 0})) << length << ',' << decimals;
        close();
    }
    CaughtErrors caught;
    for (const auto& [length, decimals] : {std::pair{255, 255}, {0, 0}, {1, 1 << 30}}) {
        EXPECT_TRUE(is_same(dbcreate(path("t.dbf"), array_of(field("A", "C", length, decimals))), false));
        EXPECT_EQ(caught.take_count(), 1) << length << ',' << decimals;
    }
}

TEST_F(DbfFile, NamesAreInUpperCaseAndAtMostTenLong) {
    Table& table = create(array_of(field("customer_number", "C", 1), field(" x ", "C", 1)));
    EXPECT_EQ(table.fields()[0].name, "CUSTOMER_N");
    EXPECT_EQ(table.fields()[1].name, "X");
    EXPECT_EQ(bytes().substr(32, 12), "CUSTOMER_N\0C"sv);
}

TEST_F(DbfFile, DatesAndLogicalsHaveTheirOwnLengths) {
    Table& table = create(array_of(field("D", "D", 10, 3), field("L", "L", 5, 1)));
    EXPECT_EQ(table.fields()[0], (Field{"D", 'D', 8, 0}));
    EXPECT_EQ(table.fields()[1], (Field{"L", 'L', 1, 0}));
}

TEST_F(DbfFile, AnExtensionIsAddedWhenThereIsNone) {
    const Value structure = array_of(field("A", "C", 1));
    dbcreate(path("plain"), structure, "DBFIDX");
    dbcreate(path("other.tab"), structure, "DBFIDX");
    dbcreate(path(".hidden"), structure, "DBFIDX");
    EXPECT_TRUE(std::filesystem::exists(path("plain.dbf")));
    EXPECT_TRUE(std::filesystem::exists(path(".hidden.dbf")));
    EXPECT_TRUE(std::filesystem::exists(path("other.tab")));
    EXPECT_NE(open("plain"), nullptr);
    EXPECT_NE(open("other.tab", "U"), nullptr);
}

struct RefusedStructure {
    Value structure;
    std::string reason;
};

TEST_F(DbfFile, AStructureThatADbfFileCannotHaveIsRefused) {
    Value too_many = array_of();
    for (int i = 0; i < 2047; ++i) too_many.push(field("F" + std::to_string(i), "L", 1));
    const RefusedStructure cases[] = {
        {array_of(), "a table needs a field"},
        {array_of(field("", "C", 1)), "field : no name"},
        {array_of(field("A", "C", 0)), "field A: no length"},
        {array_of(field("A", "N", -1)), "field A: no length"},
        {array_of(field("A", "N", 256)), "field A: longer than 255"},
        {array_of(field("A", "N", 5, 5)), "field A: too many decimals"},
        {array_of(field("A", "M", 10)), "field A: type M cannot be kept in a DBF file"},
        {array_of(field("A", "U", 10)), "field A: type U cannot be kept in a DBF file"},
        {array_of(field("CUSTOMER_NAME", "C", 1), field("CUSTOMER_NUMBER", "C", 1)),
         "field CUSTOMER_N: another one has this name"},
        {array_of(field("A", "C", 65535)), "a record longer than 65535 bytes"},
        {array_of(field("A", "C", 1e9)), "a record longer than 65535 bytes"},
        {too_many, "too many fields"},
    };
    for (const auto& [structure, reason] : cases) {
        CaughtErrors caught;
        EXPECT_TRUE(is_same(dbcreate(path("x"), structure, "DBFIDX"), false)) << reason;
        EXPECT_EQ(caught.take_count(), 1) << reason;
        EXPECT_EQ(caught.number("gencode"), 20) << reason;
        EXPECT_EQ(caught.text("description"), "Create error, " + reason + ": " + path("x.dbf"));
        EXPECT_FALSE(std::filesystem::exists(path("x.dbf"))) << reason;
    }
    EXPECT_TRUE(is_same(dbcreate(path("x"), array_of(field("A", "C", 65534)), "DBFIDX"), true));
}

TEST_F(DbfFile, OtherProgramsReadTheSame) {
    Table& table = create(array_of(field("NAME", "C", 12), field("AMOUNT", "N", 12, 2),
                                   field("COUNT", "N", 18), field("BORN", "D", 8), field("OK", "L", 1)));
    add(table, array_of("Ana", -1234.5, 42, stod("00010101"sv), true));
    add(table, array_of("Descrição"_l1, 0.005, -7, stod("99991231"sv), false));
    table.append();
    table.put_columns(1, "-99999999.99");
    table.put_columns(2, "123456789012345678");
    add(table, array_of("gone", 1, 1, stod("20000101"sv), true));
    table.set_deleted(true);
    close();
    EXPECT_EQ(read_with_dbfread(path("t.dbf")),
              (DbfRecords{{"Ana", "-1234.5", "42", "0001-01-01", "True"},
                          {std::string("Descrição"_l1), "0.01", "-7", "9999-12-31", "False"},
                          {"", "-99999999.99", "123456789012345678", "None", "None"}}));
    EXPECT_EQ(read_with_dbfdump(path("t.dbf")),
              (DbfRecords{{"Ana", "-1234.50", "42", "00010101", "T"},
                          {std::string("Descrição"_l1), "0.01", "-7", "99991231", "F"},
                          {"", "-99999999.99", "123456789012345678", "", ""},
                          {"gone", "1.00", "1", "20000101", "T"}}));
}

// Files made by other programs: ours reads from each what another reader does.
struct FileOfOthers {
    const char* name;
    DbfRecords (*read)(const std::string& path);
    bool shows_deleted;
};
void PrintTo(const FileOfOthers& file, std::ostream* out) { *out << file.name; }

class FilesOfOthers : public DbfFile, public ::testing::WithParamInterface<FileOfOthers> {};

// A reader's text of a value in the form that is the same for all readers.
std::string plain(const Field& field, std::string text) {
    if (text == "None") text.clear();
    text.erase(0, text.find_first_not_of(' '));
    text.erase(text.find_last_not_of("\0 "sv) + 1);
    if (field.type == 'D') std::erase(text, '-');
    if (field.type == 'L')
        return !text.empty() && "TtYy"sv.find(text[0]) != std::string_view::npos ? "T" : "F";
    if (field.type == 'N') return test::show(text.empty() ? Value(0) : Value(std::stod(text)));
    return text;
}

std::string ours(const Field& field, const Value& value) {
    switch (field.type) {
        case 'D':
            return plain(field, dtos(value).string());
        case 'L':
            return value.logical() ? "T" : "F";
        case 'N':
            return test::show(Value(value.number()));
        default:
            return plain(field, std::string(value.text()));
    }
}

TEST_P(FilesOfOthers, AreReadAlike) {
    const std::string file = test::sample(GetParam().name);
    if (file.empty()) GTEST_SKIP() << test::without_sample(GetParam().name);
    const DbfRecords expected = GetParam().read(file);
    dbusearea(true, "DBFIDX", file, "T", true, true);
    ASSERT_NE(table_of("T"), nullptr);
    Table& table = *table_of("T");
    std::size_t record = 0;
    for (; !table.eof(); table.skip(1)) {
        if (table.deleted() && !GetParam().shows_deleted) continue;
        ASSERT_LT(record, expected.size());
        ASSERT_EQ(expected[record].size(), table.fields().size());
        for (std::size_t i = 0; i < table.fields().size(); ++i) {
            const Field& field = table.fields()[i];
            EXPECT_EQ(ours(field, table.get(i)), plain(field, expected[record][i]))
                << record << ' ' << field.name;
        }
        ++record;
    }
    EXPECT_EQ(record, expected.size());
    EXPECT_GT(record, 0U);
}

// dbfread cannot tell fields of one name apart (dbase_03), nor read a number with a zero byte
// (popctr_state1970).
INSTANTIATE_TEST_SUITE_P(Dbf, FilesOfOthers,
                         ::testing::Values(FileOfOthers{"blockgroups.dbf", read_with_dbfread, false},
                                           FileOfOthers{"people.dbf", read_with_dbfread, false},
                                           FileOfOthers{"scale_rank.dbf", read_with_dbfread, false},
                                           FileOfOthers{"six_counties.dbf", read_with_dbfread, false},
                                           FileOfOthers{"people.dbf", read_with_dbfdump, true},
                                           FileOfOthers{"popctr_state1970.dbf", read_with_dbfdump, true},
                                           FileOfOthers{"dbase_03.dbf", read_with_dbfdump, true}),
                         [](const auto& instance) {
                             const std::string name = instance.param.name;
                             return name.substr(0, name.find('.')) +
                                    (instance.param.shows_deleted ? "_with_deleted" : "");
                         });

}  // namespace
}  // namespace zmfb::host
