/// Texts of programs and of rows.
#pragma once

#include <string>
#include <string_view>

#include "sql/typed/cursor.h"
#include "sql/typed/encoding.h"

namespace zmfb::typed {

/// The bytes of a text in UTF-8. Throws, naming `what` it is, when a character has none.
std::string encoded(std::string_view utf8, const Encoding& encoding, std::string_view what,
                    std::string_view statement);

/// What becomes of a byte that is no character.
enum class OddByte { is_thrown, is_replaced };

/// Appends the UTF-8 of `bytes`. Throws for a byte that is no character, naming `what` it is in, or makes it
/// U+FFFD.
void decode(std::string_view bytes, const Encoding& encoding, std::string_view what, OddByte odd,
            std::string& utf8);

/// The UTF-8 of a text of the current row, where it lies or in the column's room.
std::string_view decoded(Cursor& cursor, std::size_t column, std::string_view bytes,
                         OddByte odd = OddByte::is_thrown);

}  // namespace zmfb::typed
