#include "sql/convert.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>

#include "sql/row_buffer.h"

namespace zmfb::sql {

using host::Value;

namespace {

// The longest text of a number: a double of 309 digits with its sign, point and six decimals.
constexpr std::size_t text_size = 336;

// A text being written, as printf would write it; a few bytes at a time, always within its size.
class Text {
  public:
    [[nodiscard]] std::string_view view() const { return {bytes_, static_cast<std::size_t>(end_ - bytes_)}; }

    void put(char c) { *end_++ = c; }
    /// "%d"
    void put_number(std::int64_t number) { end_ = std::to_chars(end_, bytes_ + text_size, number).ptr; }
    /// "%0*d": the sign is one of the `width` columns.
    void put_padded(std::int64_t number, std::ptrdiff_t width) {
        char digits[24];
        const bool negative = number < 0;
        const char* const last =
            std::to_chars(digits, digits + sizeof digits, negative ? -number : number).ptr;
        if (negative) put('-');
        for (std::ptrdiff_t have = (last - digits) + (negative ? 1 : 0); have < width; ++have) put('0');
        end_ = std::copy(static_cast<const char*>(digits), last, end_);
    }
    /// "%f" or, with the general format, "%g"
    void put_real(double number, std::chars_format format) {
        constexpr int precision = 6;
        end_ = std::to_chars(end_, bytes_ + text_size, number, format, precision).ptr;
    }

  private:
    char bytes_[text_size];
    char* end_ = bytes_;
};

std::string_view until_zero(std::string_view text) {
    if (text.empty()) return text;
    const void* const zero = std::memchr(text.data(), 0, text.size());
    return zero == nullptr
               ? text
               : text.substr(0, static_cast<std::size_t>(static_cast<const char*>(zero) - text.data()));
}

Value convert_text(const XSQLVAR& column) { return until_zero({column.sqldata, length_of(column)}); }

Value convert_varying(const XSQLVAR& column) {
    const std::size_t declared = length_of(column);
    const std::size_t present = std::min<std::size_t>(read_as<std::uint16_t>(column.sqldata), declared);
    char* const text = column.sqldata + sizeof(std::uint16_t);
    const std::size_t used = until_zero({text, present}).size();
    std::memset(text + used, ' ', declared - used);
    return std::string_view(text, declared);
}

Value convert_scaled(std::int32_t number, int decimals) {
    constexpr int most_decimals = 18;
    decimals = std::min(decimals, most_decimals);
    std::int64_t tens = 1;
    for (int i = 0; i < decimals; ++i) tens *= 10;
    Text text;
    text.put_number(number / tens);
    text.put('.');
    text.put_padded(number % tens, decimals);
    return text.view();
}

Value convert_whole(std::int32_t number) {
    Text text;
    text.put_number(number);
    return text.view();
}

Value convert_real(double number, std::chars_format format) {
    Text text;
    text.put_real(number, format);
    return text.view();
}

Value convert_value(const XSQLVAR& column, const Value* last) {
    if (is_null(column)) return "NULL";
    switch (type_of(column)) {
        case SQL_TEXT:
            return convert_text(column);
        case SQL_VARYING:
            return convert_varying(column);
        case SQL_SHORT:
            return convert_whole(read_as<std::int16_t>(column.sqldata));
        case SQL_LONG:
        case SQL_INT64: {
            // Little-endian: the first 32 bits of a BIGINT are its low word.
            const auto number = read_as<std::int32_t>(column.sqldata);
            return column.sqlscale < 0 ? convert_scaled(number, -column.sqlscale) : convert_whole(number);
        }
        case SQL_FLOAT:
            return convert_real(static_cast<double>(read_as<float>(column.sqldata)),
                                std::chars_format::general);
        case SQL_DOUBLE:
            return convert_real(read_as<double>(column.sqldata), std::chars_format::fixed);
        case SQL_TIMESTAMP:
            return convert_timestamp(column);
        default:
            return last == nullptr ? Value("") : *last;
    }
}

}  // namespace

std::string_view translate_type(int type) {
    switch (type) {
        case SQL_VARYING:
        case SQL_TEXT:
            return "C";
        case SQL_DOUBLE:
        case SQL_FLOAT:
        case SQL_LONG:
        case SQL_SHORT:
        case SQL_INT64:
            return "N";
        case SQL_TIMESTAMP:
            return "D";
        default:
            return " ";
    }
}

Value convert_timestamp(const XSQLVAR& column) {
    constexpr unsigned fractions = 10000;
    const auto stamp = read_as<ISC_TIMESTAMP>(column.sqldata);
    std::tm calendar{};
    client().decode_timestamp(&stamp, &calendar);
    Text text;
    text.put_padded(std::int64_t{calendar.tm_year} + 1900, 4);
    text.put('-');
    text.put_padded(std::int64_t{calendar.tm_mon} + 1, 2);
    text.put('-');
    text.put_padded(calendar.tm_mday, 2);
    text.put(' ');
    text.put_padded(calendar.tm_hour, 2);
    text.put(':');
    text.put_padded(calendar.tm_min, 2);
    text.put(':');
    text.put_padded(calendar.tm_sec, 2);
    text.put('.');
    text.put_padded(stamp.timestamp_time % fractions, 4);
    return text.view();
}

Value RowConverter::convert() {
    Value row = Value::array_of_size(columns_.size());
    Value* slot = row.items().data();
    for (const XSQLVAR& column : columns_) {
        *slot = convert_value(column, last_);
        last_ = slot++;
    }
    return row;
}

}  // namespace zmfb::sql
