/// Where things stand in a header, whatever they mean: what all readers of headers have in common.
///
/// Integers are little-endian. Byte 0 the file type, 1 to 3 the day of the last change, 4 to 7 the number of
/// records, 8 and 9 the length of the header, 10 and 11 the length of a record with its deletion mark, 29 the
/// language. From byte 32 on a descriptor of 32 bytes for each field: 0 to 10 the name, filled up with zero
/// bytes, 11 the type, 16 the length, 17 the decimals, 18 flags; a carriage return behind the last.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zmfb::dbf {

inline constexpr std::size_t prolog_size = 32;
inline constexpr std::size_t descriptor_size = 32;
inline constexpr char end_of_descriptors = '\r';
inline constexpr char end_of_file = 0x1A;
/// What the blocks of a memo file of dBASE IV begin with, which may be among those of dBASE III.
inline constexpr std::string_view dbase4_block("\xFF\xFF\x08\x00", 4);
inline constexpr char record_in_use = ' ';
inline constexpr char record_deleted = '*';

/// Whether a record may begin with that byte.
inline bool is_mark(char byte) { return byte == record_in_use || byte == record_deleted; }

/// An unsigned number in the `size` bytes from `position` on, which `bytes` has to have.
std::uint64_t little_endian(std::string_view bytes, std::size_t position, std::size_t size);
std::uint64_t big_endian(std::string_view bytes, std::size_t position, std::size_t size);

/// Puts the `size` low bytes of a number there, the lowest first.
void put_little_endian(std::string& bytes, std::size_t position, std::size_t size, std::uint64_t number);

/// A letter in upper case; any other byte as it is.
char upper(char letter);

/// The sizes in the first bytes of a file.
struct Sizes {
    std::uint8_t first_byte = 0;
    std::uint32_t records = 0;
    std::uint16_t header = 0;
    std::uint16_t record = 0;
};
inline constexpr std::size_t sizes_size = 12;
/// `beginning` has to have sizes_size bytes.
Sizes read_sizes(std::string_view beginning);
/// The prolog that has these sizes, and zeros for everything else.
std::string make_prolog(const Sizes& sizes);

/// What stands in a descriptor.
struct Descriptor {
    std::string_view name;  ///< eleven bytes
    char type = 0;          ///< upper case
    std::size_t length = 0;
    int decimals = 0;
    std::uint8_t flags = 0;
};
/// `bytes` has to have descriptor_size bytes, and to outlive the descriptor.
Descriptor read_descriptor(std::string_view bytes);
/// Its bytes; the length has to be below 256.
std::string make_descriptor(const Descriptor& descriptor);
/// The length of a text whose decimals count, too: 256 bytes more for each of them.
std::size_t long_text_length(std::size_t length, int decimals);
/// A text field with decimals is a long one, and has no decimals.
Descriptor with_long_text(Descriptor descriptor);

}  // namespace zmfb::dbf
