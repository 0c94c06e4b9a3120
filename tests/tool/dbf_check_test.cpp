#include "tool/transfer/dbf_check.h"

#include <gtest/gtest.h>

#include "tests/support/dbf_builder.h"
#include "tests/support/runtime.h"

namespace zmfb::test {
namespace {

using namespace zmfb::tool;

struct NumberCase {
    std::string_view bytes;
    std::size_t length;
    int decimals;
    std::string_view problem;
};

constexpr std::string_view no_number = "not a number";
constexpr std::string_view stars = "stars: the number was too wide for its field";
constexpr std::string_view zero_byte = "a zero byte in a number";

// What the engine answered to each, through an external table.
constexpr NumberCase number_cases[] = {
    {"5", 4, 2, ""},
    {"  5", 4, 2, ""},
    {"5   ", 4, 2, ""},
    {"", 4, 2, ""},
    {"    ", 4, 2, ""},
    {std::string_view("\0\0\0", 3), 4, 2, ""},
    {std::string_view("5\0", 2), 4, 2, ""},
    {std::string_view("5\0005", 3), 4, 2, zero_byte},
    {std::string_view("\0005", 2), 4, 2, zero_byte},
    {"+5", 4, 2, ""},
    {"-5", 4, 2, ""},
    {".5", 4, 2, ""},
    {"5.", 4, 2, ""},
    {"-.5", 4, 2, ""},
    {"1E+2", 4, 2, ""},
    {"1.5e2", 4, 2, ""},
    {"1e-2", 4, 2, ""},
    {"1e-300", 4, 2, ""},
    {"000000000000000000000000000005", 4, 2, ""},
    {"0.00000000000000000000000001", 4, 2, ""},
    {".", 4, 2, no_number},
    {"-", 4, 2, no_number},
    {"- 5", 4, 2, no_number},
    {"--5", 4, 2, no_number},
    {"5,3", 4, 2, no_number},
    {"1 2", 4, 2, no_number},
    {"1.2.3", 4, 2, no_number},
    {"\t5", 4, 2, no_number},
    {"5\n", 4, 2, no_number},
    {"1e", 4, 2, no_number},
    {"e5", 4, 2, no_number},
    {"5 e3", 4, 2, no_number},
    {"0x1F", 4, 2, no_number},
    {"nan", 4, 2, no_number},
    {"\xA0"
     "5",
     4, 2, no_number},
    {"****", 4, 2, stars},
    {"327.67", 4, 2, ""},
    {"327.674", 4, 2, ""},
    {"-327.684", 4, 2, ""},
    {"-327.68", 4, 2, ""},
    {"327.68", 4, 2, "too wide for NUMERIC(4,2)"},
    {"327.675", 4, 2, "too wide for NUMERIC(4,2)"},
    {"-327.685", 4, 2, "too wide for NUMERIC(4,2)"},
    {"2.147483647", 4, 2, ""},
    {"2.147483648", 4, 2, "too wide for NUMERIC(4,2)"},
    {"1.5000000000", 9, 2, "too wide for NUMERIC(9,2)"},
    {"21474836.47", 9, 2, ""},
    {"-21474836.48", 9, 2, ""},
    {"21474836.474", 9, 2, "too wide for NUMERIC(9,2)"},
    {"214748364.7", 9, 2, "too wide for NUMERIC(9,2)"},
    {"-2147483648", 9, 0, ""},
    {"2147483648", 9, 0, "too wide for NUMERIC(9,0)"},
    {"9999999999.99", 10, 2, ""},
    {"1e3275", 10, 2, "too wide for NUMERIC(10,2)"},
    {"0e3275", 10, 2, ""},
    {"0e3276", 10, 2, "too wide for NUMERIC(10,2)"},
    {"92233720368547758.07", 18, 2, ""},
    {"-92233720368547758.08", 18, 2, ""},
    {"92233720368547758.08", 18, 2, "too wide for NUMERIC(18,2)"},
    {"92233720368547758.074", 18, 2, "too wide for NUMERIC(18,2)"},
    {"1.000000000000000000", 18, 2, ""},
    {"1.0000000000000000000", 18, 2, "too wide for NUMERIC(18,2)"},
    {"922337203685477580.7e1", 18, 0, ""},
    {"9.3e18", 18, 0, "too wide for NUMERIC(18,0)"},
};

TEST(NumberProblem, IsWhatTheEngineWouldRefuse) {
    for (const NumberCase& one : number_cases) {
        EXPECT_EQ(number_problem(one.bytes, one.length, one.decimals), one.problem)
            << shown_bytes(one.bytes) << " for " << one.length << ',' << one.decimals;
    }
}

TEST(IsDate, KnowsTheCalendar) {
    for (const char* date : {"00010101", "20240229", "20000229", "99991231"})
        EXPECT_TRUE(is_date(date)) << date;
    for (const char* date : {"", "        ", "00000101", "20230229", "19000229", "20231301", "20230100",
                             "2023010", "2023-1-1", "20230431"}) {
        EXPECT_FALSE(is_date(date)) << date;
    }
}

TEST(ShownBytes, EscapesWhatCannotBeReadAndShowsTheRestInUtf8) {
    EXPECT_EQ(shown_bytes(std::string_view("a\0\x1A\\\x80\xE7\x7F", 7)), "a\\x00\\x1A\\x5C\\x80ç\\x7F");
}

class DbfCheck : public Runtime {
  protected:
    static DbfBuilder builder() {
        return DbfBuilder()
            .field("CODE", 'N', 4)
            .field("NAME", 'C', 5)
            .field("BORN", 'D', 8)
            .field("OK", 'L', 1);
    }
    DbfFile open(const DbfBuilder& made) {
        made.write(file("made.dbf"));
        DbfFile dbf;
        EXPECT_EQ(read_dbf_file(file("made.dbf"), dbf), "");
        return dbf;
    }
    CheckResult check(const DbfBuilder& made, bool skip_deleted = false) {
        bad.clear();
        return check_records(open(made), {skip_deleted,
                                          [this](const BadValue& one) {
                                              bad.push_back(std::to_string(one.record) + " " +
                                                            one.field.name + " " + shown_bytes(one.bytes) +
                                                            " " + one.reason);
                                          },
                                          {}});
    }
    std::vector<std::string> bad;
};

TEST_F(DbfCheck, CountsRecordsAndWhatChanges) {
    const CheckResult result = check(builder()
                                         .record({"1", "Ana", "20070301", "T"})
                                         .record({"2", "Bob", "20070231", "F"}, '*')
                                         .record({"3", std::string("a\0b", 3), "", "?"})
                                         .record({"", "", "00000000", ""}));
    EXPECT_EQ(result.records, 4U);
    EXPECT_EQ(result.deleted, 1U);
    EXPECT_EQ(result.bad, 0U);
    EXPECT_EQ(result.lost_dates, 1U);
    EXPECT_EQ(result.zero_texts, 1U);
}

TEST_F(DbfCheck, NamesEachBadValue) {
    const DbfBuilder made = builder()
                                .record({"****", "Ana", "", "T"})
                                .record({"1.x", "Bob", "", "F"}, '*')
                                .record({"99999", "Eva", "", "T"});
    EXPECT_EQ(check(made).bad, 2U);
    EXPECT_EQ(bad, (std::vector<std::string>{"1 CODE **** stars: the number was too wide for its field",
                                             "2 CODE  1.x not a number"}));
    EXPECT_EQ(check(made, true).bad, 1U);
    EXPECT_EQ(bad.size(), 1U);
}

TEST_F(DbfCheck, ManyRecordsAreReadBlockByBlock) {
    DbfBuilder made = builder();
    for (int i = 0; i < 40000; ++i) made.record({i == 30000 ? "x" : "1", "Ana", "", "T"});
    EXPECT_EQ(check(made).records, 40000U);
    EXPECT_EQ(bad, std::vector<std::string>{"30001 CODE    x not a number"});
}

TEST_F(DbfCheck, ALastRecordInPartCountsAndMissingOnesDoNot) {
    const std::string whole = builder().record({"1", "Ana", "", "T"}).bytes();
    const DbfFile file = open(builder().record({"1", "Ana", "", "T"}).record_count(5).cut(whole.size() - 12));
    EXPECT_EQ(file.counted, 5U);
    EXPECT_EQ(file.records, 1U);
    EXPECT_EQ(check_records(file, {}).records, 1U);
}

TEST_F(DbfCheck, FilesThatAreNoneAreNamed) {
    DbfFile dbf;
    EXPECT_EQ(read_dbf_file(file("nosuch.dbf"), dbf), "does not exist");
    EXPECT_EQ(read_dbf_file(folder(), dbf), "is a folder");
    EXPECT_EQ(read_dbf_file(write_file("a", ""), dbf), "is not a DBF file");
    EXPECT_EQ(read_dbf_file(write_file("a", "text, and nothing else"), dbf), "is not a DBF file");
    EXPECT_EQ(read_dbf_file(write_file("a", "\x03 too short"), dbf),
              "is a DBF file that ends within its header");
    EXPECT_EQ(read_dbf_file(write_file("a", builder().type(131).bytes()), dbf),
              "is a DBF file with memo fields, which cannot be imported");
    EXPECT_EQ(read_dbf_file(write_file("a", builder().cut(70).bytes()), dbf),
              "is a DBF file that ends within its header");
    EXPECT_EQ(read_dbf_file(write_file("a", builder().header_length(33).bytes()), dbf), "has no fields");
    EXPECT_EQ(read_dbf_file(write_file("a", builder().record_length(5).bytes()), dbf),
              "has records of 5 bytes, but fields of 19");
}

TEST_F(DbfCheck, RecordsOf32768BytesAndMoreAreReadAsOneByteShorterAsTheImportReadsThem) {
    for (const auto& [announced, read] : {std::pair{32767U, 32767U}, {32768U, 32767U}, {40000U, 39999U}}) {
        DbfBuilder made = DbfBuilder().field("NOTE", 'C', 20000).record_length(static_cast<int>(announced));
        const DbfFile file = open(made.record_count(2));
        EXPECT_EQ(file.record_length, read) << announced;
    }
}

TEST_F(DbfCheck, LongTextsAndLowerCaseNamesAreReadAsTheImportReadsThem) {
    const DbfFile file = open(DbfBuilder().field("note", 'c', 300).field("n", 'n', 5, 2));
    EXPECT_EQ(file.fields, (std::vector<DbfField>{{"NOTE", 'C', 300, 0, 1}, {"N", 'N', 5, 2, 301}}));
}

}  // namespace
}  // namespace zmfb::test
