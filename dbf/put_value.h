/// The bytes that values have in the fields of a record: value.h the other way round.
///
/// Each function fills the whole field, and answers what of the value it does not keep. Numbers and days of
/// which it keeps nothing leave the field as it is.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "dbf/header.h"
#include "dbf/writer.h"

namespace zmfb::dbf {

/// A number as its digits, without zeros at the front, in units of the last of its decimals.
struct Digits {
    bool negative = false;
    std::string_view digits;
    std::size_t decimals = 0;
};
std::string_view without_zeros(std::string_view digits);

/// Writes a number with so many decimals at the end of `bytes`, rounded half away from zero. The zero in
/// front of the point goes first when there is no room for all.
Loss put_digits(std::span<char> bytes, int decimals, Digits number);

/// Nothing: blanks, or zero bytes where these are numbers. The letter is what a logical has.
void put_nothing(const Header& header, const Field& field, char* record, char logical = ' ');
/// A text or bytes that are no longer than the field, of C with blanks behind it.
void put_filled(const Field& field, char* record, std::string_view bytes);
/// The same of V and Q.
void put_varying(const Header& header, const Field& field, char* record, std::string_view bytes);
/// The letter of a logical, as a text has it; false for another one.
bool put_letter(const Field& field, char* record, std::string_view letter);

/// @{
/// A number of a field of kind number, integer, currency or real.
Loss put_number(const Field& field, char* record, std::int64_t unscaled, int decimals);
Loss put_real(const Field& field, char* record, double value);
/// @}

/// @{
/// A day or a time of a field of kind date or timestamp.
Loss put_day(const Field& field, char* record, Date day);
Loss put_time(const Field& field, char* record, std::chrono::local_time<std::chrono::microseconds> time);
/// @}

/// Where a memo begins; its number has at most ten digits.
void put_memo_block(const Field& field, char* record, std::uint32_t block);

/// Sets a bit among the NULL flags, or takes it away.
void put_bit(const Header& header, int bit, char* record, bool value);

}  // namespace zmfb::dbf
