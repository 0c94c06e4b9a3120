#include "host/date.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <string>
#include <string_view>

#include "host/error.h"
#include "host/settings.h"

namespace zmfb::host {
namespace {

// The Julian day number of 1 January 1970.
constexpr std::int32_t epoch_day = 2440588;
constexpr std::int32_t first_day = 1721426;  // 1 January of the year 1
constexpr std::int32_t last_day = 5373484;   // 31 December 9999

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

int number_of(std::string_view digits) {
    int number = 0;
    for (const char c : digits) number = number * 10 + (c - '0');
    return number;
}

std::string& format() {
    static std::string picture = "mm/dd/yy";
    return picture;
}

constexpr char small_letter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr bool is_part(char c) { return c == 'y' || c == 'm' || c == 'd'; }

// One piece of the date format: a run of y, m or d, or one other character.
struct Piece {
    char letter;
    std::size_t size;
};

Piece next_piece(std::string_view picture, std::size_t at) {
    const char letter = small_letter(picture[at]);
    std::size_t end = at + 1;
    while (is_part(letter) && end < picture.size() && small_letter(picture[end]) == letter) ++end;
    return {letter, end - at};
}

int part_of(CalendarDay day, char letter) {
    if (letter == 'y') return day.year;
    return letter == 'm' ? day.month : day.day;
}

std::tm local_now() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

// The next number in `s` from `at` on, behind anything that is no digit; -1 when there is none.
struct Found {
    int number;
    std::size_t digits;
};

Found next_number(std::string_view s, std::size_t& at) {
    while (at < s.size() && !is_digit(s[at])) ++at;
    const std::size_t first = at;
    while (at < s.size() && is_digit(s[at])) ++at;
    constexpr std::size_t longest = 4;
    const std::size_t digits = at - first;
    if (digits == 0 || digits > longest) return {-1, digits};
    return {number_of(s.substr(first, digits)), digits};
}

int full_year(Found year) {
    if (year.number < 0 || year.digits > 2) return year.number;
    const int epoch = set_epoch();
    const int same_century = epoch - epoch % 100 + year.number;
    return same_century < epoch ? same_century + 100 : same_century;
}

Value part_shown(const Value& d, char letter, Subcode subcode, std::string_view operation,
                 std::uint8_t columns) {
    if (!d.is(Kind::date)) return argument_error(subcode, operation, {d});
    return {static_cast<double>(part_of(calendar_day(d.date()), letter)), Picture{columns, 0}};
}

}  // namespace

Date date_of(CalendarDay day) {
    using namespace std::chrono;
    if (day.year < 1 || day.year > 9999 || day.month < 1 || day.month > 12 || day.day < 1 || day.day > 31)
        return {};
    const year_month_day made{std::chrono::year{day.year},
                              std::chrono::month{static_cast<unsigned>(day.month)},
                              std::chrono::day{static_cast<unsigned>(day.day)}};
    if (!made.ok()) return {};
    return {static_cast<std::int32_t>(sys_days(made).time_since_epoch().count() + epoch_day)};
}

CalendarDay calendar_day(Date date) {
    using namespace std::chrono;
    if (date.day < first_day || date.day > last_day) return {};
    const year_month_day found{sys_days{days{date.day - epoch_day}}};
    return {static_cast<int>(found.year()), static_cast<int>(static_cast<unsigned>(found.month())),
            static_cast<int>(static_cast<unsigned>(found.day()))};
}

Value date() {
    const std::tm now = local_now();
    return date_of({now.tm_year + 1900, now.tm_mon + 1, now.tm_mday});
}

Value time() {
    const std::tm now = local_now();
    return fmt::format("{:02}:{:02}:{:02}", now.tm_hour, now.tm_min, now.tm_sec);
}

Value stod(const Value& s) {
    constexpr std::size_t length = 8;
    if (!s.is(Kind::character)) return Date{};
    const std::string_view text = s.text();
    if (text.size() != length || !std::all_of(text.begin(), text.end(), is_digit)) return Date{};
    return date_of(
        {number_of(text.substr(0, 4)), number_of(text.substr(4, 2)), number_of(text.substr(6, 2))});
}

Value dtos(const Value& d) {
    if (!d.is(Kind::date)) return argument_error(Subcode::dtos, "DTOS", {d});
    const CalendarDay day = calendar_day(d.date());
    if (day.year == 0) return "        ";
    return fmt::format("{:04}{:02}{:02}", day.year, day.month, day.day);
}

Value dtoc(const Value& d) {
    if (!d.is(Kind::date)) return argument_error(Subcode::dtoc, "DTOC", {d});
    const CalendarDay day = calendar_day(d.date());
    const std::string& picture = format();
    std::string shown;
    for (std::size_t at = 0; at < picture.size();) {
        const Piece piece = next_piece(picture, at);
        if (!is_part(piece.letter)) {
            shown += picture[at];
        } else if (day.year == 0) {
            shown.append(piece.size, ' ');
        } else {
            const int number = part_of(day, piece.letter);
            shown += fmt::format("{:0{}}", piece.letter == 'y' && piece.size < 4 ? number % 100 : number,
                                 piece.size);
        }
        at += piece.size;
    }
    return shown;
}

Value ctod(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::ctod, "CTOD", {s});
    const std::string& picture = format();
    CalendarDay day;
    std::size_t at = 0;
    for (std::size_t p = 0; p < picture.size();) {
        const Piece piece = next_piece(picture, p);
        p += piece.size;
        if (!is_part(piece.letter)) continue;
        const Found found = next_number(s.text(), at);
        switch (piece.letter) {
            case 'y':
                day.year = full_year(found);
                break;
            case 'm':
                day.month = found.number;
                break;
            default:
                day.day = found.number;
                break;
        }
    }
    return date_of(day);
}

Value year(const Value& d) { return part_shown(d, 'y', Subcode::year, "YEAR", 5); }
Value month(const Value& d) { return part_shown(d, 'm', Subcode::month, "MONTH", 3); }
Value day(const Value& d) { return part_shown(d, 'd', Subcode::day, "DAY", 3); }

Value set_date_format() { return format(); }

void set_date_format(const Value& picture) { format() = picture.text(); }

}  // namespace zmfb::host
