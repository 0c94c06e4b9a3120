/// The header of a DBF file: sizes and field descriptors, taken from its bytes alone.
///
/// Layout, integers little-endian: byte 0 the file type, 4 to 7 the number of records, 8 and 9 the length of
/// the header, 10 and 11 the length of a record with its deletion flag; from byte 32 on a descriptor of 32
/// bytes for each field (0 to 9 the name, 11 the type letter, 16 the length, 17 the decimals), then a
/// carriage return.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::transfer {

inline constexpr std::size_t dbf_header_bytes =
    16;  ///< of the 32 before the descriptors, those that are read
inline constexpr std::int64_t dbf_descriptors_start = 32;
inline constexpr unsigned char dbf_plain = 3;
inline constexpr unsigned char dbf_with_memo = 131;

struct DbfHeader {
    unsigned char type = 0;
    std::int64_t records = 0;
    std::int64_t start = 0;  ///< length of the header, which is where the first record begins
    /// As the records are read: an announced length of 32768 and more counts one byte less.
    std::int64_t record_length = 0;
    std::int64_t announced_record_length = 0;
    std::int64_t fields = 0;  ///< -1 or 0 for a header too short to hold a descriptor

    /// The size that the file should have.
    [[nodiscard]] std::int64_t file_size() const { return start + records * record_length; }
    /// How many bytes the descriptors take with the carriage return behind them; 0 without fields below 0.
    [[nodiscard]] std::size_t descriptor_bytes() const;
};

/// The sizes in the first 16 bytes of a file; none when `bytes` has fewer.
std::optional<DbfHeader> read_dbf_header(std::string_view bytes);

struct DbfField {
    std::string name;        ///< the ten bytes of the file, zero bytes included
    char type = 0;           ///< upper case
    std::size_t length = 0;  ///< in bytes
    int decimals = 0;
};

/// The fields that `bytes`, the file from byte 32 on, describes; none when a descriptor of `header.fields` is
/// not whole. A field of type C with decimals is a long one: 256 bytes more for each of them, and no
/// decimals.
std::optional<std::vector<DbfField>> read_dbf_fields(const DbfHeader& header, std::string_view bytes);

/// Whether the carriage return stands behind the last descriptor in `bytes`, the file from byte 32 on.
bool has_dbf_terminator(const DbfHeader& header, std::string_view bytes);

/// Whether a record of the announced length holds the deletion flag and all fields.
bool record_holds_fields(const DbfHeader& header, std::span<const DbfField> fields);

}  // namespace zmfb::transfer
