#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string_view>

#include "result.h"

namespace zmfb::test {
namespace {

struct skippad_case {
    std::string_view name;
    std::string text;
    std::string expected;
};

class SkipPad : public testing::TestWithParam<skippad_case> {};

TEST_P(SkipPad, Gives) { EXPECT_EQ(take(skippad(GetParam().text.c_str())), GetParam().expected); }

const std::string longest(ZMRDDUDFS_TEXT_MAX, 'x');
const skippad_case skippad_cases[] = {
    {"DateOfATimestamp", "{{D}}2007-03-01 00:00:00.0000", "20070301"},
    {"DateOfATimestampWithATime", "{{D}}2007-03-01 14:05:09.1234", "20070301"},
    {"DateOfADate", "{{D}}2007-03-01", "20070301"},
    {"DateOfATimestampWithoutFraction", "{{D}}2007-03-01 14:05:09", "20070301"},
    {"DateOfATimestampWithBlanksBehind", "{{D}}2007-03-01 00:00:00.0000   ", "20070301"},
    {"DateWithBlanksBehind", "{{D}}2007-03-01   ", "20070301"},
    {"FirstDateOfTheEngine", "{{D}}0001-01-01", "00010101"},
    {"LastDateOfTheEngine", "{{D}}9999-12-31", "99991231"},
    {"LeapDay", "{{D}}2008-02-29", "20080229"},
    {"LeapDayOfACentury", "{{D}}2000-02-29", "20000229"},
    {"NothingBehindTheMark", "{{D}}", blank_date},
    {"BlanksBehindTheMark", "{{D}}    ", blank_date},
    {"EmptyText", "", ""},
    {"OtherTextWithItsBlanks", "  ab  ", "  ab  "},
    {"TimestampWithoutTheMark", "2007-03-01 00:00:00.0000", "2007-03-01 00:00:00.0000"},
    {"MarkNotAtTheBeginning", " {{D}}2007-03-01", " {{D}}2007-03-01"},
    {"PartOfTheMark", "{{D}", "{{D}"},
    {"MarkInLowerCase", "{{d}}2007-03-01", "{{d}}2007-03-01"},
    {"MarkAndNoDate", "{{D}}hello", "{{D}}hello"},
    {"MarkAndPartOfADate", "{{D}}2007-03", "{{D}}2007-03"},
    {"MarkAndPartOfATime", "{{D}}2007-03-01 14:05", "{{D}}2007-03-01 14:05"},
    {"MarkAndPartOfAFraction", "{{D}}2007-03-01 14:05:09.12", "{{D}}2007-03-01 14:05:09.12"},
    {"MarkAndADateWithATextBehind", "{{D}}2007-03-01 x", "{{D}}2007-03-01 x"},
    {"MarkAndMoreDigitsThanATimestamp", "{{D}}2007-03-01 00:00:00.00001", "{{D}}2007-03-01 00:00:00.00001"},
    {"MarkAndAMonthThatIsNone", "{{D}}2007-13-01", "{{D}}2007-13-01"},
    {"MarkAndMonthZero", "{{D}}2007-00-01", "{{D}}2007-00-01"},
    {"MarkAndADayThatIsNone", "{{D}}2007-04-31", "{{D}}2007-04-31"},
    {"MarkAndDayZero", "{{D}}2007-04-00", "{{D}}2007-04-00"},
    {"MarkAndYearZero", "{{D}}0000-01-01", "{{D}}0000-01-01"},
    {"MarkAndALeapDayInACommonYear", "{{D}}2007-02-29", "{{D}}2007-02-29"},
    {"MarkAndADayThatIsNoneInALeapYear", "{{D}}2008-04-31", "{{D}}2008-04-31"},
    {"MarkAndADayBehindALeapDay", "{{D}}2008-02-30", "{{D}}2008-02-30"},
    {"MarkAndALeapDayInACommonCentury", "{{D}}1900-02-29", "{{D}}1900-02-29"},
    {"LongestText", longest, longest},
    {"TooLongTextIsReadToTheLimit", longest + "yz", longest},
};

INSTANTIATE_TEST_SUITE_P(Udf, SkipPad, testing::ValuesIn(skippad_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SkipPadUdf, NullGivesBlanks) { EXPECT_EQ(take(skippad(nullptr)), blank_date); }

int days_in(int year, int month) {
    if (month == 2) return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0) ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

TEST(SkipPadUdf, KnowsTheDaysOfEveryMonth) {
    for (const int year : {1, 4, 100, 400, 1899, 1900, 1996, 2000, 2007, 2008, 2100, 9996, 9999}) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 32; ++day) {
                char date[48];
                char text[48];
                std::snprintf(date, sizeof date, "%04d%02d%02d", year, month, day);
                std::snprintf(text, sizeof text, "{{D}}%04d-%02d-%02d", year, month, day);
                EXPECT_EQ(take(skippad(text)), day <= days_in(year, month) ? date : text);
            }
        }
    }
}

struct dtos_case {
    std::string_view name;
    ISC_DATE day;
    ISC_TIME time;
    std::string expected;
};

class Dtos : public testing::TestWithParam<dtos_case> {};

TEST_P(Dtos, Gives) {
    const ISC_TIMESTAMP timestamp{GetParam().day, GetParam().time};
    EXPECT_EQ(take(zmdtos(&timestamp)), GetParam().expected);
}

constexpr ISC_TIME end_of_day = 24U * 60 * 60 * 10000 - 1;
const dtos_case dtos_cases[] = {
    {"FirstDayOfTheCount", 0, 0, "18581117"},
    {"DayBeforeTheCount", -1, end_of_day, "18581116"},
    {"UnixEpoch", 40587, 0, "19700101"},
    {"TimeOfDayIsLeftOut", 54160, end_of_day, "20070301"},
    {"DayBeforeMarchInACommonYear", 54159, 0, "20070228"},
    {"LeapDay", 54525, 0, "20080229"},
    {"LeapDayOfACentury", 51603, 0, "20000229"},
    {"DayBehindFebruaryOfACommonCentury", 15079, 0, "19000301"},
    {"DayBeforeThat", 15078, 0, "19000228"},
    {"FirstDateOfTheEngine", -678575, 0, "00010101"},
    {"LastDateOfTheEngine", 2973483, 0, "99991231"},
    {"DayBeforeTheFirstGivesBlanks", -678576, 0, blank_date},
    {"DayBehindTheLastGivesBlanks", 2973484, 0, blank_date},
    {"LowestDayGivesBlanks", std::numeric_limits<ISC_DATE>::min(), 0, blank_date},
    {"HighestDayGivesBlanks", std::numeric_limits<ISC_DATE>::max(), 0, blank_date},
};

INSTANTIATE_TEST_SUITE_P(Udf, Dtos, testing::ValuesIn(dtos_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(DtosUdf, GivesEveryDayOfTheCalendar) {
    ISC_TIMESTAMP timestamp{-678575, 0};
    for (int year = 1; year <= 9999; ++year) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= days_in(year, month); ++day, ++timestamp.timestamp_date) {
                char date[32];
                std::snprintf(date, sizeof date, "%04d%02d%02d", year, month, day);
                ASSERT_EQ(take(zmdtos(&timestamp)), date);
            }
        }
    }
    EXPECT_EQ(timestamp.timestamp_date, 2973484);
}

TEST(DtosUdf, NullGivesBlanks) { EXPECT_EQ(take(zmdtos(nullptr)), blank_date); }

}  // namespace
}  // namespace zmfb::test
