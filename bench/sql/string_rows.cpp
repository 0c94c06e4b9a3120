#include "bench/sql/string_rows.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace zmfb::bench {

namespace {

constexpr std::size_t longest = 64;

template <class... Format>
std::string number_text(Format... format) {
    char text[longest];
    return {text, std::to_chars(text, text + longest, format...).ptr};
}

// A NUMERIC of two decimals.
std::string hundredths_text(std::int32_t number) {
    const int hundredths = std::abs(number % 100);
    std::string text = number_text(number / 100) + '.';
    text += static_cast<char>('0' + hundredths / 10);
    text += static_cast<char>('0' + hundredths % 10);
    return text;
}

std::string timestamp_text(const ISC_TIMESTAMP& stamp) {
    std::tm calendar{};
    isc_decode_timestamp(&stamp, &calendar);
    char text[longest];
    const std::size_t length = std::strftime(text, longest, "%Y-%m-%d %H:%M:%S.", &calendar);
    std::snprintf(text + length, longest - length, "%04u",
                  static_cast<unsigned>(stamp.timestamp_time % 10000));
    return text;
}

std::string text_of(const XSQLVAR& column) {
    if (is_null(column)) return "NULL";
    switch (column.sqltype & ~1) {
        case SQL_TEXT:
            return {column.sqldata, static_cast<std::size_t>(column.sqllen)};
        case SQL_VARYING:
            return {column.sqldata + sizeof(std::uint16_t), value_at<std::uint16_t>(column)};
        case SQL_SHORT:
            return number_text(value_at<std::int16_t>(column));
        case SQL_LONG:
            return column.sqlscale == 0 ? number_text(value_at<std::int32_t>(column))
                                        : hundredths_text(value_at<std::int32_t>(column));
        case SQL_DOUBLE:
            return number_text(value_at<double>(column), std::chars_format::fixed, 6);
        default:
            return timestamp_text(value_at<ISC_TIMESTAMP>(column));
    }
}

}  // namespace

StringRows read_strings(BareSession& session, const std::string& sql) {
    StringRows rows;
    session.query(sql, read_block, [&rows](std::span<const XSQLVAR> columns) {
        std::vector<std::string>& row = rows.emplace_back();
        row.reserve(columns.size());
        for (const XSQLVAR& column : columns) row.push_back(text_of(column));
    });
    return rows;
}

}  // namespace zmfb::bench
