/// The values of the fields of a record.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "header.h"

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// Nothing was entered: blanks or zero bytes in place of a number, date or logical; no memo; a "?".
struct Blank {
    bool operator==(const Blank&) const = default;  ///< there is only one
};
/// The NULL flag of the field is set.
struct Null {
    bool operator==(const Null&) const = default;  ///< there is only one
};
/// The bytes are no value of the field's type.
struct Bad {
    std::string_view reason;  ///< for a person: "not a number"; lives as long as the program
    bool operator==(const Bad&) const = default;  ///< by the reason
};
/// A text in the file's code page, without blanks and zero bytes at its end.
struct Text {
    std::string_view bytes;                        ///< lives as long as the record
    bool operator==(const Text&) const = default;  ///< byte by byte
};
/// Bytes that are no text.
struct Bytes {
    std::string_view bytes;                         ///< lives as long as the record
    bool operator==(const Bytes&) const = default;  ///< byte by byte
};
/// A number as the file writes it: a sign, digits, a point among them, an exponent.
struct Number {
    std::string text;                                ///< without blanks; with a point for a comma
    bool operator==(const Number&) const = default;  ///< as texts
};
/// An amount of money.
struct Currency {
    std::int64_t ten_thousandths = 0;                  ///< 12.5 is 125000
    bool operator==(const Currency&) const = default;  ///< by the amount
};
/// Where a memo begins; see MemoFile.
struct MemoBlock {
    std::uint32_t block = 0;                            ///< not 0
    bool operator==(const MemoBlock&) const = default;  ///< by the number
};
/// Of the years 1 to 9999.
using Date = std::chrono::year_month_day;
/// Of the years 1 to 9999, of no particular time zone.
using Timestamp = std::chrono::local_time<std::chrono::milliseconds>;

/// What a field holds.
using Value = std::variant<Blank, Null, Bad, Text, Bytes, Number, Date, bool, std::int32_t, Currency, double,
                           Timestamp, MemoBlock>;

/// How values are read.
struct ValueOptions {
    bool decimal_comma = false;  ///< whether a number may have a comma for its point
};

/// The value of a field of `header` in the bytes of a record.
Value read_value(const Header& header, const Field& field, std::string_view record,
                 ValueOptions options = {});

/// The bytes of a field in a record.
std::string_view field_bytes(const Field& field, std::string_view record);

/// The day that eight digits YYYYMMDD are; not ok() when they are none.
Date read_date(std::string_view digits);

}  // namespace zmfb::dbf

#pragma GCC visibility pop
