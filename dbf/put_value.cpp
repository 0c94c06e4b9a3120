#include "dbf/put_value.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

namespace zmfb::dbf {
namespace {

constexpr std::int64_t julian_day_of_1970 = 2'440'588;
constexpr int currency_decimals = 4;
// A double keeps so many digits of every number.
constexpr std::size_t digits_of_double = 15;

void put_low_first(char* at, std::size_t size, std::uint64_t number) {
    for (std::size_t i = 0; i < size; ++i) at[i] = static_cast<char>(number >> (8 * i) & 0xFF);
}

// Digits of `number`, with as many decimals: rounded half away from zero in `room` when it has more, and
// then not whole unless only zeros went.
bool round_to(Digits& number, std::size_t decimals, std::string& room) {
    if (number.decimals <= decimals) return true;
    const std::size_t excess = number.decimals - decimals;
    number.decimals = decimals;
    const std::size_t kept = number.digits.size() > excess ? number.digits.size() - excess : 0;
    const std::string_view gone = number.digits.substr(kept);
    const bool whole = gone.find_first_not_of('0') == std::string_view::npos;
    // With fewer digits than are cut off there are zeros in front of them.
    const bool up = gone.size() == excess && !gone.empty() && gone.front() >= '5';
    number.digits = number.digits.substr(0, kept);
    if (!up) return whole;
    room.assign(1, '0');
    room += number.digits;
    std::size_t last = room.size() - 1;
    for (; room[last] == '9'; --last) room[last] = '0';
    ++room[last];
    number.digits = without_zeros(room);
    return whole;
}

// The number in units of the last of so many decimals; none when it is no such integer.
std::optional<std::int64_t> in_units(const Digits& number, int decimals) {
    std::string digits = number.negative ? "-" : "";
    digits += number.digits.empty() ? "0" : number.digits;
    if (!number.digits.empty()) digits.append(static_cast<std::size_t>(decimals) - number.decimals, '0');
    std::int64_t units = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), units);
    return error == std::errc() ? std::optional(units) : std::nullopt;
}

Loss put_whole(const Field& field, char* at, Digits number) {
    const bool is_integer = field.kind == Kind::integer;
    const int decimals = is_integer ? 0 : currency_decimals;
    std::string room;
    const bool whole = round_to(number, static_cast<std::size_t>(decimals), room);
    const auto units = in_units(number, decimals);
    const bool fits = units && (!is_integer || (*units >= std::numeric_limits<std::int32_t>::min() &&
                                                *units <= std::numeric_limits<std::int32_t>::max()));
    if (!fits) return Loss::too_wide;
    put_low_first(at, field.length, static_cast<std::uint64_t>(*units));
    return whole ? Loss::none : Loss::rounded;
}

void put_double(char* at, double value) { put_low_first(at, 8, std::bit_cast<std::uint64_t>(value)); }

Loss put_in_double(char* at, const Digits& number) {
    std::string text = number.negative ? "-" : "";
    text += number.digits.empty() ? "0" : number.digits;
    text += "e-" + std::to_string(number.decimals);
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    put_double(at, value);
    const std::size_t significant = number.digits.find_last_not_of('0') + 1;
    return significant <= digits_of_double ? Loss::none : Loss::rounded;
}

Loss put_any(const Field& field, char* at, const Digits& number) {
    switch (field.kind) {
        case Kind::number:
            return put_digits({at, field.length}, field.decimals, number);
        case Kind::real:
            return put_in_double(at, number);
        default:
            return put_whole(field, at, number);
    }
}

// Days of other years have no digits, or not four of them.
bool has_digits(Date day) {
    return day.ok() && day.year() >= std::chrono::year(1) && day.year() <= std::chrono::year(9999);
}

char* put_two_digits(char* at, unsigned number) {
    *at++ = static_cast<char>('0' + number / 10);
    *at++ = static_cast<char>('0' + number % 10);
    return at;
}

void put_digits_of_day(char* at, Date day) {
    const auto year = static_cast<unsigned>(static_cast<int>(day.year()));
    at = put_two_digits(at, year / 100);
    at = put_two_digits(at, year % 100);
    at = put_two_digits(at, static_cast<unsigned>(day.month()));
    put_two_digits(at, static_cast<unsigned>(day.day()));
}

void put_julian(char* at, Date day, std::chrono::milliseconds time) {
    const auto number = std::chrono::local_days(day).time_since_epoch().count() + julian_day_of_1970;
    put_low_first(at, 4, static_cast<std::uint64_t>(number));
    put_low_first(at + 4, 4, static_cast<std::uint64_t>(time.count()));
}

}  // namespace

