/// The descriptions of the fields in a header, in the forms that the dialects have.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "dbf/header.h"

namespace zmfb::dbf {

/// The fields as they are described, before they are held against the records: the length of a text is the
/// one byte, its decimals are kept, and there are no offsets.
struct Described {
    std::vector<Field> fields;  ///< the NULL flags among them, of type 0
    std::size_t end = 0;        ///< of the last description
    bool ended = false;         ///< whether the carriage return stands there
};

/// Reads descriptions in the first `limit` bytes of a file; what ends them may follow.
Described read_descriptions(std::string_view beginning, std::size_t limit, Dialect dialect);

/// What a field of that type, length and flags holds.
Kind kind_of(const Field& field);

/// Names the types that there are none of and lengths that a type cannot have, each in words that follow the
/// file's name.
void add_type_problems(const std::vector<Field>& fields, std::vector<std::string>& problems);

/// In a field's flags.
inline constexpr std::uint8_t may_be_null = 0x02;
inline constexpr std::uint8_t is_binary = 0x04;

/// Gives the fields of a table with NULL flags of so many bytes their bits among them.
void number_null_bits(std::vector<Field>& fields, std::size_t null_flags_size);

}  // namespace zmfb::dbf
