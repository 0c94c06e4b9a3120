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

DbfBuilder& DbfBuilder::field(std::string_view name, char type, int length, int decimals, int flags) {
    fields_.push_back({std::string(name), type, length, decimals, flags});
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
DbfBuilder& DbfBuilder::language(int byte) { return language_ = byte, *this; }
DbfBuilder& DbfBuilder::record_count(std::uint32_t count) { return record_count_ = count, *this; }
DbfBuilder& DbfBuilder::header_length(int length) { return header_length_ = length, *this; }
DbfBuilder& DbfBuilder::record_length(int length) { return record_length_ = length, *this; }
DbfBuilder& DbfBuilder::terminator(char byte) { return terminator_ = byte, *this; }
DbfBuilder& DbfBuilder::no_terminator() { return terminator_.reset(), *this; }
DbfBuilder& DbfBuilder::no_end_mark() { return end_mark_ = false, *this; }
DbfBuilder& DbfBuilder::cut(std::size_t size) { return cut_ = size, *this; }

bool DbfBuilder::is_type(std::initializer_list<int> bytes) const {
    return std::find(bytes.begin(), bytes.end(), type_) != bytes.end();
}

std::string DbfBuilder::descriptor(const Field& field) const {
    const bool long_text = field.type == 'C' || field.type == 'c';
    const int decimals = long_text ? field.length / 256 : field.decimals;
    const auto made = [&](std::size_t size, std::size_t name, std::size_t type, std::size_t length,
                          std::size_t decimals_at) {
        std::string bytes(size, '\0');
        bytes.replace(0, std::min(field.name.size(), name), field.name.substr(0, name));
        bytes[type] = field.type;
        bytes[length] = static_cast<char>(field.length % 256);
        bytes[decimals_at] = static_cast<char>(decimals);
        return bytes;
    };
    if (is_type({0x02})) return made(16, 11, 11, 12, 15);
    if (is_type({0x04, 0x8C})) return made(48, 32, 32, 33, 34);
    std::string bytes = made(descriptor_size, 11, 11, 16, 17);
    bytes[18] = static_cast<char>(field.flags);
    return bytes;
}

std::string DbfBuilder::header() const {
    const bool second = is_type({0x02});
    std::string bytes(second ? 8 : is_type({0x04, 0x8C}) ? 68 : descriptor_size, '\0');
    int record_length = 1;
    for (const Field& field : fields_) {
        bytes += descriptor(field);
        record_length += field.length;
    }
    if (terminator_) bytes += *terminator_;
    if (is_type({0x30, 0x31, 0x32})) bytes.append(263, '\0');
    const auto length = static_cast<int>(bytes.size());
    const auto announced = static_cast<std::uint32_t>(record_length_.value_or(record_length));
    bytes[0] = static_cast<char>(type_);
    if (second) {
        bytes.resize(521, '\0');
        put_number(bytes, 1, record_count_.value_or(written_), 2);
        put_number(bytes, 6, announced, 2);
        return bytes;
    }
    bytes[1] = 107;
    bytes[2] = 3;
    bytes[3] = 1;
    put_number(bytes, 4, record_count_.value_or(written_), 4);
    put_number(bytes, 8, static_cast<std::uint32_t>(header_length_.value_or(length)), 2);
    put_number(bytes, 10, announced, 2);
    bytes[29] = static_cast<char>(language_);
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

std::string low_first(std::uint64_t number, int size) {
    std::string bytes;
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
    return bytes;
}

std::string high_first(std::uint64_t number, int size) {
    std::string bytes = low_first(number, size);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

}  // namespace zmfb::test