std::string_view without_zeros(std::string_view digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

Loss put_digits(std::span<char> bytes, int field_decimals, Digits number) {
    const auto decimals = static_cast<std::size_t>(field_decimals);
    std::string room;
    const bool whole = round_to(number, decimals, room);
    const bool negative = number.negative && !number.digits.empty();
    const std::size_t zeros = number.digits.empty() ? 0 : decimals - number.decimals;
    const std::size_t all = number.digits.size() + zeros;
    const std::size_t in_front = all > decimals ? all - decimals : 0;
    std::size_t size = (negative ? 1U : 0U) + in_front + (decimals > 0 ? decimals + 1 : 0);
    const bool zero_in_front = in_front == 0 && (decimals == 0 || size < bytes.size());
    if (zero_in_front) ++size;
    if (size > bytes.size()) return Loss::too_wide;
    char* at = std::fill_n(bytes.data(), bytes.size() - size, ' ');
    if (negative) *at++ = '-';
    if (zero_in_front) *at++ = '0';
    const std::size_t taken = std::min(in_front, number.digits.size());
    at = std::copy_n(number.digits.data(), taken, at);
    at = std::fill_n(at, in_front - taken, '0');
    if (decimals > 0) {
        *at++ = '.';
        const std::string_view rest = number.digits.substr(taken);
        const std::size_t behind = in_front > 0 ? decimals - rest.size() : zeros;
        at = std::fill_n(at, decimals - rest.size() - behind, '0');
        at = std::copy(rest.begin(), rest.end(), at);
        std::fill_n(at, behind, '0');
    }
    return whole ? Loss::none : Loss::rounded;
}

void put_nothing(const Header& header, const Field& field, char* record, char logical) {
    const bool is_text = field.kind == Kind::text || field.kind == Kind::number || field.kind == Kind::date ||
                         field.kind == Kind::logical || field.length == 10;
    std::memset(record + field.offset, is_text ? ' ' : '\0', field.length);
    if (field.kind == Kind::logical) record[field.offset] = logical;
    if (field.length_bit) put_varying(header, field, record, {});
}

void put_filled(const Field& field, char* record, std::string_view bytes) {
    char* const end = std::copy(bytes.begin(), bytes.end(), record + field.offset);
    std::memset(end, ' ', field.length - bytes.size());
}

// The last byte is the length of what does not fill the field, and a bit says so.
void put_varying(const Header& header, const Field& field, char* record, std::string_view bytes) {
    char* const at = record + field.offset;
    std::copy(bytes.begin(), bytes.end(), at);
    const bool is_shorter = bytes.size() < field.length;
    if (is_shorter) {
        std::memset(at + bytes.size(), field.kind == Kind::text ? ' ' : '\0', field.length - bytes.size());
        at[field.length - 1] = static_cast<char>(bytes.size());
    }
    put_bit(header, *field.length_bit, record, is_shorter);
}

bool put_letter(const Field& field, char* record, std::string_view letter) {
    if (letter.size() > 1 || std::string_view("TtYyFfNn? ").find(letter) == std::string_view::npos)
        return false;
    const char is = letter.empty() ? ' ' : letter.front();
    const bool yes = std::string_view("TtYy").find(is) != std::string_view::npos;
    const bool no = std::string_view("FfNn").find(is) != std::string_view::npos;
    record[field.offset] = yes ? 'T' : no ? 'F' : is;
    return true;
}

Loss put_number(const Field& field, char* record, std::int64_t unscaled, int decimals) {
    std::array<char, 20> room;
    const bool negative = unscaled < 0;
    const auto size =
        negative ? 0 - static_cast<std::uint64_t>(unscaled) : static_cast<std::uint64_t>(unscaled);
    const char* const end = std::to_chars(room.data(), room.data() + room.size(), size).ptr;
    std::string_view digits(room.data(), static_cast<std::size_t>(end - room.data()));
    if (size == 0) digits = {};
    return put_any(field, record + field.offset, {negative, digits, static_cast<std::size_t>(decimals)});
}

Loss put_real(const Field& field, char* record, double value) {
    char* const at = record + field.offset;
    if (!std::isfinite(value)) return Loss::not_a_number;
    if (field.kind == Kind::real) {
        put_double(at, value);
        return Loss::none;
    }
    constexpr std::size_t longest_double = 400;
    std::array<char, longest_double> room;
    const char* const end =
        std::to_chars(room.data(), room.data() + room.size(), value, std::chars_format::fixed).ptr;
    std::string digits(std::string_view(room.data(), static_cast<std::size_t>(end - room.data())));
    const bool negative = digits.front() == '-';
    if (negative) digits.erase(0, 1);
    std::size_t decimals = 0;
    if (const std::size_t point = digits.find('.'); point != std::string::npos) {
        digits.erase(point, 1);
        decimals = digits.size() - point;
    }
    return put_any(field, at, {negative, without_zeros(digits), decimals});
}

Loss put_day(const Field& field, char* record, Date day) {
    char* const at = record + field.offset;
    const bool is_date = field.kind == Kind::date;
    if (!has_digits(day)) return Loss::no_day;
    if (is_date) {
        put_digits_of_day(at, day);
    } else {
        put_julian(at, day, {});
    }
    return Loss::none;
}

Loss put_time(const Field& field, char* record, std::chrono::local_time<std::chrono::microseconds> time) {
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const auto of_day = time - day;
    // Asked of the days: a year of the library is too short for what a time can say.
    constexpr local_days first(year(1) / January / 1);
    constexpr local_days last(year(9999) / December / 31);
    if (day < first || day > last) return put_day(field, record, {});
    if (const Loss loss = put_day(field, record, Date(day)); loss != Loss::none) return loss;
    if (field.kind == Kind::date) return of_day.count() == 0 ? Loss::none : Loss::time_of_day;
    const auto kept = floor<milliseconds>(of_day);
    put_julian(record + field.offset, Date(day), kept);
    return kept == of_day ? Loss::none : Loss::time_of_day;
}

void put_memo_block(const Field& field, char* record, std::uint32_t block) {
    char* const at = record + field.offset;
    if (field.length == 4) return put_low_first(at, field.length, block);
    const std::string digits = std::to_string(block);
    std::memset(at, ' ', field.length);
    std::copy(digits.begin(), digits.end(), at + field.length - digits.size());
}

void put_bit(const Header& header, int bit, char* record, bool value) {
    const unsigned mask = 1U << (bit % 8);
    char& byte = record[*header.null_flags + static_cast<std::size_t>(bit / 8)];
    const unsigned is = static_cast<unsigned char>(byte);
    byte = static_cast<char>(value ? is | mask : is & ~mask);
}

}  // namespace zmfb::dbf
