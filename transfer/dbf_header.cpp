#include "transfer/dbf_header.h"

namespace zmfb::transfer {

namespace {

constexpr std::size_t descriptor_size = 32;
constexpr std::size_t name_size = 10;
constexpr std::size_t type_offset = 11;
constexpr std::size_t length_offset = 16;
constexpr std::size_t decimals_offset = 17;
constexpr char terminator = 13;
constexpr std::int64_t long_length_unit = 256;

std::int64_t little_endian(std::string_view bytes, std::size_t offset, std::size_t size) {
    std::int64_t number = 0;
    for (std::size_t i = size; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return number;
}

char upper(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

// A length with the high bit set is negative as a 16-bit integer and brought back by 65535, not 65536: kept,
// so that such files go on being read with records of one byte less.
std::int64_t corrected_record_length(std::int64_t announced) {
    return announced < 0x8000 ? announced : announced - 0x10000 + 65535;
}

DbfField read_field(std::string_view descriptor) {
    DbfField field;
    field.name = descriptor.substr(0, name_size);
    field.type = upper(descriptor[type_offset]);
    field.length = static_cast<unsigned char>(descriptor[length_offset]);
    field.decimals = static_cast<unsigned char>(descriptor[decimals_offset]);
    if (field.type == 'C' && field.decimals > 0) {
        field.length += static_cast<std::size_t>(long_length_unit * field.decimals);
        field.decimals = 0;
    }
    return field;
}

}  // namespace

std::size_t DbfHeader::descriptor_bytes() const {
    return fields < 0 ? 0 : static_cast<std::size_t>(fields) * descriptor_size + 1;
}

std::optional<DbfHeader> read_dbf_header(std::string_view bytes) {
    if (bytes.size() < dbf_header_bytes) return std::nullopt;
    DbfHeader header;
    header.type = static_cast<unsigned char>(bytes[0]);
    header.records = little_endian(bytes, 4, 4);
    header.start = little_endian(bytes, 8, 2);
    header.announced_record_length = little_endian(bytes, 10, 2);
    header.record_length = corrected_record_length(header.announced_record_length);
    header.fields = (header.start - 1 - dbf_descriptors_start) / static_cast<std::int64_t>(descriptor_size);
    return header;
}

std::optional<std::vector<DbfField>> read_dbf_fields(const DbfHeader& header, std::string_view bytes) {
    const std::size_t count = header.fields < 0 ? 0 : static_cast<std::size_t>(header.fields);
    if (bytes.size() / descriptor_size < count) return std::nullopt;
    std::vector<DbfField> fields;
    fields.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        fields.push_back(read_field(bytes.substr(i * descriptor_size, descriptor_size)));
    }
    return fields;
}

bool has_dbf_terminator(const DbfHeader& header, std::string_view bytes) {
    const std::size_t wanted = header.descriptor_bytes();
    return wanted > 0 && bytes.size() >= wanted && bytes[wanted - 1] == terminator;
}

bool record_holds_fields(const DbfHeader& header, std::span<const DbfField> fields) {
    std::int64_t needed = 1;
    for (const DbfField& field : fields) needed += static_cast<std::int64_t>(field.length);
    return fields.empty() || needed <= header.announced_record_length;
}

}  // namespace zmfb::transfer
