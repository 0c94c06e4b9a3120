// What may be typed for a column, and what it becomes.
#include "tool/browse/cell_input.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool/browse/prompt.h"
#include "tool/session.h"

namespace zmfb::test {
namespace {

using namespace tool::browse;
using namespace std::chrono_literals;
using std::chrono::year;
using Kind = CellRule::Kind;

constexpr CellRule five_letters{Kind::text, 5, 0, true}, price{Kind::number, 8, 2, false},
    count{Kind::number, 4, 0, true}, real{Kind::real, 0, 0, true}, logical{Kind::logical, 1, 0, false},
    day{Kind::day, 0, 0, true}, time_of_day{Kind::time, 0, 0, true}, moment{Kind::moment, 0, 0, true},
    bytes{Kind::none, 0, 0, true};

TEST(CellInput, TakesWhatMayStillBecomeAValue) {
    struct Case {
        CellRule rule;
        std::string begun, why;
    };
    const std::string digits = "a number is digits, with a sign before them";
    const std::string day_words = "a date is YYYY-MM-DD";
    const std::string moment_words = "a date is YYYY-MM-DD, with a time behind it YYYY-MM-DD HH:MM:SS";
    for (const auto& [rule, begun, why] : std::vector<Case>{
             {five_letters, "ab", ""},
             {five_letters, "éàüñç", ""},
             {five_letters, "éàüñçx", "the column has room for 5 characters"},
             {price, "-", ""},
             {price, "-1234.56", ""},
             {price, "12345", ""},
             {price, ".5", ""},
             {price, "123456", "the column has room for 5 characters before the point"},
             {price, "-12345", "the column has room for 5 characters before the point"},
             {price, "1.234", "the column has 2 decimals"},
             {price, "1,5", digits},
             {price, "1.2.3", digits},
             {count, "-123", ""},
             {count, "12345", "the column has room for 4 characters"},
             {count, "1.", "the column has whole numbers"},
             {real, "-1.5e-7", ""},
             {real, "1x", digits},
             {logical, "t", ""},
             {logical, "N", ""},
             {logical, "x", "T or F"},
             {day, "2026-1", ""},
             {day, "2026-13", "there is no month 13"},
             {day, "2026-00", "there is no month 00"},
             {day, "2026-11-3", ""},
             {day, "2026-11-32", "there is no day 32"},
             {day, "2026/", day_words},
             {day, "2026-11-22 ", day_words},
             {time_of_day, "09:3", ""},
             {time_of_day, "24", "there is no hour 24"},
             {time_of_day, "09:60", "there is no minute 60"},
             {time_of_day, "09:30:15.1250", ""},
             {moment, "2026-11-22 09:30:15", ""},
             {moment, "2026-11-22 09:30:61", "there is no second 61"},
             {moment, "2026-11-22T", moment_words},
             {bytes, "0", "values of this type are not typed here"},
         }) {
        EXPECT_EQ(why_not(rule, begun), why) << begun;
    }
}

TEST(CellInput, BecomesAValueOfTheColumn) {
    struct Case {
        CellRule rule;
        std::string text;
        CellValue value;
    };
    const auto noon = Timestamp(std::chrono::sys_days(year(2026) / 11 / 22).time_since_epoch()) + 12h;
    for (const auto& [rule, text, value] : std::vector<Case>{
             {five_letters, "", std::string()},
             {five_letters, "é ", std::string("é ")},
             {price, "-12.5", Decimal(-125, 1)},
             {price, "7.", Decimal(7)},
             {count, "", std::monostate()},
             {count, "0042", Decimal(42)},
             {real, "+1e3", 1000.0},
             {logical, "y", true},
             {logical, "F", false},
             {day, "2028-02-29", year(2028) / 2 / 29},
             {time_of_day, "09:30", TimeOfDay(9h + 30min)},
             {time_of_day, "00:00:01.0002", TimeOfDay(10002)},
             {moment, "2026-11-22 12:00", noon},
             {moment, "2026-11-22", noon - 12h},
         }) {
        EXPECT_TRUE(typed_value(rule, text) == value) << text;
    }
}

TEST(CellInput, ThatIsHalfTypedIsRefusedInWords) {
    struct Case {
        CellRule rule;
        std::string text, words;
    };
    for (const auto& [rule, text, words] : std::vector<Case>{
             {price, "", "the column takes no NULL"},
             {price, "-", "- is no number"},
             {price, ".", ". is no number"},
             {real, "1e", "1e is no number that the column holds"},
             {real, "1e999", "1e999 is no number that the column holds"},
             {day, "2026-11", "a date is YYYY-MM-DD"},
             {day, "2026-02-29", "there is no 2026-02-29"},
             {day, "0000-01-01", "there is no 0000-01-01"},
             {time_of_day, "09", "a time is HH:MM:SS"},
             {moment, "2026-11-22 09", "a date is YYYY-MM-DD, with a time behind it YYYY-MM-DD HH:MM:SS"},
         }) {
        try {
            (void)typed_value(rule, text);
            ADD_FAILURE() << text << " was taken";
        } catch (const tool::Failure& failure) {
            EXPECT_EQ(failure.message, words) << text;
        }
    }
}

TEST(CellInput, IsMendedAnywhere) {
    CellInput input(day, "2026-11-22");
    for (int i = 0; i < 3; ++i) input.left();
    input.backspace();
    EXPECT_EQ(input.text(), "2026-1-22");
    EXPECT_EQ(input.before(), "2026-1");
    input.insert(U'9');
    EXPECT_EQ(input.refusal(), "there is no month 19");
    EXPECT_EQ(input.text(), "2026-1-22");
    input.insert(U'2');
    EXPECT_EQ(input.refusal(), "");
    EXPECT_TRUE(input.value() == CellValue(year(2026) / 12 / 22));

    CellInput text(five_letters, "né");
    text.home();
    text.remove();
    text.end();
    text.insert(U'€');
    text.left();
    text.left();
    text.right();
    EXPECT_EQ(text.text(), "é€");
    EXPECT_EQ(text.before(), "é");
    text.backspace();
    EXPECT_EQ(text.text(), "€");
}

TEST(CellInput, KeepsNullApartFromNothing) {
    CellInput text(five_letters, std::nullopt);
    EXPECT_TRUE(text.is_null());
    EXPECT_FALSE(text.is_changed());
    EXPECT_TRUE(text.value() == CellValue());
    text.insert(U'a');
    text.backspace();
    EXPECT_TRUE(text.value() == CellValue(std::string()));
    text.make_null();
    EXPECT_TRUE(text.value() == CellValue());

    CellInput number(price, "1.50");
    number.make_null();
    EXPECT_EQ(number.refusal(), "the column takes no NULL");
    EXPECT_EQ(number.text(), "1.50");
}

TEST(CellInput, ALogicalIsTypedOver) {
    CellInput input(logical, "true");
    EXPECT_EQ(input.text(), "T");
    input.insert(U'f');
    EXPECT_TRUE(input.value() == CellValue(false));
}

TEST(CellInput, GoesByWhatTheDriverKnowsOfTheField) {
    const Column whole{"QTY", SqlType::integer, 0, 4, false, "INTEGER"};
    const FieldDescriptor eight{"QTY", "N", 8, 0};
    EXPECT_EQ(rule_of(whole, nullptr).width, 11u);
    EXPECT_EQ(rule_of(whole, &eight).width, 8u);
    const Column letter{"LISTED", SqlType::text, 0, 1, false, "CHAR(1)"};
    const FieldDescriptor listed{"LISTED", "L", 1, 0};
    EXPECT_EQ(rule_of(letter, nullptr).kind, Kind::text);
    EXPECT_EQ(rule_of(letter, &listed).kind, Kind::logical);
    const Column wide{"NAME", SqlType::text, 0, 120, true, "VARCHAR(30)"};
    EXPECT_EQ(rule_of(wide, nullptr).width, 30u);
    EXPECT_EQ(rule_of({"NOTE", SqlType::text_blob, 0, 8, true, "BLOB SUB_TYPE TEXT"}, nullptr).kind,
              Kind::none);
}

TEST(CellInput, KeysThatEditAreTakenWhateverThereIsToEdit) {
    CellInput input(five_letters, "");
    for (const Key key : {Key::backspace, Key::remove, Key::left, Key::right, Key::home, Key::end, Key{'x'}})
        EXPECT_TRUE(edit(input, key)) << static_cast<int>(key);
    for (const Key key : {Key::escape, Key::enter, Key::up, Key::f2})
        EXPECT_FALSE(edit(input, key)) << static_cast<int>(key);
    EXPECT_EQ(input.text(), "x");
}

}  // namespace
}  // namespace zmfb::test
