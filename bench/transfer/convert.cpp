#include <filesystem>
#include <stdexcept>

#include "bench/transfer/commands.h"
#include "host/file.h"
#include "tests/support/process.h"
#include "transfer/data_file.h"
#include "transfer/dbf_header.h"

namespace zmfb::bench {

namespace {

std::string read(const Value& file, std::int64_t offset, std::size_t size) {
    host::fseek(file, offset);
    Value buffer = Value::text_of_size(size);
    host::fread(file, buffer, size);
    return std::string(buffer.text());
}

// As bringdbf does it: header, fields, records.
bool convert(const std::string& dbf, const std::string& data_file) {
    const Value from = host::fopen(dbf, 0);
    const auto header = transfer::read_dbf_header(read(from, 0, transfer::dbf_header_bytes));
    if (!header) return false;
    const auto fields =
        transfer::read_dbf_fields(*header, read(from, dbf::prolog_size, header->descriptor_bytes()));
    if (!fields) return false;
    host::fseek(from, header->start);
    const Value to = host::fcreate(data_file, transfer::data_file_permissions);
    const transfer::RecordConversion conversion(*fields, static_cast<std::size_t>(header->record_length));
    const bool written = transfer::write_data_file(from, header->records, conversion, to).has_value();
    host::fclose(to);
    host::fclose(from);
    return written;
}

json convert_ours(Worker&, const json& request) {
    const std::string dbf = request.at("dbf"), to = request.at("to");
    std::filesystem::remove(to);
    bool done = false;
    const double seconds = seconds_of([&] { done = convert(dbf, to); });
    if (!done) throw std::runtime_error("the conversion fails");
    return {{"seconds", seconds}};
}

json convert_cp(Worker&, const json& request) {
    const std::string dbf = request.at("dbf"), to = request.at("to");
    std::filesystem::remove(to);
    int status = 0;
    const double seconds = seconds_of([&] { status = test::run({"cp", dbf, to}).status; });
    if (status != 0) throw std::runtime_error("cp fails");
    return {{"seconds", seconds}};
}

constexpr Command commands[] = {
    {.name = "convert.ours", .run = convert_ours},
    {.name = "convert.cp", .run = convert_cp},
};

}  // namespace

std::span<const Command> convert_commands() { return commands; }

}  // namespace zmfb::bench
