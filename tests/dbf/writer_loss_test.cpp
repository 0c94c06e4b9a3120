// Values that a field does not keep whole: refused by name, or converted and counted.
#include <cmath>
#include <functional>
#include <limits>

#include "written.h"

namespace zmfb::dbf_test {
namespace {

using namespace std::chrono_literals;
using dbf::Format;
using dbf::Loss;
using dbf::NewField;
using dbf::Writer;

constexpr auto day = std::chrono::year(2007) / 3 / 1;
constexpr std::chrono::local_days midnight(day);
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();

// A value on its way into a field: what it loses, what the file then has, and how it is named when refused.
struct Case {
    std::string what;
    NewField field;
    std::function<void(Writer&)> set;
    Loss loss = Loss::none;
    std::string kept;
    std::string refused{};
    std::string code_page{};
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.what; }

Format format_for(const NewField& field) {
    const bool old = std::string_view("CNDLM").find(field.type) != std::string_view::npos &&
                     !field.nullable && !field.binary;
    return old ? Format::dbase3 : Format::visual_foxpro;
}

class DbfLoss : public ::testing::TestWithParam<Case> {
  protected:
    [[nodiscard]] std::string path() const { return folder_.file("t.dbf"); }
    [[nodiscard]] static dbf::WriteOptions options(bool lossy) {
        return {.format = format_for(GetParam().field), .code_page = GetParam().code_page, .lossy = lossy};
    }

