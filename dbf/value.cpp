#include "dbf/value.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

constexpr std::int64_t day_of_milliseconds = 86'400'000;
// Of the first of January of the year 1970.
constexpr std::int64_t julian_day_of_1970 = 2'440'588;
constexpr std::int64_t dbase_day_of_1970 = 719'163;
constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool is_filler(char c) { return c == ' ' || c == '\0'; }

std::string_view without_end(std::string_view bytes) {
    while (!bytes.empty() && is_filler(bytes.back())) bytes.remove_suffix(1);
    return bytes;
}

std::string_view without_filler(std::string_view bytes) {
    bytes = without_end(bytes);
    while (!bytes.empty() && is_filler(bytes.front())) bytes.remove_prefix(1);
    return bytes;
}

bool consists_of(std::string_view bytes, char one) {
    return std::all_of(bytes.begin(), bytes.end(), [one](char c) { return c == one; });
}

// Takes digits away from the front; whether there were any.
bool take_digits(std::string_view& text) {
    const std::size_t size = text.size();
    while (!text.empty() && is_digit(text.front())) text.remove_prefix(1);
    return text.size() < size;
}

void take_sign(std::string_view& text) {
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
}

bool is_number(std::string_view text) {
    take_sign(text);
    bool digits = take_digits(text);
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        digits = take_digits(text) || digits;
    }
    if (digits && !text.empty() && (text.front() == 'e' || text.front() == 'E')) {
        text.remove_prefix(1);
        take_sign(text);
        digits = take_digits(text);
    }
    return digits && text.empty();
}

Value read_number(std::string_view bytes, ValueOptions options) {
    std::string text(without_filler(bytes));
    if (text.empty()) return Blank{};
    if (consists_of(text, '*')) return Bad{"stars: the number was too wide for its field"};
    if (text.find('\0') != std::string::npos) return Bad{"a zero byte in a number"};
    if (options.decimal_comma) std::replace(text.begin(), text.end(), ',', '.');
    if (is_number(text)) return Number{std::move(text)};
    return Bad{"not a number"};
}

Value read_day(std::string_view bytes) {
    const std::string_view text = without_filler(bytes);
    if (text.empty() || consists_of(text, '0')) return Blank{};
    const Date date = read_date(text);
    if (date.ok()) return date;
    return Bad{"not a date"};
}

Value read_logical(std::string_view bytes) {
    const std::string_view text = without_filler(bytes);
    if (text.empty() || text == "?") return Blank{};
    if (text.size() == 1 && std::string_view("TtYy").find(text[0]) != std::string_view::npos) return true;
    if (text.size() == 1 && std::string_view("FfNn").find(text[0]) != std::string_view::npos) return false;
    return Bad{"not a logical"};
}

// dBase 7 writes numbers so that they sort as their bytes do: the high byte first, the sign turned.
bool sorts_as_bytes(const Header& header) { return header.dialect == Dialect::dbase7; }

