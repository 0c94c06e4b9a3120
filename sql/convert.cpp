#include "sql/convert.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <new>

#include "sql/row_buffer.h"

namespace zmfb::sql {

using host::Value;

namespace {

// The longest text of a number: a double of 309 digits with its sign, point and six decimals.
constexpr std::size_t text_size = 336;

constexpr std::array<char, 200> make_digit_pairs() {
    std::array<char, 200> digits{};
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const std::size_t pair = i / 2;
        digits[i] = static_cast<char>('0' + (i % 2 == 0 ? pair / 10 : pair % 10));
    }
    return digits;
}

// "00" to "99".
constexpr std::array<char, 200> digit_pairs = make_digit_pairs();

// A text being written from its end to its beginning, the order in which a number gives its digits; as printf
// would write it.
class Text {
  public:
    // The text is written into `room`, of text_size bytes.
    explicit Text(char* room) : begin_(room + text_size), end_(begin_) {}

    [[nodiscard]] std::string_view view() const { return {begin_, static_cast<std::size_t>(end_ - begin_)}; }

    void put(char c) { *--begin_ = c; }
    void put(std::string_view text) {
        begin_ -= text.size();
        std::copy(text.begin(), text.end(), begin_);
    }
    // "%02d" of a number below 100.
    void put_pair(std::uint64_t pair) {
        begin_ -= 2;
        std::memcpy(begin_, &digit_pairs[2 * static_cast<std::size_t>(pair)], 2);
    }
    // "%u"
    void put_digits(std::uint64_t number) {
        for (; number >= 100; number /= 100) put_pair(number % 100);
        if (number >= 10) {
            put_pair(number);
        } else {
            put_digit(number);
        }
    }
    // "%d"
    void put_number(std::int64_t number) {
        put_digits(size_of(number));
        if (number < 0) put('-');
    }
    // "%0*d": the sign is one of the `width` columns.
    void put_field(std::int64_t number, int width) {
        std::uint64_t left = size_of(number);
        if (number < 0) --width;
        for (; width >= 2; width -= 2, left /= 100) put_pair(left % 100);
        if (width == 1) {
            put_digit(left % 10);
            left /= 10;
        }
        if (left > 0) put_digits(left);
        if (number < 0) put('-');
    }
    // "%f". The usual number is done in whole numbers: its fraction has no bits below 2^-64, so that the
    // fraction times a million, rounded half to even, comes out exact. That takes a third of the time of
    // to_chars.
    void put_six_decimals(double number) {
        constexpr double word = 4294967296.0;
        constexpr std::int64_t million = 1000000;
        const double size = std::fabs(number);
        if (!(size < 1e15)) return put_real(number, std::chars_format::fixed);
        auto whole = static_cast<std::int64_t>(size);
        const double high_word = (size - static_cast<double>(whole)) * word;
        const auto high = static_cast<std::int64_t>(high_word);
        const double low_word = (high_word - static_cast<double>(high)) * word;
        const auto low = static_cast<std::int64_t>(low_word);
        if (low_word != static_cast<double>(low)) return put_real(number, std::chars_format::fixed);
        const auto lower = static_cast<std::uint64_t>(low * million);
        const std::uint64_t upper = static_cast<std::uint64_t>(high * million) + (lower >> 32);
        auto decimals = static_cast<std::int64_t>(upper >> 32);
        const std::uint64_t rest = (upper << 32) | (lower & 0xFFFFFFFF);
        constexpr std::uint64_t half = std::uint64_t{1} << 63;
        if (rest > half || (rest == half && decimals % 2 != 0)) ++decimals;
        if (decimals == million) {
            decimals = 0;
            ++whole;
        }
        put_field(decimals, 6);
        put('.');
        put_number(whole);
        if (std::signbit(number)) put('-');
    }
    // "%f" or, with the general format, "%g"
    void put_real(double number, std::chars_format format) {
        constexpr int precision = 6;
        char text[text_size];
        const char* const end = std::to_chars(text, text + text_size, number, format, precision).ptr;
        begin_ -= end - text;
        std::copy(static_cast<const char*>(text), end, begin_);
    }

  private:
    static std::uint64_t size_of(std::int64_t number) {
        return number < 0 ? -static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    }
    void put_digit(std::uint64_t digit) { put(static_cast<char>('0' + digit)); }

