#include "host/date.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "errors.h"
#include "host/settings.h"
#include "host/text.h"
#include "values.h"

namespace zmfb::host {
namespace {

using host_test::expect_argument_error;
using host_test::expect_rows;

class DateFormat : public testing::Test {
  protected:
    void TearDown() override {
        set_date_format("mm/dd/yy");
        set_epoch(1900);
    }
};

TEST(Stod, TakesExactlyEightDigitsOfADay) {
    for (const char* text : {"01000101", "19991231", "20000229", "29991231", "99990101", "00010101"}) {
        EXPECT_TRUE(host_test::is_same(dtos(stod(text)), text));
    }
}

TEST(Stod, AnythingElseIsTheEmptyDate) {
    for (const char* text :
         {"", "        ", "1999090", "199909055", "19991301", "19990041", "20000230", "20010229", "19990431",
          "00000101", "1999 9 5", "19 90905", " 9990905", "1999-9-5", "+1990905"}) {
        EXPECT_TRUE(host_test::is_same(stod(text), Date{})) << text;
    }
    expect_rows({{stod({}), Date{}}, {stod(19990905), Date{}}, {stod(Date{5}), Date{}}});
}

TEST(Dtos, OfTheEmptyDateIsBlank) { EXPECT_TRUE(host_test::is_same(dtos(Date{}), "        ")); }

TEST(CalendarDay, OfKnownDays) {
    EXPECT_EQ(date_of({1970, 1, 1}).day, 2440588);
    EXPECT_EQ(date_of({2000, 1, 1}).day, 2451545);
    EXPECT_EQ(date_of({2007, 3, 1}).day - date_of({2007, 2, 28}).day, 1);
    EXPECT_EQ(date_of({2008, 3, 1}).day - date_of({2008, 2, 28}).day, 2);
    EXPECT_EQ(date_of({1900, 3, 1}).day - date_of({1900, 2, 28}).day, 1);
}

TEST(CalendarDay, ImpossibleOnesAreTheEmptyDate) {
    const CalendarDay impossible[] = {{0, 1, 1},      {10000, 1, 1}, {2000, 0, 1},  {2000, 13, 1},
                                      {2000, 1, 0},   {2000, 1, 32}, {2001, 2, 29}, {2000, 257, 1},
                                      {2000, 1, 257}, {-1, 1, 1}};
    for (const CalendarDay& day : impossible) {
        EXPECT_EQ(date_of(day), Date{}) << day.year << '-' << day.month << '-' << day.day;
    }
    for (const int number : {-1, 0, 1, 1721425, 5373485, 2147483647}) {
        EXPECT_EQ(calendar_day(Date{number}).year, 0) << number;
    }
}

TEST(CalendarDay, EveryDayOfTheCalendarFollowsTheOneBefore) {
    constexpr int days_of_month[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::int32_t number = date_of({1, 1, 1}).day;
    ASSERT_EQ(number, 1721426);
    int wrong = 0;
    for (int year = 1; year <= 9999; ++year) {
        const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        for (int month = 1; month <= 12; ++month) {
            const int last = days_of_month[month - 1] + (leap && month == 2 ? 1 : 0);
            for (int day = 1; day <= last; ++day, ++number) {
                const CalendarDay found = calendar_day(Date{number});
                if (found.year != year || found.month != month || found.day != day) ++wrong;
                if (date_of({year, month, day}).day != number) ++wrong;
            }
            if (date_of({year, month, last + 1}) != Date{}) ++wrong;
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(DateFormat, DtocFollowsIt) {
    const Value march = stod("20070301");
    const auto shown = [&](const char* format) {
        set_date_format(format);
        return dtoc(march);
    };
    expect_rows({{shown("mm/dd/yy"), "03/01/07"},
                 {shown("mm/dd/yyyy"), "03/01/2007"},
                 {shown("dd.mm.yy"), "01.03.07"},
                 {shown("YYYY-MM-DD"), "2007-03-01"},
                 {shown("yyyymmdd"), "20070301"}});
    EXPECT_TRUE(host_test::is_same(set_date_format(), "yyyymmdd"));
}

TEST_F(DateFormat, EmptyDateKeepsTheSeparators) {
    EXPECT_TRUE(host_test::is_same(dtoc(Date{}), "  /  /  "));
    set_date_format("yyyy-mm-dd");
    EXPECT_TRUE(host_test::is_same(dtoc(Date{}), "    -  -  "));
}

TEST_F(DateFormat, CtodReadsInItsOrder) {
    expect_rows({{ctod("03/01/2007"), stod("20070301")},
                 {ctod("3-1-2007"), stod("20070301")},
                 {ctod("03/01/2007 junk"), stod("20070301")},
                 {ctod("03/01/07"), stod("19070301")},
                 {ctod("  /  /  "), Date{}},
                 {ctod(""), Date{}},
                 {ctod("02/30/2000"), Date{}},
                 {ctod("257/01/2000"), Date{}},
                 {ctod("03/01"), Date{}},
                 {ctod("99999999999/01/2000"), Date{}}});
    set_date_format("yyyy-mm-dd");
    expect_rows({{ctod("2007-03-01"), stod("20070301")}, {ctod("07.3.1"), stod("19070301")}});
    set_date_format("dd/mm/yyyy");
    expect_rows({{ctod("01/03/2007"), stod("20070301")}});
}

TEST_F(DateFormat, YearsOfTwoDigitsFallIntoTheEpoch) {
    set_epoch(1950);
    expect_rows({{ctod("01/01/49"), stod("20490101")},
                 {ctod("01/01/50"), stod("19500101")},
                 {ctod("01/01/99"), stod("19990101")},
                 {ctod("01/01/0049"), stod("00490101")}});
}

TEST_F(DateFormat, RoundTripThroughBothFormats) {
    for (const char* format : {"mm/dd/yyyy", "dd.mm.yyyy", "yyyy-mm-dd"}) {
        set_date_format(format);
        EXPECT_TRUE(host_test::is_same(ctod(dtoc(stod("19991231"))), stod("19991231"))) << format;
    }
}

TEST(DateParts, OfTheEmptyDateAreZero) {
    expect_rows({{year(Date{}), 0},
                 {month(Date{}), 0},
                 {day(Date{}), 0},
                 {year(stod("20070301")), 2007},
                 {month(stod("20071231")), 12},
                 {day(stod("20071231")), 31}});
}

TEST(DateArithmetic, CountsDays) {
    expect_rows({{stod("20000228") + Value(2), stod("20000301")},
                 {Value(2) + stod("20000228"), stod("20000301")},
                 {stod("20000301") - Value(2), stod("20000228")},
                 {stod("20000301") - stod("20000228"), 2},
                 {stod("20000228") - stod("20000301"), -2},
                 {stod("20000301") + Value(0.9), stod("20000301")}});
}

TEST(DateArithmetic, LeavingTheCalendarGivesTheEmptyDate) {
    expect_rows({{stod("99991231") + Value(1), Date{}},
                 {stod("00010101") - Value(1), Date{}},
                 {stod("20000101") + Value(1e300), Date{}},
                 {stod("20000101") - Value(1e300), Date{}},
                 {Value(Date{}) + Value(5), Date{}}});
}

TEST(Now, HasTheFormsOfDateAndTime) {
    EXPECT_TRUE(date().is(Kind::date));
    EXPECT_GT(date().date(), date_of({2024, 1, 1}));
    const Value now = time();
    EXPECT_TRUE(
        std::regex_match(std::string(now.text()), std::regex("([01][0-9]|2[0-3]):[0-5][0-9]:[0-6][0-9]")));
}

TEST(Dates, WrongKindsRaiseArgumentErrors) {
    expect_argument_error(Subcode::dtos, "DTOS", [] { return dtos("20070301"); });
    expect_argument_error(Subcode::dtoc, "DTOC", [] { return dtoc({}); });
    expect_argument_error(Subcode::ctod, "CTOD", [] { return ctod(5); });
    expect_argument_error(Subcode::year, "YEAR", [] { return year("A"); });
    expect_argument_error(Subcode::month, "MONTH", [] { return month({}); });
    expect_argument_error(Subcode::day, "DAY", [] { return day(5); });
    expect_argument_error(Subcode::plus, "+", [] { return stod("20070301") + stod("20070301"); });
    expect_argument_error(Subcode::minus, "-", [] { return Value(1) - stod("20070301"); });
}

}  // namespace
}  // namespace zmfb::host
