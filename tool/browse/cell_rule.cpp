#include "tool/browse/cell_rule.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>

#include "tool/browse/source.h"
#include "tool/rows/shown_text.h"
#include "tool/session.h"
#include "zmfbconn/sql_error.h"

namespace zmfb::tool::browse {
namespace {

using Kind = CellRule::Kind;
using std::chrono::year_month_day;

bool is_digit(char c) { return c >= '0' && c <= '9'; }
std::string shape_words(Kind kind) {
    switch (kind) {
        case Kind::day:
            return "a date is YYYY-MM-DD";
        case Kind::time:
            return "a time is HH:MM:SS";
        default:
            return "a date is YYYY-MM-DD, with a time behind it YYYY-MM-DD HH:MM:SS";
    }
}

// Days and times: what stands at which place, 0 for a digit.
constexpr std::string_view day_shape = "0000-00-00", time_shape = "00:00:00.0000",
                           moment_shape = "0000-00-00 00:00:00.0000";
std::string_view shape_of(Kind kind) {
    return kind == Kind::day ? day_shape : kind == Kind::time ? time_shape : moment_shape;
}
// The lengths that a whole one may have.
bool is_whole(Kind kind, std::size_t size) {
    constexpr std::size_t minutes = 5, seconds = 8, ticks = 13, day = 10;
    const auto is_time = [](std::size_t length) {
        return length == minutes || length == seconds || length == ticks;
    };
    if (kind == Kind::time) return is_time(size);
    return size == day || (kind == Kind::moment && size > day && is_time(size - day - 1));
}

int number_at(std::string_view text, std::size_t at, std::size_t size) {
    int number = 0;
    std::from_chars(text.data() + at, text.data() + at + size, number);
    return number;
}

// A part of two digits, where it begins in the shape of a moment, and what it may be.
struct Part {
    std::size_t at;
    int least, most;
    std::string_view name;
};
constexpr std::array<Part, 5> parts{{{5, 1, 12, "month"},
                                     {8, 1, 31, "day"},
                                     {11, 0, 23, "hour"},
                                     {14, 0, 59, "minute"},
                                     {17, 0, 59, "second"}}};

// The parts that are there have to be possible ones.
std::string why_no_moment(Kind kind, std::string_view begun) {
    const std::string_view shape = shape_of(kind);
    bool fits = begun.size() <= shape.size();
    for (std::size_t i = 0; fits && i < begun.size(); ++i)
        fits = shape[i] == '0' ? is_digit(begun[i]) : begun[i] == shape[i];
    if (!fits) return shape_words(kind);
    const std::size_t before = kind == Kind::time ? day_shape.size() + 1 : 0;
    for (const Part& part : parts) {
        if (part.at < before || part.at - before + 2 > begun.size()) continue;
        const int number = number_at(begun, part.at - before, 2);
        if (number < part.least || number > part.most)
            return fmt::format("there is no {} {:02}", part.name, number);
    }
    return "";
}

std::string why_no_number(const CellRule& rule, std::string_view begun) {
    std::string_view digits = begun;
    if (digits.starts_with('-')) digits.remove_prefix(1);
    const std::size_t point = std::min(digits.find('.'), digits.size());
    const std::string_view whole = digits.substr(0, point);
    const std::string_view fraction = digits.substr(std::min(point + 1, digits.size()));
    const auto has_others = [](std::string_view part) {
        return part.find_first_not_of("0123456789") != std::string_view::npos;
    };
    if (has_others(whole) || has_others(fraction)) return "a number is digits, with a sign before them";
    if (rule.decimals == 0 && point < digits.size()) return "the column has whole numbers";
    if (fraction.size() > static_cast<std::size_t>(rule.decimals))
        return fmt::format("the column has {} decimal{}", rule.decimals, rule.decimals == 1 ? "" : "s");
    const std::size_t behind = rule.decimals == 0 ? 0 : static_cast<std::size_t>(rule.decimals) + 1;
    const std::size_t room = rule.width - std::min(rule.width, behind);
    const bool has_sign = digits.size() < begun.size();
    if (whole.size() + (has_sign ? 1 : 0) > room)
        return fmt::format("the column has room for {} characters{}", room,
                           behind == 0 ? "" : " before the point");
    return "";
}

std::string why_no_logical(std::string_view begun) {
    constexpr std::string_view letters = "TtFfYyNn";
    return begun.size() == 1 && letters.find(begun[0]) != std::string_view::npos ? "" : "T or F";
}

std::string why_no_real(std::string_view begun) {
    return begun.find_first_not_of("0123456789+-.eE") == std::string_view::npos
               ? ""
               : "a number is digits, with a sign before them";
}

[[noreturn]] void refuse(const std::string& words) { throw Failure{Exit::failed, words}; }

Decimal number_of(std::string_view text) {
    const std::string_view without_point = text.substr(0, text.size() - (text.ends_with('.') ? 1 : 0));
    try {
        return Decimal(without_point);
    } catch (const SqlError&) {
        refuse(fmt::format("{} is no number", text));
    }
}

double real_of(std::string_view text) {
    double number = 0;
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        refuse(fmt::format("{} is no number that the column holds", text));
    return number;
}

year_month_day day_of(std::string_view text) {
    const year_month_day day = std::chrono::year(number_at(text, 0, 4)) /
                               std::chrono::month(static_cast<unsigned>(number_at(text, 5, 2))) /
                               std::chrono::day(static_cast<unsigned>(number_at(text, 8, 2)));
    if (!day.ok() || static_cast<int>(day.year()) == 0) refuse(fmt::format("there is no {}", text));
    return day;
}

TimeOfDay time_of(std::string_view text) {
    TimeOfDay time = std::chrono::hours(number_at(text, 0, 2)) + std::chrono::minutes(number_at(text, 3, 2));
    if (text.size() > 5) time += std::chrono::seconds(number_at(text, 6, 2));
    if (text.size() > 8) time += TimeOfDay(number_at(text, 9, 4));
    return time;
}

CellValue moment_of(Kind kind, std::string_view text) {
    if (!is_whole(kind, text.size())) refuse(shape_words(kind));
    if (kind == Kind::time) return time_of(text);
    const year_month_day day = day_of(text.substr(0, day_shape.size()));
    if (kind == Kind::day) return day;
    Timestamp moment{std::chrono::sys_days(day).time_since_epoch()};
    if (text.size() > day_shape.size()) moment += time_of(text.substr(day_shape.size() + 1));
    return moment;
}

}  // namespace

CellRule rule_of(const Column& column, const FieldDescriptor* field) {
    CellRule rule{.kind = Kind::none, .width = 0, .decimals = column.decimals, .nullable = column.nullable};
    switch (column.type) {
        case SqlType::text:
            rule.kind = field != nullptr && field->type == "L" ? Kind::logical : Kind::text;
            rule.width = static_cast<std::size_t>(length_of_text(column));
            break;
        case SqlType::integer:
        case SqlType::decimal:
            rule.kind = Kind::number;
            rule.width = static_cast<std::size_t>(length_of_number(column));
            if (field != nullptr && field->type == "N" && field->length > 0)
                rule.width = static_cast<std::size_t>(field->length);
            break;
        case SqlType::real:
            rule.kind = Kind::real;
            break;
        case SqlType::boolean:
            rule.kind = Kind::logical;
            break;
        case SqlType::date:
            rule.kind = Kind::day;
            break;
        case SqlType::time:
            rule.kind = Kind::time;
            break;
        case SqlType::timestamp:
            rule.kind = Kind::moment;
            break;
        case SqlType::bytes:
        case SqlType::text_blob:
        case SqlType::blob:
        case SqlType::other:
            break;
    }
    return rule;
}

std::string why_not(const CellRule& rule, std::string_view begun) {
    if (begun.empty()) return "";
    switch (rule.kind) {
        case Kind::none:
            return "values of this type are not typed here";
        case Kind::text:
            if (rule.width == 0 || count_characters(begun) <= rule.width) return "";
            return fmt::format("the column has room for {} characters", rule.width);
        case Kind::number:
            return why_no_number(rule, begun);
        case Kind::real:
            return why_no_real(begun);
        case Kind::logical:
            return why_no_logical(begun);
        case Kind::day:
        case Kind::time:
        case Kind::moment:
            break;
    }
    return why_no_moment(rule.kind, begun);
}

CellValue typed_value(const CellRule& rule, std::string_view text) {
    if (rule.kind == Kind::text) return std::string(text);
    if (text.empty()) {
        if (!rule.nullable) refuse("the column takes no NULL");
        return std::monostate();
    }
    if (const std::string words = why_not(rule, text); !words.empty()) refuse(words);
    switch (rule.kind) {
        case Kind::number:
            return number_of(text);
        case Kind::real:
            return real_of(text);
        case Kind::logical:
            return std::string_view("TtYy").find(text[0]) != std::string_view::npos;
        default:
            return moment_of(rule.kind, text);
    }
}

}  // namespace zmfb::tool::browse
