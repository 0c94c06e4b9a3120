#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

constexpr std::size_t records_at = 4;
constexpr std::size_t header_at = 8;
constexpr std::size_t record_at = 10;
constexpr std::size_t name_size = 11;
constexpr std::size_t type_at = 11;
constexpr std::size_t length_at = 16;
constexpr std::size_t decimals_at = 17;
constexpr std::size_t flags_at = 18;

std::uint8_t byte_at(std::string_view bytes, std::size_t position) {
    return static_cast<std::uint8_t>(bytes[position]);
}

}  // namespace

std::uint64_t little_endian(std::string_view bytes, std::size_t position, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = size; i-- > 0;) number = number << 8 | byte_at(bytes, position + i);
    return number;
}

std::uint64_t big_endian(std::string_view bytes, std::size_t position, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size; ++i) number = number << 8 | byte_at(bytes, position + i);
    return number;
}

void put_little_endian(std::string& bytes, std::size_t position, std::size_t size, std::uint64_t number) {
    for (std::size_t i = 0; i < size; ++i) bytes[position + i] = static_cast<char>(number >> (8 * i) & 0xFF);
}

char upper(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

Sizes read_sizes(std::string_view beginning) {
    return {.first_byte = byte_at(beginning, 0),
            .records = static_cast<std::uint32_t>(little_endian(beginning, records_at, 4)),
            .header = static_cast<std::uint16_t>(little_endian(beginning, header_at, 2)),
            .record = static_cast<std::uint16_t>(little_endian(beginning, record_at, 2))};
}

std::string make_prolog(const Sizes& sizes) {
    std::string bytes(prolog_size, '\0');
    bytes[0] = static_cast<char>(sizes.first_byte);
    put_little_endian(bytes, records_at, 4, sizes.records);
    put_little_endian(bytes, header_at, 2, sizes.header);
    put_little_endian(bytes, record_at, 2, sizes.record);
    return bytes;
}

Descriptor read_descriptor(std::string_view bytes) {
    return {.name = bytes.substr(0, name_size),
            .type = upper(bytes[type_at]),
            .length = byte_at(bytes, length_at),
            .decimals = byte_at(bytes, decimals_at),
            .flags = byte_at(bytes, flags_at)};
}

std::string make_descriptor(const Descriptor& descriptor) {
    std::string bytes(descriptor_size, '\0');
    descriptor.name.copy(bytes.data(), name_size);
    bytes[type_at] = descriptor.type;
    bytes[length_at] = static_cast<char>(descriptor.length);
    bytes[decimals_at] = static_cast<char>(descriptor.decimals);
    bytes[flags_at] = static_cast<char>(descriptor.flags);
    return bytes;
}

std::size_t long_text_length(std::size_t length, int decimals) {
    constexpr std::size_t unit = 256;
    return length + unit * static_cast<std::size_t>(decimals);
}

Descriptor with_long_text(Descriptor descriptor) {
    if (descriptor.type != 'C') return descriptor;
    descriptor.length = long_text_length(descriptor.length, descriptor.decimals);
    descriptor.decimals = 0;
    return descriptor;
}

}  // namespace zmfb::dbf
