#include "transfer/dbf_header.h"

namespace zmfb::transfer {

namespace {

constexpr std::size_t name_size = 10;

// A length with the high bit set is negative as a 16-bit integer and brought back by 65535, not 65536: kept,
// so that such files go on being read with records of one byte less.
std::int64_t corrected_record_length(std::int64_t announced) {
    return announced < 0x8000 ? announced : announced - 0x10000 + 65535;
}

dbf::Field read_field(std::string_view bytes) {
    const dbf::Descriptor descriptor = dbf::with_long_text(dbf::read_descriptor(bytes));
    dbf::Field field;
    field.name = descriptor.name.substr(0, name_size);
    field.type = descriptor.type;
    field.length = descriptor.length;
    field.decimals = descriptor.decimals;
    return field;
}

}  // namespace

std::size_t DbfHeader::descriptor_bytes() const {
    return fields < 0 ? 0 : static_cast<std::size_t>(fields) * dbf::descriptor_size + 1;
}

std::optional<DbfHeader> read_dbf_header(std::string_view bytes) {
    if (bytes.size() < dbf_header_bytes) return std::nullopt;
    const dbf::Sizes sizes = dbf::read_sizes(bytes);
    DbfHeader header;
    header.type = sizes.first_byte;
    header.records = sizes.records;
    header.start = sizes.header;
    header.announced_record_length = sizes.record;
    header.record_length = corrected_record_length(sizes.record);
    constexpr std::int64_t behind = dbf::prolog_size + 1;
    header.fields = (header.start - behind) / std::int64_t{dbf::descriptor_size};
    return header;
}

std::optional<std::vector<dbf::Field>> read_dbf_fields(const DbfHeader& header, std::string_view bytes) {
    const std::size_t count = header.fields < 0 ? 0 : static_cast<std::size_t>(header.fields);
    if (bytes.size() / dbf::descriptor_size < count) return std::nullopt;
    std::vector<dbf::Field> fields;
    fields.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        fields.push_back(read_field(bytes.substr(i * dbf::descriptor_size, dbf::descriptor_size)));
    }
    return fields;
}

bool has_dbf_terminator(const DbfHeader& header, std::string_view bytes) {
    const std::size_t wanted = header.descriptor_bytes();
    return wanted > 0 && bytes.size() >= wanted && bytes[wanted - 1] == dbf::end_of_descriptors;
}

bool record_holds_fields(const DbfHeader& header, std::span<const dbf::Field> fields) {
    std::int64_t needed = 1;
    for (const dbf::Field& field : fields) needed += static_cast<std::int64_t>(field.length);
    return fields.empty() || needed <= header.announced_record_length;
}

}  // namespace zmfb::transfer
