#include "rdd/raising.h"

#include "host/workarea.h"

namespace zmfb::rdd {

using host::GenCode;
using host::Subcode;

namespace {

struct Codes {
    GenCode gencode;
    Subcode subcode;
};

Codes codes_of(AreaError::Reason reason, const Otherwise& otherwise) {
    using Reason = AreaError::Reason;
    switch (reason) {
        case Reason::closed:
            return {GenCode::no_table, Subcode::area_not_in_use};
        case Reason::no_field:
            return {GenCode::no_variable, Subcode::no_variable};
        case Reason::wrong_type:
            return {GenCode::data_type, Subcode::data_type};
        case Reason::read_only:
            return {GenCode::read_only, Subcode::table_read_only};
        case Reason::not_locked:
            return {GenCode::unlocked, Subcode::record_unlocked};
        case Reason::not_exclusive:
            return {GenCode::shared, Subcode::exclusive_use};
        case Reason::no_order:
            return {GenCode::no_order, Subcode::no_order};
        default:
            return {otherwise.gencode, otherwise.subcode};
    }
}

void raise_text(const char* text, Codes codes, const Otherwise& otherwise) {
    const std::string description = in_program_text(text);
    raise_failure({.gencode = codes.gencode,
                   .subcode = codes.subcode,
                   .description = description,
                   .operation = otherwise.operation,
                   .file = otherwise.table});
}

}  // namespace

void raise_failure(host::TableFailure failure) {
    failure.subsystem = "ZMRDDFIRE";
    host::raise_table_error(failure);
}

void raise_thrown(const AreaError& error, const Otherwise& otherwise) {
    raise_text(error.what(), codes_of(error.reason(), otherwise), otherwise);
}

void raise_thrown(const SqlError& error, const Otherwise& otherwise) {
    raise_text(error.what(), {otherwise.gencode, otherwise.subcode}, otherwise);
}

void raise_in_use(const InUse& in_use, host::TableFailure failure, std::string_view before) {
    const std::string description = std::string(before) + in_program_text(in_use.what());
    host::neterr(true);
    host::neterrholder(holder_text(in_use.holder()));
    failure.description = description;
    failure.candefault = true;
    raise_failure(failure);
}

std::string holder_text(const Holder& holder) { return in_program_text(holder.words()); }

std::string in_program_text(std::string_view utf8) {
    std::string text;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        const auto next = at + 1 < utf8.size() ? static_cast<unsigned char>(utf8[at + 1]) : 0U;
        const bool continues = (byte & 0xC0U) == 0x80U;
        if (continues) continue;
        if (byte < 0x80U) {
            text += utf8[at];
        } else if (byte == 0xC2U || byte == 0xC3U) {
            text += static_cast<char>((byte & 3U) << 6U | (next & 0x3FU));
        } else {
            text += '?';
        }
    }
    return text;
}

}  // namespace zmfb::rdd