    char* begin_;
    char* end_;
};

std::string_view until_zero(std::string_view text) {
    if (text.empty()) return text;
    const void* const zero = std::memchr(text.data(), 0, text.size());
    return zero == nullptr
               ? text
               : text.substr(0, static_cast<std::size_t>(static_cast<const char*>(zero) - text.data()));
}

std::string_view convert_text(const XSQLVAR& column) {
    return until_zero({column.sqldata, length_of(column)});
}

std::string_view convert_varying(const XSQLVAR& column) {
    const std::size_t declared = length_of(column);
    const std::size_t present = std::min<std::size_t>(read_as<std::uint16_t>(column.sqldata), declared);
    char* const text = column.sqldata + sizeof(std::uint16_t);
    const std::size_t used = until_zero({text, present}).size();
    std::memset(text + used, ' ', declared - used);
    return {text, declared};
}

std::string_view convert_scaled(std::int32_t number, int decimals, Text text) {
    constexpr int most_decimals = 18;
    decimals = std::min(decimals, most_decimals);
    std::int64_t tens = 1;
    for (int i = 0; i < decimals; ++i) tens *= 10;
    text.put_field(number % tens, decimals);
    text.put('.');
    text.put_number(number / tens);
    return text.view();
}

std::string_view convert_whole(std::int32_t number, Text text) {
    text.put_number(number);
    return text.view();
}

std::string_view convert_float(float number, Text text) {
    text.put_real(static_cast<double>(number), std::chars_format::general);
    return text.view();
}

std::string_view convert_double(double number, Text text) {
    text.put_six_decimals(number);
    return text.view();
}

Day day_of(const ISC_TIMESTAMP& stamp) {
    std::tm calendar{};
    client().decode_timestamp(&stamp, &calendar);
    char room[text_size];
    Text text(room);
    text.put(' ');
    text.put_field(calendar.tm_mday, 2);
    text.put('-');
    text.put_field(std::int64_t{calendar.tm_mon} + 1, 2);
    text.put('-');
    text.put_field(std::int64_t{calendar.tm_year} + 1900, 4);
    return {stamp.timestamp_date, std::string(text.view())};
}

std::string_view convert_timestamp(const XSQLVAR& column, Text text, Day& day) {
    constexpr unsigned fractions = 10000;
    const auto stamp = read_as<ISC_TIMESTAMP>(column.sqldata);
    if (day.text.empty() || day.date != stamp.timestamp_date) day = day_of(stamp);
    const unsigned seconds = stamp.timestamp_time / fractions;
    text.put_field(stamp.timestamp_time % fractions, 4);
    text.put('.');
    text.put_pair(seconds % 60);
    text.put(':');
    text.put_pair(seconds / 60 % 60);
    text.put(':');
    text.put_field(seconds / 3600, 2);
    text.put(day.text);
    return text.view();
}

// The text of a column's value, where it was fetched to or in `text`; `last` for a type that is not
// converted.
std::string_view convert_value(const XSQLVAR& column, Text text, Day& day, std::string_view last) {
    if (is_null(column)) return "NULL";
    switch (type_of(column)) {
        case SQL_TEXT:
            return convert_text(column);
        case SQL_VARYING:
            return convert_varying(column);
        case SQL_SHORT:
            return convert_whole(read_as<std::int16_t>(column.sqldata), text);
        case SQL_LONG:
        case SQL_INT64: {
            // Little-endian: the first 32 bits of a BIGINT are its low word.
            const auto number = read_as<std::int32_t>(column.sqldata);
            return column.sqlscale < 0 ? convert_scaled(number, -column.sqlscale, text)
                                       : convert_whole(number, text);
        }
        case SQL_FLOAT:
            return convert_float(read_as<float>(column.sqldata), text);
        case SQL_DOUBLE:
            return convert_double(read_as<double>(column.sqldata), text);
        case SQL_TIMESTAMP:
            return convert_timestamp(column, text, day);
        default:
            return last;
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

RowConverter::RowConverter(std::span<const XSQLVAR> columns)
    : columns_(columns), room_(columns.size() * text_size), texts_(columns.size()) {}

Value RowConverter::convert() {
    std::string_view last = last_ == nullptr ? std::string_view{} : last_->text();
    for (std::size_t i = 0; i < columns_.size(); ++i)
        last = texts_[i] = convert_value(columns_[i], Text(&room_[i * text_size]), day_, last);
    Value row = Value::array_of_texts(texts_);
    if (!columns_.empty()) last_ = &row.items().back();
    return row;
}

}  // namespace zmfb::sql
