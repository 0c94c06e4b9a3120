/// What the runtime's driver makes of DBF files of type 3: its rules, over the layout and bytes of dbf/.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/driver.h"
#include "host/value.h"

namespace zmfb::host {

/// Where the date of the last change stands in the header, and behind it the number of records.
inline constexpr std::size_t dbf_change_position = 1;

/// What a header says: where its records begin, how long they are, how many, and their fields.
struct DbfLayout {
    std::vector<Field> fields;
    std::vector<std::size_t> offsets;  ///< of the fields in a record, behind its deletion mark
    std::uint32_t records = 0;
    std::size_t header_size = 0;
    std::size_t record_size = 0;
};

/// Brings a structure into the form that a DBF file can keep: names of at most ten characters in upper case,
/// D of 8 and L of 1. Returns what is wrong with it when a DBF file cannot have it, else "".
std::string fit_for_dbf(std::vector<Field>& structure);
/// The header of an empty table of that structure, up to and with its closing 0x0D.
std::string dbf_header(std::span<const Field> structure);
/// The seven bytes at dbf_change_position: today, and the number of records.
std::string dbf_change(std::uint32_t records);
/// Reads the header of a file of `file_size` bytes from its beginning. Returns what is wrong with it, else
/// "". A number of records that the file has no room for is brought down to those it has.
std::string read_dbf_header(std::string_view beginning, std::int64_t file_size, DbfLayout& layout);

/// Whether the bytes of a logical mean .T.
bool is_true(std::string_view bytes);
/// The value that a field's bytes mean. A number has the field's width and decimals as its picture.
Value decode_field(const Field& field, std::string_view bytes);
/// A field's value in an empty record.
Value empty_field(const Field& field);

enum class Encoding : std::uint8_t { stored, wrong_kind, too_wide };
/// Writes a value into a field's bytes, which keep what they are unless it is stored.
Encoding encode_field(const Field& field, const Value& value, std::span<char> bytes);
/// The same for the columns of a text file; a logical that is blank or "?" is kept so.
Encoding encode_columns(const Field& field, std::string_view columns, std::span<char> bytes);

}  // namespace zmfb::host
