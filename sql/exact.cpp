#include "sql/exact.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <utility>

#include "sql/blob.h"
#include "sql/convert.h"
#include "sql/row_buffer.h"
#include "zmfbconn/exact.h"

namespace zmfb {

namespace {

ExactQueries* in_force = nullptr;

}  // namespace

ExactQueries::ExactQueries(RowReader* reader) : reader_(reader), before_(std::exchange(in_force, this)) {}

ExactQueries::~ExactQueries() { in_force = before_; }

ExactQueries* ExactQueries::current() { return in_force; }

namespace sql {

using host::Value;

namespace {

constexpr int text_subtype = 1;
constexpr int octets = 1;
constexpr int unicode_fss = 3;
constexpr int utf8 = 4;

// The types of newer engines are not in the headers of older ones.
constexpr std::pair<int, std::string_view> type_names[] = {
    {SQL_ARRAY, "ARRAY"},
    {32748, "TIMESTAMP WITH TIME ZONE"},
    {32750, "TIME WITH TIME ZONE"},
    {32752, "INT128"},
    {32754, "TIMESTAMP WITH TIME ZONE"},
    {32756, "TIME WITH TIME ZONE"},
    {32760, "DECFLOAT(16)"},
    {32762, "DECFLOAT(34)"},
};

bool is_text_blob(const XSQLVAR& column) {
    return type_of(column) == SQL_BLOB && column.sqlsubtype == text_subtype;
}

// A text column keeps its character set in the low byte of the subtype, a text blob in the scale.
int character_set(const XSQLVAR& column) {
    const int type = type_of(column);
    if (type == SQL_TEXT || type == SQL_VARYING) return column.sqlsubtype & 0xFF;
    return is_text_blob(column) ? column.sqlscale & 0xFF : 0;
}

std::string_view letter_of(const XSQLVAR& column) {
    switch (type_of(column)) {
        case SQL_BOOLEAN:
            return "L";
        case SQL_TYPE_DATE:
            return "D";
        case SQL_BLOB:
            return is_text_blob(column) ? "M" : " ";
        default:
            return translate_type(type_of(column));
    }
}

Value hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) fmt::format_to(std::back_inserter(text), "{:02X}", byte & 0xFF);
    return text;
}

Value text_value(const XSQLVAR& column, std::string_view text) {
    if (character_set(column) == octets) return hexadecimal(text);
    if (type_of(column) == SQL_TEXT) text = text.substr(0, text.find_last_not_of(' ') + 1);
    return text;
}

Value varying_value(const XSQLVAR& column) {
    const auto present = std::min<std::size_t>(read_as<std::uint16_t>(column.sqldata), length_of(column));
    return text_value(column, {column.sqldata + sizeof(std::uint16_t), present});
}

// The point goes in among the digits, so that no digit is lost to any arithmetic.
Value scaled_value(std::int64_t number, int scale) {
    const std::uint64_t magnitude =
        number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    const std::string_view sign = number < 0 ? "-" : "";
    const auto decimals = static_cast<std::size_t>(std::max(-scale, 0));
    std::string digits = fmt::format("{:0{}}", magnitude, decimals + 1);
    if (scale > 0 && number != 0) digits.append(static_cast<std::size_t>(scale), '0');
    if (decimals > 0) digits.insert(digits.size() - decimals, 1, '.');
    return fmt::format("{}{}", sign, digits);
}

template <class Real>
Value real_value(Real number) {
    constexpr Real smallest_plain = static_cast<Real>(0.00001), first_with_exponent = static_cast<Real>(1e16);
    const Real size = std::abs(number);
    const bool plain = size == 0 || (size >= smallest_plain && size < first_with_exponent);
    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, number,
                                       plain ? std::chars_format::fixed : std::chars_format::scientific);
    return std::string_view(text, static_cast<std::size_t>(written.ptr - text));
}

Value date_value(ISC_DATE date) {
    const ISC_TIMESTAMP stamp{date, 0};
    std::tm calendar{};
    client().decode_timestamp(&stamp, &calendar);
    return fmt::format("{:04}-{:02}-{:02}", calendar.tm_year + 1900, calendar.tm_mon + 1, calendar.tm_mday);
}

Value time_value(ISC_TIME time) {
    constexpr unsigned second = ISC_TIME_SECONDS_PRECISION, minute = 60 * second, hour = 60 * minute;
    return fmt::format("{:02}:{:02}:{:02}.{:04}", time / hour, time % hour / minute, time % minute / second,
                       time % second);
}

Value other_value(int type) {
    const auto* const known = std::ranges::find(type_names, type, &std::pair<int, std::string_view>::first);
    return known == std::end(type_names) ? fmt::format("<type {}>", type)
                                         : fmt::format("<{}>", known->second);
}

Value exact_value(const XSQLVAR& column) {
    if (is_null(column)) return {};
    const char* const data = column.sqldata;
    switch (type_of(column)) {
        case SQL_TEXT:
            return text_value(column, {data, length_of(column)});
        case SQL_VARYING:
            return varying_value(column);
        case SQL_SHORT:
            return scaled_value(read_as<std::int16_t>(data), column.sqlscale);
        case SQL_LONG:
            return scaled_value(read_as<std::int32_t>(data), column.sqlscale);
        case SQL_INT64:
            return scaled_value(read_as<std::int64_t>(data), column.sqlscale);
        case SQL_FLOAT:
            return real_value(read_as<float>(data));
        case SQL_DOUBLE:
            return real_value(read_as<double>(data));
        case SQL_BOOLEAN:
            return *data != 0 ? "true" : "false";
        case SQL_TYPE_DATE:
            return date_value(read_as<ISC_DATE>(data));
        case SQL_TYPE_TIME:
            return time_value(read_as<ISC_TIME>(data));
        case SQL_TIMESTAMP:
            return convert_timestamp(column);
        default:
            return other_value(type_of(column));
    }
}

}  // namespace

Value exact_header(std::span<const XSQLVAR> columns) {
    Value header = Value::array_of_size(0);
    for (const XSQLVAR& column : columns) {
        const bool is_utf8 = character_set(column) == utf8 || character_set(column) == unicode_fss;
        const int decimals = type_of(column) == SQL_BLOB ? 0 : -column.sqlscale;
        header.push(host::array_of(alias_name(column), letter_of(column), column.sqllen, decimals, is_utf8));
    }
    return header;
}

Status ExactConverter::convert(Value& row) {
    row = Value::array_of_size(columns_.size());
    Value* slot = row.items().data();
    for (const XSQLVAR& column : columns_) {
        if (type_of(column) == SQL_BLOB && !is_null(column)) {
            std::string text;
            Status done =
                describe_blob(transaction_, read_as<ISC_QUAD>(column.sqldata), is_text_blob(column), text);
            if (!done.ok()) return done;
            *slot++ = text;
        } else {
            *slot++ = exact_value(column);
        }
    }
    return {};
}

}  // namespace sql

}  // namespace zmfb
