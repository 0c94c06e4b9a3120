#include "tests/support/dbf_builder.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace zmfb::test {

namespace {

constexpr std::size_t descriptor_size = 32;

void put_number(std::string& bytes, std::size_t offset, std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i)
        bytes[offset + static_cast<std::size_t>(i)] = static_cast<char>(number >> (8 * i));
}

std::string padded(std::string value, char type, int length) {
    const auto width = static_cast<std::size_t>(length);
    value.resize(std::min(value.size(), width));
    const std::string blanks(width - value.size(), ' ');
    return type == 'N' ? blanks + value : value + blanks;
}

}  // namespace

DbfBuilder& DbfBuilder::field(std::string_view name, char type, int length, int decimals) {
    fields_.push_back({std::string(name), type, length, decimals});
    return *this;
}

DbfBuilder& DbfBuilder::record(const std::vector<std::string>& values, char flag) {
    if (values.size() != fields_.size()) throw std::logic_error("a value for each field is wanted");
    std::string bytes(1, flag);
    for (std::size_t i = 0; i < values.size(); ++i)
        bytes += padded(values[i], fields_[i].type, fields_[i].length);
    return raw_record(bytes);
}

DbfBuilder& DbfBuilder::raw_record(std::string_view bytes) {
    records_ += bytes;
    ++written_;
    return *this;
}

DbfBuilder& DbfBuilder::type(int byte) { return type_ = byte, *this; }
DbfBuilder& DbfBuilder::record_count(std::uint32_t count) { return record_count_ = count, *this; }
DbfBuilder& DbfBuilder::header_length(int length) { return header_length_ = length, *this; }
DbfBuilder& DbfBuilder::record_length(int length) { return record_length_ = length, *this; }
DbfBuilder& DbfBuilder::terminator(char byte) { return terminator_ = byte, *this; }
DbfBuilder& DbfBuilder::no_end_mark() { return end_mark_ = false, *this; }
DbfBuilder& DbfBuilder::cut(std::size_t size) { return cut_ = size, *this; }

std::string DbfBuilder::header() const {
    std::string bytes(descriptor_size, '\0');
    int record_length = 1;
    for (const Field& field : fields_) {
        std::string descriptor(descriptor_size, '\0');
        descriptor.replace(0, std::min<std::size_t>(field.name.size(), 11), field.name.substr(0, 11));
        descriptor[11] = field.type;
        descriptor[16] = static_cast<char>(field.length % 256);
        const bool long_text = field.type == 'C' || field.type == 'c';
        descriptor[17] = static_cast<char>(long_text ? field.length / 256 : field.decimals);
        bytes += descriptor;
        record_length += field.length;
    }
    bytes += terminator_;
    const auto length = static_cast<int>(bytes.size());
    bytes[0] = static_cast<char>(type_);
    bytes[1] = 107;
    bytes[2] = 3;
    bytes[3] = 1;
    put_number(bytes, 4, record_count_.value_or(written_), 4);
    put_number(bytes, 8, static_cast<std::uint32_t>(header_length_.value_or(length)), 2);
    put_number(bytes, 10, static_cast<std::uint32_t>(record_length_.value_or(record_length)), 2);
    return bytes;
}

std::string DbfBuilder::bytes() const {
    std::string all = header() + records_;
    if (end_mark_) all += '\x1A';
    return cut_ ? all.substr(0, *cut_) : all;
}

void DbfBuilder::write(const std::string& path) const {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes();
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace zmfb::test
