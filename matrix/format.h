/// The signs by which a matrix is written and read.
#pragma once

#include <string_view>

namespace zmfb::matrix {

/// Opens the block of a table; a file is split into groups at the lines that contain it.
inline constexpr std::string_view table_opener = "Created by ZMRDDFIRE";
/// Between the field as it was extracted and the field as it is wanted; a line without it is no field line.
inline constexpr std::string_view arrow = "=>";
/// Between the table's name and the left descriptor.
inline constexpr std::string_view after_table = ">>";
/// Between the five pieces of a descriptor.
inline constexpr std::string_view between_pieces = "::";

/// In the place of a left descriptor: drop the table.
inline constexpr std::string_view drop_table_words = "DROP TABLE";
/// In the place of a right descriptor: drop the field. Also the name of the descriptor that stands for it.
inline constexpr std::string_view drop_field_words = "DROP FIELD";

}  // namespace zmfb::matrix
