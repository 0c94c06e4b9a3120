#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

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

char upper(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

Sizes read_sizes(std::string_view beginning) {
    return {.first_byte = byte_at(beginning, 0),
            .records = static_cast<std::uint32_t>(little_endian(beginning, 4, 4)),
            .header = static_cast<std::uint16_t>(little_endian(beginning, 8, 2)),
            .record = static_cast<std::uint16_t>(little_endian(beginning, 10, 2))};
}

Descriptor read_descriptor(std::string_view bytes) {
    return {.name = bytes.substr(0, name_size),
            .type = upper(bytes[type_at]),
            .length = byte_at(bytes, length_at),
            .decimals = byte_at(bytes, decimals_at),
            .flags = byte_at(bytes, flags_at)};
}

Descriptor with_long_text(Descriptor descriptor) {
    constexpr std::size_t unit = 256;
    if (descriptor.type != 'C') return descriptor;
    descriptor.length += unit * static_cast<std::size_t>(descriptor.decimals);
    descriptor.decimals = 0;
    return descriptor;
}

}  // namespace zmfb::dbf
