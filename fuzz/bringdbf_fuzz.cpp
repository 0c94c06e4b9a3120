// The reader of DBF headers and the converter of DBF records, on a file of any bytes.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "host/date.h"
#include "host/file.h"
#include "transfer/data_file.h"
#include "transfer/dbf_header.h"
#include "transfer/record_conversion.h"

namespace zmfb::fuzz {
namespace {

using transfer::DbfHeader;

// What a field is to become, said in another way than the conversion says it.
std::string expected_field(const dbf::Field& field, std::string_view record, std::size_t from) {
    const std::string_view there = record.substr(std::min(from, record.size()), field.length);
    std::string bytes(there);
    bytes.resize(field.length, ' ');
    if (field.type == 'D') {
        const Value day = host::stod(there);
        if (field.length != 8 || day.date() == host::Date{}) return std::string(transfer::no_date);
        return bytes.substr(0, 4) + "-" + bytes.substr(4, 2) + "-" + bytes.substr(6, 2);
    }
    if (field.type == 'N') {
        const std::size_t end = bytes.find_last_not_of(std::string_view(" \0", 2)) + 1;
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(end), bytes.end(), ' ');
        if (end == 0 && !bytes.empty()) bytes[0] = '0';
    }
    return bytes;
}

std::string expected_data(const DbfHeader& header, std::span<const dbf::Field> fields,
                          std::string_view file) {
    std::string made;
    const auto length = static_cast<std::size_t>(header.record_length);
    std::string_view rest = file.substr(std::min(file.size(), static_cast<std::size_t>(header.start)));
    for (std::int64_t left = header.records; left > 0 && rest.size() > 1; --left) {
        std::string record(rest.substr(0, length));
        record.resize(length, ' ');
        std::size_t from = 1;
        for (const dbf::Field& field : fields) {
            made += expected_field(field, record, from);
            from += field.length;
        }
        rest.remove_prefix(std::min(length, rest.size()));
    }
    return made;
}

void convert_whole_file(const DbfHeader& header, std::span<const dbf::Field> fields, std::string_view file) {
    const transfer::RecordConversion conversion(fields, static_cast<std::size_t>(header.record_length));
    std::size_t length = 0;
    for (const dbf::Field& field : fields) length += transfer::dat_width(field);
    require(conversion.dat_length() == length, "a data record is as long as its fields");

    const Value dbf = host::fopen(scratch_file("in.dbf", file), 0);
    const std::string target = (scratch_folder() / "out.dat").string();
    const Value dat = host::fcreate(target, 0);
    require(dbf.number() >= 0 && dat.number() >= 0, "the scratch files open");
    host::fseek(dbf, header.start);
    require(transfer::write_data_file(dbf, header.records, conversion, dat).has_value(),
            "the data file is written");
    host::fclose(dbf);
    host::fclose(dat);
    const bool nothing = header.record_length <= 1 || length == 0;
    require(content_of(target) == (nothing ? "" : expected_data(header, fields, file)),
            "the data file has each field as it is to be");
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::string_view file = input.rest();
    const auto header = transfer::read_dbf_header(file.substr(0, transfer::dbf_header_bytes));
    require(header.has_value() == (file.size() >= transfer::dbf_header_bytes), "sixteen bytes make a header");
    if (!header) return;
    require(header->record_length >= 0 && header->records >= 0, "no size is negative");
    const std::string_view descriptors =
        file.substr(std::min<std::size_t>(file.size(), dbf::prolog_size), header->descriptor_bytes());
    const bool terminated = transfer::has_dbf_terminator(*header, descriptors);
    require(!terminated || descriptors.back() == '\r', "a terminator is one");
    const auto fields = transfer::read_dbf_fields(*header, descriptors);
    require(!terminated || fields.has_value(), "descriptors ahead of a terminator are whole");
    if (!fields) return;
    for (const auto& field : *fields) {
        require(field.name.size() == 10, "a name has ten bytes");
        require(field.length <= 255 || field.type == 'C', "only texts are longer than 255");
        require(field.decimals >= 0 && field.decimals <= 255, "decimals are a byte");
    }
    if (transfer::record_holds_fields(*header, *fields)) convert_whole_file(*header, *fields, file);
}