Value read_integer(const Header& header, std::string_view bytes) {
    constexpr std::uint32_t sign = std::uint32_t{1} << 31;
    const auto number = sorts_as_bytes(header) ? big_endian(bytes, 0, 4) ^ sign : little_endian(bytes, 0, 4);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

Value read_real(const Field& field, std::string_view bytes) {
    std::uint64_t bits = little_endian(bytes, 0, 8);
    if (field.type == 'O') {
        bits = big_endian(bytes, 0, 8);
        bits = (bits & sign_bit) != 0 ? bits ^ sign_bit : ~bits;
    }
    const auto real = std::bit_cast<double>(bits);
    if (!std::isfinite(real)) return Bad{"not a number"};
    return real;
}

// The time so many milliseconds after the beginning of a day counted from 1970.
Value timestamp(std::int64_t day, std::int64_t milliseconds) {
    using namespace std::chrono;
    // Asked of the days: a year of the library is too short for what the bytes can say.
    constexpr local_days first(year(1) / January / 1);
    constexpr local_days last(year(9999) / December / 31);
    const local_days at{days(day)};
    if (at < first || at > last) return Bad{"a time outside the years 1 to 9999"};
    return Timestamp(at + std::chrono::milliseconds(milliseconds));
}

Value read_julian(std::string_view bytes) {
    const auto day = static_cast<std::int32_t>(static_cast<std::uint32_t>(little_endian(bytes, 0, 4)));
    const auto time = static_cast<std::int32_t>(static_cast<std::uint32_t>(little_endian(bytes, 4, 4)));
    // Blanks, and the empty time, whose day is 0.
    if (day == 0 || without_filler(bytes).empty()) return Blank{};
    if (time < 0 || time >= day_of_milliseconds) return Bad{"not a time"};
    return timestamp(day - julian_day_of_1970, time);
}

// As written by some programs, the sign is not turned; no time is below 0.
Value read_dbase7_time(std::string_view bytes) {
    const std::uint64_t bits = big_endian(bytes, 0, 8) & ~sign_bit;
    if (bits == 0 || without_filler(bytes).empty()) return Blank{};
    const auto total = std::bit_cast<double>(bits);
    constexpr double most = 4e14;
    if (!(total < most)) return Bad{"not a time"};
    const std::int64_t milliseconds = std::llround(total);
    return timestamp(milliseconds / day_of_milliseconds - dbase_day_of_1970,
                     milliseconds % day_of_milliseconds);
}

Value read_memo_block(const Header& header, std::string_view bytes) {
    if (bytes.size() == 4) {
        const auto block = static_cast<std::uint32_t>(little_endian(bytes, 0, 4));
        if (block == 0 || consists_of(bytes, ' ')) return Blank{};
        return MemoBlock{block};
    }
    const std::string_view text = without_filler(bytes);
    if (text.empty()) return Blank{};
    if (!std::all_of(text.begin(), text.end(), is_digit)) {
        // SIx: two bytes of the kind, four of the length, four of the block.
        if (header.dialect == Dialect::six && bytes.size() == 10)
            return read_memo_block(header, bytes.substr(6));
        return Bad{"not the number of a memo"};
    }
    std::uint64_t block = 0;
    for (const char digit : text) block = block * 10 + static_cast<std::uint64_t>(digit - '0');
    if (block == 0) return Blank{};
    if (block > 0xFFFFFFFF) return Bad{"not the number of a memo"};
    return MemoBlock{static_cast<std::uint32_t>(block)};
}

bool is_set(const Header& header, std::optional<int> bit, std::string_view record) {
    if (!bit || !header.null_flags) return false;
    const std::size_t at = *header.null_flags + static_cast<std::size_t>(*bit / 8);
    return at < record.size() && (static_cast<unsigned char>(record[at]) >> (*bit % 8) & 1) != 0;
}

// The part of a value of varying length that counts.
std::optional<std::string_view> varying(const Header& header, const Field& field, std::string_view bytes,
                                        std::string_view record) {
    if (!is_set(header, field.length_bit, record) || bytes.empty()) return bytes;
    const std::size_t length = static_cast<unsigned char>(bytes.back());
    if (length >= bytes.size()) return std::nullopt;
    return bytes.substr(0, length);
}

Value read_text(const Header& header, const Field& field, std::string_view bytes, std::string_view record) {
    if (!field.length_bit) return Text{without_end(bytes)};
    const auto text = varying(header, field, bytes, record);
    if (!text) return Bad{"a length beyond the field"};
    return Text{*text};
}

Value read_varying_bytes(const Header& header, const Field& field, std::string_view bytes,
                         std::string_view record) {
    const auto counted = varying(header, field, bytes, record);
    if (!counted) return Bad{"a length beyond the field"};
    return Bytes{*counted};
}

}  // namespace

std::string_view field_bytes(const Field& field, std::string_view record) {
    return record.substr(std::min(field.offset, record.size()), field.length);
}

// Imports ask this of every date there is.
Date read_date(std::string_view digits) {
    using namespace std::chrono;
    if (digits.size() != 8) return {};
    unsigned number = 0;
    for (const char digit : digits) {
        if (!is_digit(digit)) return {};
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    if (number < 10000) return {};
    return {year(static_cast<int>(number / 10000)), month(number / 100 % 100), day(number % 100)};
}

Value read_value(const Header& header, const Field& field, std::string_view record, ValueOptions options) {
    if (is_set(header, field.null_bit, record)) return Null{};
    const std::string_view bytes = field_bytes(field, record);
    if (bytes.size() < field.length) return Bad{"cut off"};
    switch (field.kind) {
        case Kind::bytes:
            return read_varying_bytes(header, field, bytes, record);
        case Kind::number:
            return read_number(bytes, options);
        case Kind::date:
            return read_day(bytes);
        case Kind::logical:
            return read_logical(bytes);
        case Kind::integer:
            return read_integer(header, bytes);
        case Kind::currency:
            return Currency{static_cast<std::int64_t>(little_endian(bytes, 0, 8))};
        case Kind::real:
            return read_real(field, bytes);
        case Kind::timestamp:
            return field.type == '@' ? read_dbase7_time(bytes) : read_julian(bytes);
        case Kind::memo_text:
        case Kind::memo_bytes:
            return read_memo_block(header, bytes);
        default:
            return read_text(header, field, bytes, record);
    }
}

}  // namespace zmfb::dbf
