/// Looking through the records of a DBF file for values that the engine would refuse.
///
/// One of them makes the engine refuse the whole copy without saying which; here each is named.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "tool/transfer/dbf_file.h"

namespace zmfb::tool {

/// Why the bytes of a numeric field cannot become NUMERIC(length,decimals); "" when they can. Blanks only are
/// the number 0, zero bytes at the end count as blanks. The engine takes a sign, digits with or without a
/// point, and an exponent, and rounds what has more decimals; but all digits together, without the point,
/// have to fit the 32 bits (from a length of 10 on 64) that it computes with.
std::string number_problem(std::string_view bytes, std::size_t length, int decimals);

/// Whether eight bytes are a calendar day, YYYYMMDD.
bool is_date(std::string_view bytes);

/// Bytes in ISO-8859-1 as a person can read them, in UTF-8: what is no printable character, and the
/// backslash, as \xHH.
std::string shown_bytes(std::string_view bytes);

struct BadValue {
    std::uint64_t record;  ///< from 1 on
    const DbfField& field;
    std::string_view bytes;
    std::string reason;
};

struct CheckOptions {
    bool skip_deleted = false;
    /// Takes in each value that would be refused.
    std::function<void(const BadValue&)> on_bad;
    /// Told from time to time how many records have been looked at. May be empty.
    std::function<void(std::uint64_t)> on_progress;
};

struct CheckResult {
    std::uint64_t records = 0;     ///< that would be imported
    std::uint64_t deleted = 0;     ///< of all
    std::uint64_t bad = 0;         ///< values that would be refused
    std::uint64_t lost_dates = 0;  ///< dates, neither blank nor zeros, that are none and would become NULL
    std::uint64_t zero_texts = 0;  ///< texts with a zero byte in them, which stays
};

/// Looks through all records of the file. Throws Failure when it cannot be read.
CheckResult check_records(const DbfFile& file, const CheckOptions& options);

}  // namespace zmfb::tool
