#include "tool/transfer/dbf_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace zmfb::tool {
namespace {

// Integers little-endian: byte 0 the file type, 4 to 7 the number of records, 8 and 9 the length of the
// header, 10 and 11 that of a record; from 32 on a descriptor of 32 bytes for each field: name, 11 type, 16
// length, 17 decimals.
constexpr std::size_t descriptor_size = 32;
constexpr std::size_t name_size = 10;
constexpr unsigned char plain = 3;
constexpr unsigned char with_memo = 131;

std::size_t number_at(std::string_view bytes, std::size_t offset, std::size_t size) {
    std::size_t number = 0;
    for (std::size_t i = size; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return number;
}

char upper(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

DbfField read_field(std::string_view descriptor) {
    DbfField field;
    const std::string_view name = descriptor.substr(0, name_size);
    field.name = name.substr(0, name.find('\0'));
    std::transform(field.name.begin(), field.name.end(), field.name.begin(), upper);
    field.type = upper(descriptor[11]);
    field.length = static_cast<unsigned char>(descriptor[16]);
    field.decimals = static_cast<unsigned char>(descriptor[17]);
    if (field.type == 'C' && field.decimals > 0) {
        field.length += std::size_t{256} * static_cast<std::size_t>(field.decimals);
        field.decimals = 0;
    }
    return field;
}

std::string read_bytes(std::ifstream& file, std::size_t size) {
    std::string bytes(size, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

std::string type_problem(std::string_view bytes) {
    const int type = bytes.empty() ? -1 : static_cast<unsigned char>(bytes[0]);
    if (type == with_memo) return "is a DBF file with memo fields, which cannot be imported";
    if (type != plain) return "is not a DBF file";
    return bytes.size() < descriptor_size ? "is a DBF file that ends within its header" : "";
}

}  // namespace

std::string read_dbf_file(const std::string& path, DbfFile& file) {
    file = {};
    file.path = path;
    std::error_code problem;
    if (std::filesystem::is_directory(path, problem)) return "is a folder";
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return errno == ENOENT ? "does not exist" : fmt::format("cannot be read: {}", std::strerror(errno));
    const std::uintmax_t size = std::filesystem::file_size(path, problem);
    if (problem) return "is not a file";
    file.header = read_bytes(stream, descriptor_size);
    if (std::string wrong = type_problem(file.header); !wrong.empty()) return wrong;
    file.counted = number_at(file.header, 4, 4);
    file.start = number_at(file.header, 8, 2);
    file.record_length = number_at(file.header, 10, 2);
    if (file.start <= descriptor_size) return "has no fields";
    file.header += read_bytes(stream, static_cast<std::size_t>(file.start) - descriptor_size);
    if (file.header.size() < file.start) return "is a DBF file that ends within its header";
    std::size_t offset = 1;
    for (std::size_t at = descriptor_size; at + descriptor_size <= file.start - 1; at += descriptor_size) {
        file.fields.push_back(read_field(std::string_view(file.header).substr(at, descriptor_size)));
        file.fields.back().offset = offset;
        offset += file.fields.back().length;
    }
    if (file.fields.empty()) return "has no fields";
    if (offset > file.record_length) {
        return fmt::format("has records of {} bytes, but fields of {}", file.record_length, offset);
    }
    // The import reads records of 32768 bytes and more as one byte shorter.
    if (file.record_length >= 0x8000) --file.record_length;
    const std::uint64_t room = size - file.start;
    const std::uint64_t whole = room / file.record_length;
    file.records = std::min(file.counted, whole + (room % file.record_length > 1 ? 1 : 0));
    return {};
}

}  // namespace zmfb::tool
