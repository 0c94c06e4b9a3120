/// The header of a DBF file as the import takes it: by its sizes alone, whatever the file holds. Where things
/// stand in it is in dbf/layout.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "dbf/header.h"
#include "dbf/layout.h"

namespace zmfb::transfer {

inline constexpr std::size_t dbf_header_bytes =
    16;  ///< of the 32 before the descriptors, those that are read
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

/// The fields that `bytes`, the file from byte 32 on, describes; none when a descriptor of `header.fields` is
/// not whole. Their names are ten bytes, zero bytes included.
std::optional<std::vector<dbf::Field>> read_dbf_fields(const DbfHeader& header, std::string_view bytes);

/// Whether the carriage return stands behind the last descriptor in `bytes`, the file from byte 32 on.
bool has_dbf_terminator(const DbfHeader& header, std::string_view bytes);

/// Whether a record of the announced length holds the deletion flag and all fields.
bool record_holds_fields(const DbfHeader& header, std::span<const dbf::Field> fields);

}  // namespace zmfb::transfer
