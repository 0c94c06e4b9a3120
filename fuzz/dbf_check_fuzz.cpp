// The look through a DBF file ahead of an import, beside the import's own reader.
#include <algorithm>

#include "dbf/value.h"
#include "fuzz/fuzz.h"
#include "tool/transfer/dbf_check.h"
#include "tool/transfer/dbf_file.h"
#include "transfer/dbf_header.h"
#include "transfer/record_conversion.h"

namespace zmfb::fuzz {
namespace {

void check_beside_import(const tool::DbfFile& file, std::string_view bytes) {
    const auto header = transfer::read_dbf_header(bytes.substr(0, transfer::dbf_header_bytes));
    require(header && header->type == transfer::dbf_plain, "what is taken for a DBF file is imported as one");
    const auto fields =
        transfer::read_dbf_fields(*header, bytes.substr(dbf::prolog_size, header->descriptor_bytes()));
    require(fields && transfer::record_holds_fields(*header, *fields), "its fields are imported");
    require(fields->size() == file.fields.size(), "both find the same fields");
    for (std::size_t i = 0; i < fields->size(); ++i) {
        const auto& one = (*fields)[i];
        const auto& other = file.fields[i];
        require(one.length == other.length && one.type == other.type && one.decimals == other.decimals,
                "both see the same field");
    }
    require(static_cast<std::uint64_t>(header->record_length) == file.record_length, "records of one length");
    require(static_cast<std::uint64_t>(header->start) == file.start, "records begin at one place");
}

}  // namespace
}  // namespace zmfb::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zmfb;
    using namespace zmfb::fuzz;
    be_quiet();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    tool::DbfFile file;
    if (!tool::read_dbf_file(scratch_file("c.dbf", bytes), file).empty()) return 0;
    check_beside_import(file, bytes);
    std::uint64_t bad = 0;
    const auto on_bad = [&bad](const tool::BadValue& value) {
        ++bad;
        require(!value.reason.empty() && value.record > 0, "a bad value has a reason");
        require(tool::shown_bytes(value.bytes).size() >= value.bytes.size(), "its bytes can be shown");
    };
    const auto result =
        tool::check_records(file, {.skip_deleted = false, .on_bad = on_bad, .on_progress = {}});
    require(result.records == file.records && result.bad == bad, "every record is looked at");
    require(result.deleted <= result.records, "no more are deleted than there are");
    for (const auto& field : file.fields) {
        if (field.type != 'D' || field.length != 8) continue;
        const auto begin = std::min<std::uint64_t>(size, file.start + field.offset);
        const std::string_view day = bytes.substr(static_cast<std::size_t>(begin), 8);
        if (day.size() == 8) {
            require(tool::is_date(day) == dbf::read_date(day).ok(), "both know the same days");
        }
    }
    return 0;
}
