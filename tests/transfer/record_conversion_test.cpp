#include "transfer/record_conversion.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dbf/value.h"
#include "host/date.h"

namespace zmfb::transfer {
namespace {

dbf::Field field(char type, std::size_t length) {
    dbf::Field made;
    made.type = type;
    made.length = length;
    return made;
}

std::size_t sum_of_lengths(const std::vector<dbf::Field>& fields) {
    std::size_t sum = 1;
    for (const dbf::Field& each : fields) sum += each.length;
    return sum;
}

// The data of records, converted; with a guard behind it that must stay.
std::string converted(const std::vector<dbf::Field>& fields, std::size_t record_length,
                      const std::string& records) {
    const RecordConversion conversion(fields, record_length);
    const std::size_t count = records.size() / record_length;
    const std::size_t size = count * conversion.dat_length();
    std::string dat(size + 8, '#');
    conversion.convert(records.data(), count, dat.data());
    EXPECT_EQ(dat.substr(size), "########");
    return dat.substr(0, size);
}

std::string converted(const std::vector<dbf::Field>& fields, const std::string& records) {
    return converted(fields, sum_of_lengths(fields), records);
}

TEST(RecordConversion, DropsTheFlagAndKeepsCharactersAsTheyStand) {
    EXPECT_EQ(converted({field('C', 3), field('C', 2)}, std::string(" a\0c\xE7*", 6)),
              std::string("a\0c\xE7*", 5));
}

TEST(RecordConversion, DeletedRecordsAreConvertedLikeTheOthers) {
    EXPECT_EQ(converted({field('C', 2)}, " ab*cd ef"), "abcdef");
}

TEST(RecordConversion, DateOfACalendarDayIsWrittenWithDashes) {
    EXPECT_EQ(converted({field('D', 8)}, " 20070301 19991231 00010101 99991231 20000229"),
              "2007-03-011999-12-310001-01-019999-12-312000-02-29");
}

TEST(RecordConversion, DateThatIsNoneIsTheFirstDayOfTheYearOne) {
    for (const char* bad :
         {"        ", "20070230", "19000229", "20071301", "20070001", "20070100", "20070132", "00000101",
          "2007-1-1", "20 70301", " 2007030", "2007030 ", "\0\0\0\0\0\0\0\0", "ABCDEFGH"}) {
        EXPECT_EQ(converted({field('D', 8)}, " " + std::string(bad, 8)), "0001-01-01") << bad;
    }
}

TEST(RecordConversion, DateFieldOfAnotherLengthHoldsNoDate) {
    EXPECT_EQ(converted({field('D', 10), field('C', 1)}, " 2007-03-01x"), "0001-01-01x");
    EXPECT_EQ(converted({field('D', 6), field('C', 1)}, " 200703x"), "0001-01-01x");
    EXPECT_EQ(converted({field('D', 0), field('C', 1)}, " x"), "0001-01-01x");
    EXPECT_EQ(converted({field('C', 1), field('D', 0), field('C', 1)}, " xy"), "x0001-01-01y");
}

TEST(RecordConversion, NumberStandsAsItIs) {
    EXPECT_EQ(converted({field('N', 6)},
                        "  -1.50"
                        "   12  "
                        "*******"
                        " 0abc  "),
              " -1.50"
              "  12  "
              "******"
              "0abc  ");
}

TEST(RecordConversion, NumberOfBlanksOnlyIsZeroAndBlanks) {
    EXPECT_EQ(converted({field('N', 5), field('N', 1), field('C', 3)}, "          "), "0    0   ");
    EXPECT_EQ(converted({field('N', 3)}, " \t  "), "\t  ") << "a tab is no blank";
}

TEST(RecordConversion, NumberFilledUpWithZeroBytesIsFilledUpWithBlanks) {
    using namespace std::string_literals;
    EXPECT_EQ(converted({field('N', 5)}, " 344\0\0 -1.5\0 \0\0\0\0\0 3 \0 \0"s), "344  -1.5 0    3    "s);
    EXPECT_EQ(converted({field('N', 5)}, " 3\0 4  1\0\0\0x"s), "3\0 4 1\0\0\0x"s) << "others are no filling";
}

TEST(RecordConversion, FieldsOfLengthZeroTakeNoRoom) {
    EXPECT_EQ(converted({field('C', 0), field('N', 0), field('L', 0), field('C', 2)}, " ab"), "ab");
}

TEST(RecordConversion, LogicalAndUnknownTypesStandAsTheyAre) {
    EXPECT_EQ(converted({field('L', 1), field('M', 4), field('\0', 1)}, " y1234?"), "y1234?");
}

TEST(RecordConversion, FieldsInMixedOrderKeepTheirPlaces) {
    const std::vector<dbf::Field> fields = {field('C', 2), field('D', 8), field('N', 3), field('L', 1),
                                            field('D', 8), field('N', 2), field('C', 1)};
    EXPECT_EQ(converted(fields,
                        " ab"
                        "20070301"
                        "  7"
                        "T"
                        "        "
                        "  "
                        "x"
                        "*cd"
                        "        "
                        "   "
                        "F"
                        "20081231"
                        " 9"
                        "q"),
              "ab"
              "2007-03-01"
              "  7"
              "T"
              "0001-01-01"
              "0 "
              "x"
              "cd"
              "0001-01-01"
              "0  "
              "F"
              "2008-12-31"
              " 9"
              "q");
}

TEST(RecordConversion, BytesBehindTheLastFieldGoNowhere) {
    EXPECT_EQ(converted({field('C', 2)}, 6, " abxyz*cdxyz"), "abcd");
}

TEST(RecordConversion, MissingBytesOfAFieldBeyondTheRecordAreBlanks) {
    EXPECT_EQ(converted({field('C', 4)}, 3, " ab*cd"), "ab  cd  ");
    EXPECT_EQ(converted({field('C', 1), field('N', 3), field('D', 8), field('C', 2)}, 2, " a b"),
              "a0  0001-01-01  b0  0001-01-01  ");
    EXPECT_EQ(converted({field('N', 3)}, 3, " 12   "), "12 0  ");
    EXPECT_EQ(converted({field('D', 8)}, 8, " 2007030"), "0001-01-01");
    EXPECT_EQ(converted({field('C', 2), field('N', 2)}, 1, "  "), "  0   0 ");
}

TEST(RecordConversion, LengthsAreThoseOfBothRecords) {
    const std::vector<dbf::Field> fields = {field('C', 300), field('D', 8), field('N', 5)};
    const RecordConversion conversion(fields, 314);
    EXPECT_EQ(conversion.record_length(), 314U);
    EXPECT_EQ(conversion.dat_length(), 315U);
}

TEST(CalendarDay, IsWhatStodTakesForADate) {
    const auto agrees = [](const std::string& eight) {
        return dbf::read_date(eight).ok() == (host::stod(eight).date() != host::Date{});
    };
    for (const int year :
         {0, 1, 4, 99, 100, 400, 1582, 1800, 1899, 1900, 1904, 1999, 2000, 2001, 2004, 2100, 9999}) {
        for (int month = 0; month <= 13; ++month) {
            for (int day = 0; day <= 32; ++day) {
                const std::string eight = fmt::format("{:04}{:02}{:02}", year, month, day);
                EXPECT_TRUE(agrees(eight)) << eight;
            }
        }
    }
    for (std::size_t place = 0; place < 8; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string eight = "20111211";
            eight[place] = static_cast<char>(byte);
            EXPECT_TRUE(agrees(eight)) << place << " " << byte;
        }
    }
}

}  // namespace
}  // namespace zmfb::transfer