    Folder folder_;
};

TEST_P(DbfLoss, IsRefusedByNameOrConvertedAndCounted) {
    const Case& c = GetParam();
    {
        Writer strict(path(), {{"FIRST", 'C', 1}, c.field}, options(false));
        strict.append();
        if (c.loss == Loss::none) {
            EXPECT_NO_THROW(c.set(strict));
        } else {
            try {
                c.set(strict);
                ADD_FAILURE() << "nothing was refused";
            } catch (const dbf::Unfit& unfit) {
                EXPECT_EQ(unfit.loss(), c.loss);
                EXPECT_EQ(unfit.field(), 1U);
                EXPECT_EQ(unfit.record(), 2U);
                EXPECT_EQ(std::string(unfit.what()), "record 2, field X: " + c.refused);
            }
        }
    }
    EXPECT_EQ(folder_.names(), std::set<std::string>());
    Writer lossy(path(), {{"FIRST", 'C', 1}, c.field}, options(true));
    for (int i = 0; i < 2; ++i) {
        c.set(lossy);
        lossy.append();
    }
    lossy.finish();
    EXPECT_EQ(read_back(path()), (Lines{"\"\"|" + c.kept, "\"\"|" + c.kept}));
    const std::vector<dbf::Converted> converted = lossy.converted();
    ASSERT_EQ(converted.size(), c.loss == Loss::none ? 0U : 1U);
    if (converted.empty()) return;
    EXPECT_EQ(converted[0].field, 1U);
    EXPECT_EQ(converted[0].loss, c.loss);
    EXPECT_EQ(converted[0].count, 2U);
}

auto number(std::int64_t unscaled, int decimals = 0) {
    return [=](Writer& writer) { writer.number(1, unscaled, decimals); };
}
auto real(double value) {
    return [=](Writer& writer) { writer.real(1, value); };
}
auto text(const std::string& text) {
    return [=](Writer& writer) { writer.text(1, text); };
}
auto bytes(const std::string& bytes) {
    return [=](Writer& writer) { writer.bytes(1, bytes); };
}
auto date(dbf::Date date) {
    return [=](Writer& writer) { writer.date(1, date); };
}
auto time(std::chrono::local_time<std::chrono::microseconds> time) {
    return [=](Writer& writer) { writer.timestamp(1, time); };
}
void null(Writer& writer) { writer.null(1); }

const Case numbers[] = {
    {"a number as wide as the field", {"X", 'N', 3}, number(-99), Loss::none, "-99"},
    {"a number that is wider",
     {"X", 'N', 3},
     number(-100),
     Loss::too_wide,
     "blank",
     "-100 is wider than the field"},
    {"decimals that are zeros", {"X", 'N', 3}, number(1200, 2), Loss::none, "12"},
    {"more decimals",
     {"X", 'N', 6, 2},
     number(12345, 3),
     Loss::rounded,
     "12.35",
     "12.345 has more digits than the field keeps"},
    {"rounding to one more digit",
     {"X", 'N', 6, 2},
     number(99999, 3),
     Loss::rounded,
     "100.00",
     "99.999 has more digits than the field keeps"},
    {"rounding to too many digits",
     {"X", 'N', 5, 2},
     number(99999, 3),
     Loss::too_wide,
     "blank",
     "99.999 is wider than the field"},
    {"rounding to nothing",
     {"X", 'N', 5, 2},
     number(-4, 3),
     Loss::rounded,
     "0.00",
     "-0.004 has more digits than the field keeps"},
    {"rounding up from nothing",
     {"X", 'N', 5, 2},
     number(-5, 3),
     Loss::rounded,
     "-0.01",
     "-0.005 has more digits than the field keeps"},
    {"far more decimals",
     {"X", 'N', 5, 2},
     number(7, 18),
     Loss::rounded,
     "0.00",
     "0.000000000000000007 has more digits than the field keeps"},
    {"no room for the zero before the point", {"X", 'N', 3, 2}, number(5, 1), Loss::none, ".50"},
    {"no room for it behind a sign", {"X", 'N', 4, 2}, number(-5, 1), Loss::none, "-.50"},
    {"the largest number", {"X", 'N', 19}, number(most), Loss::none, "9223372036854775807"},
    {"the smallest number", {"X", 'N', 20}, number(least), Loss::none, "-9223372036854775808"},
    {"it with decimals", {"X", 'N', 22, 2}, number(least, 2), Loss::none, "-92233720368547758.08"},
    {"a real number", {"X", 'N', 10, 3}, real(0.1), Loss::none, "0.100"},
    {"a real number of many digits",
     {"X", 'N', 10, 3},
     real(-2.0 / 3),
     Loss::rounded,
     "-0.667",
     "-0.6666666666666666 has more digits than the field keeps"},
    {"a large real number", {"X", 'N', 30}, real(1e22), Loss::none, "10000000000000000000000"},
    {"the largest real number",
     {"X", 'N', 20},
     real(1e308),
     Loss::too_wide,
     "blank",
     "1e+308 is wider than the field"},
    {"the smallest real number",
     {"X", 'N', 20, 5},
     real(5e-324),
     Loss::rounded,
     "0.00000",
     "5e-324 has more digits than the field keeps"},
    {"minus zero", {"X", 'N', 5, 1}, real(-0.0), Loss::none, "0.0"},
    {"no number", {"X", 'N', 5}, real(std::nan("")), Loss::not_a_number, "blank", "nan is no number"},
    {"an infinite number", {"X", 'B'}, real(-INFINITY), Loss::not_a_number, "0", "-inf is no number"},
    {"an integer that is too large",
     {"X", 'I'},
     number(2147483648),
     Loss::too_wide,
     "0",
     "2147483648 is wider than the field"},
    {"the smallest integer", {"X", 'I'}, number(-2147483648), Loss::none, "-2147483648"},
    {"an integer with decimals",
     {"X", 'I'},
     number(-25, 1),
     Loss::rounded,
     "-3",
     "-2.5 has more digits than the field keeps"},
    {"a real number as an integer", {"X", 'I'}, real(1e3), Loss::none, "1000"},
    {"the largest amount", {"X", 'Y'}, number(most, 4), Loss::none, "9223372036854775807/10000"},
    {"an amount that is too large",
     {"X", 'Y'},
     number(most, 3),
     Loss::too_wide,
     "0/10000",
     "9223372036854775.807 is wider than the field"},
    {"an amount with more decimals",
     {"X", 'Y'},
     number(123456, 5),
     Loss::rounded,
     "12346/10000",
     "1.23456 has more digits than the field keeps"},
    {"a number as a double", {"X", 'B'}, number(-123456789012345, 3), Loss::none, "-123456789012.345"},
    {"more digits than a double has",
     {"X", 'B'},
     number(1234567890123456, 2),
     Loss::rounded,
     "12345678901234.56",
     "12345678901234.56 has more digits than the field keeps"},
    {"zeros that a double does not need", {"X", 'B'}, number(1000000000000000000), Loss::none, "1e+18"},
    {"NULL in N", {"X", 'N', 5}, null, Loss::null, "blank", "NULL has no place in the field"},
    {"NULL in I", {"X", 'I'}, null, Loss::null, "0", "NULL has no place in the field"},
    {"NULL in B", {"X", 'B'}, null, Loss::null, "0", "NULL has no place in the field"},
    {"NULL in Y", {"X", 'Y'}, null, Loss::null, "0/10000", "NULL has no place in the field"},
};

const Case texts[] = {
    {"a text as long as the field", {"X", 'C', 3}, text("abc"), Loss::none, "\"abc\""},
    {"blanks beyond the field", {"X", 'C', 3}, text("abc  "), Loss::none, "\"abc\""},
    {"a longer text",
     {"X", 'C', 3},
     text("abcd"),
     Loss::too_long,
     "\"abc\"",
     "\"abcd\" is longer than the field"},
    {"a very long text",
     {"X", 'C', 3},
     text(std::string(100, 'x')),
     Loss::too_long,
     "\"xxx\"",
     "\"" + std::string(80, 'x') + "...\" is longer than the field"},
    {"a text that is shorter in the code page",
     {"X", 'C', 3},
     text("äöü"),
     Loss::none,
     "\"\x84\x94\x81\"",
     "",
     "CP850"},
    {"characters of two bytes without room for the second",
     {"X", 'C', 3},
     text("äöü"),
     Loss::too_long,
     "\"ä\"",
     "\"äöü\" is longer than the field",
     "UTF-8"},
    {"a character that the code page does not have",
     {"X", 'C', 9},
     text("1 € = ?"),
     Loss::characters,
     "\"1 ? = ?\"",
     "\"1 € = ?\" has characters that the code page does not have",
     "CP850"},
    {"a text that is no UTF-8",
     {"X", 'C', 9},
     text("a\xE4z\xC3"),
     Loss::characters,
     "\"a?z?\"",
     "\"a\xE4z\xC3\" has characters that the code page does not have",
     "CP850"},
    {"bytes of no code page", {"X", 'C', 9}, text("a\xE4z"), Loss::none, "\"a\xE4z\""},
    {"bytes in a field for them",
     {"X", 'C', 9, 0, false, true},
     bytes("a\xE4z"),
     Loss::none,
     "\"a\xE4z\"",
     "",
     "CP850"},
    {"too many bytes",
     {"X", 'C', 3, 0, false, true},
     bytes("abcd"),
     Loss::too_long,
     "\"abc\"",
     "of 4 bytes is longer than the field"},
    {"blanks at the end of V", {"X", 'V', 3}, text("a  "), Loss::none, "\"a  \""},
    {"blanks beyond V",
     {"X", 'V', 3},
     text("abc "),
     Loss::too_long,
     "\"abc\"",
     "\"abc \" is longer than the field"},
    {"too many bytes for Q",
     {"X", 'Q', 2},
     bytes("abc"),
     Loss::too_long,
     "bytes \"ab\"",
     "of 3 bytes is longer than the field"},
    {"NULL in C", {"X", 'C', 3}, null, Loss::null, "\"\"", "NULL has no place in the field"},
    {"NULL in V", {"X", 'V', 3}, null, Loss::null, "\"\"", "NULL has no place in the field"},
    {"an end mark in a memo of dBASE III",
     {"X", 'M'},
     text("a\x1A\x1Az"),
     Loss::end_mark,
     "memo \"a??z\"",
     "\"a\\x1A\\x1Az\" has bytes that mark the end or the kind of a memo"},
    {"a memo of dBASE III that begins as those of dBASE IV",
     {"X", 'M'},
     text(std::string("\xFF\xFF\x08\0text", 8)),
     Loss::end_mark,
     "memo \"" + std::string("?\xFF\x08\0text", 8) + "\"",
     "\"\xFF\xFF\\x08\\x00text\" has bytes that mark the end or the kind of a memo"},
    {"a memo with a character that the code page does not have",
     {"X", 'M'},
     text("5 €"),
     Loss::characters,
     "memo \"5 ?\"",
     "\"5 €\" has characters that the code page does not have",
     "CP850"},
    {"NULL in M", {"X", 'M'}, null, Loss::none, "blank"},
    {"an empty memo", {"X", 'M'}, text(""), Loss::none, "memo \"\""},
    {"NULL in L", {"X", 'L'}, null, Loss::null, "blank", "NULL has no place in the field"},
    {"a letter of L", {"X", 'L'}, text("n"), Loss::none, "false"},
    {"blank in L", {"X", 'L'}, text(" "), Loss::none, "blank"},
};

const Case days[] = {
    {"the first day", {"X", 'D'}, date(std::chrono::year(1) / 1 / 1), Loss::none, "0001-01-01"},
    {"the last day", {"X", 'D'}, date(std::chrono::year(9999) / 12 / 31), Loss::none, "9999-12-31"},
    {"a day before",
     {"X", 'D'},
     date(std::chrono::year(0) / 12 / 31),
     Loss::no_day,
     "blank",
     "0000-12-31 is no day of the years 1 to 9999"},
    {"a day behind",
     {"X", 'T'},
     date(std::chrono::year(10000) / 1 / 1),
     Loss::no_day,
     "blank",
     "10000-01-01 is no day of the years 1 to 9999"},
    {"no day",
     {"X", 'D'},
     date(std::chrono::year(2007) / 2 / 29),
     Loss::no_day,
     "blank",
     "2007-02-29 is no day of the years 1 to 9999"},
    {"a time of day in D",
     {"X", 'D'},
     time(midnight + 9h + 30min),
     Loss::time_of_day,
     "2007-03-01",
     "2007-03-01 09:30:00.000000 has a time of day that the field does not keep"},
    {"midnight in D", {"X", 'D'}, time(midnight), Loss::none, "2007-03-01"},
    {"milliseconds in T",
     {"X", 'T'},
     time(midnight + 23h + 59min + 59999ms),
     Loss::none,
     "2007-03-01 23:59:59.999"},
    {"less than milliseconds in T",
     {"X", 'T'},
     time(midnight + 1500us),
     Loss::time_of_day,
     "2007-03-01 00:00:00.001",
     "2007-03-01 00:00:00.001500 has a time of day that the field does not keep"},
    {"a day in T", {"X", 'T'}, date(day), Loss::none, "2007-03-01 00:00:00.000"},
    {"NULL in D", {"X", 'D'}, null, Loss::none, "blank"},
    {"NULL in T", {"X", 'T'}, null, Loss::none, "blank"},
};

std::string name_of(const ::testing::TestParamInfo<Case>& info) {
    std::string name = info.param.what;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Numbers, DbfLoss, ::testing::ValuesIn(numbers), name_of);
INSTANTIATE_TEST_SUITE_P(Texts, DbfLoss, ::testing::ValuesIn(texts), name_of);
INSTANTIATE_TEST_SUITE_P(Days, DbfLoss, ::testing::ValuesIn(days), name_of);

}  // namespace
}  // namespace zmfb::dbf_test
