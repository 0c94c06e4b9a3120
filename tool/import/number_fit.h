/// Which texts the engine takes for a number of a column.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// Why the bytes of a numeric field cannot become NUMERIC(length,decimals); "" when they can. Blanks only are
/// the number 0, zero bytes at the end count as blanks. The engine takes a sign, digits with or without a
/// point, and an exponent, and rounds what has more decimals; but all digits together, without the point,
/// have to fit the 32 bits (from a length of 10 on 64) that it computes with. `rounded` is set when digits
/// are lost.
std::string number_problem(std::string_view bytes, std::size_t length, int decimals, bool* rounded = nullptr);

/// Bytes in ISO-8859-1 as a person can read them, in UTF-8: what is no printable character, and the
/// backslash, as \xHH.
std::string shown_bytes(std::string_view bytes);

}  // namespace zmfb::tool
