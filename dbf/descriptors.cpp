#include "dbf/descriptors.h"

#include <fmt/format.h>

#include <algorithm>

#include "dbf/layout.h"

namespace zmfb::dbf {
namespace {

constexpr std::string_view known_types = "CNFDLMGPWIB+YTO@VQ0";

// Name 0 to 10, 11 type, 12 length, 15 decimals.
constexpr std::size_t dbase2_prolog = 8;
constexpr std::size_t dbase2_descriptor = 16;
// Name 0 to 31, 32 type, 33 length, 34 decimals.
constexpr std::size_t dbase7_prolog = 68;
constexpr std::size_t dbase7_descriptor = 48;
constexpr std::size_t dbase7_name = 32;

// Up to a zero byte, behind which anything may stand, without blanks around it.
std::string name_in(std::string_view bytes) {
    bytes = bytes.substr(0, bytes.find('\0'));
    const std::size_t first = std::min(bytes.find_first_not_of(' '), bytes.size());
    return std::string(bytes.substr(first, bytes.find_last_not_of(' ') + 1 - first));
}

int number_in(char byte) { return static_cast<unsigned char>(byte); }

Field field_of(std::string_view name, char type, int length, int decimals) {
    Field field;
    field.name = name_in(name);
    field.type = type;
    field.length = static_cast<std::size_t>(length);
    field.decimals = decimals;
    return field;
}

Field read_description(std::string_view bytes, Dialect dialect) {
    if (dialect == Dialect::dbase2) {
        return field_of(bytes.substr(0, 11), upper(bytes[11]), number_in(bytes[12]), number_in(bytes[15]));
    }
    if (dialect == Dialect::dbase7) {
        return field_of(bytes.substr(0, dbase7_name), upper(bytes[32]), number_in(bytes[33]),
                        number_in(bytes[34]));
    }
    const Descriptor described = read_descriptor(bytes);
    Field field =
        field_of(described.name, described.type, static_cast<int>(described.length), described.decimals);
    if (dialect == Dialect::visual_foxpro) field.flags = described.flags;
    return field;
}

bool is_length_of(Kind kind, std::size_t length) {
    switch (kind) {
        case Kind::date:
            return length == 8 || length == 10;
        case Kind::logical:
            return length >= 1;
        case Kind::integer:
            return length == 4;
        case Kind::currency:
        case Kind::real:
        case Kind::timestamp:
            return length == 8;
        case Kind::memo_text:
        case Kind::memo_bytes:
            return length == 4 || length == 10;
        default:
            return true;
    }
}

std::string shown(char type) {
    const auto byte = static_cast<unsigned char>(type);
    return byte > 0x20 && byte < 0x7F ? fmt::format("\"{}\"", type) : fmt::format("0x{:02X}", byte);
}

}  // namespace

Kind kind_of(const Field& field) {
    switch (field.type) {
        case 'Q':
            return Kind::bytes;
        case 'N':
        case 'F':
            return Kind::number;
        case 'D':
            return Kind::date;
        case 'L':
            return Kind::logical;
        case 'I':
        case '+':
            return Kind::integer;
        case 'Y':
            return Kind::currency;
        case 'O':
            return Kind::real;
        case 'B':
            return field.length == 8 ? Kind::real : Kind::memo_bytes;
        case 'T':
        case '@':
            return Kind::timestamp;
        case 'M':
            return field.binary() ? Kind::memo_bytes : Kind::memo_text;
        case 'G':
        case 'P':
        case 'W':
            return Kind::memo_bytes;
        default:
            return Kind::text;
    }
}

Described read_descriptions(std::string_view beginning, std::size_t limit, Dialect dialect) {
    const bool second = dialect == Dialect::dbase2;
    const bool seventh = dialect == Dialect::dbase7;
    const std::size_t size = second ? dbase2_descriptor : seventh ? dbase7_descriptor : descriptor_size;
    Described found;
    found.end = second ? dbase2_prolog : seventh ? dbase7_prolog : prolog_size;
    for (;; found.end += size) {
        found.ended = found.end < beginning.size() && beginning[found.end] == end_of_descriptors;
        if (found.ended || found.end + size > std::min(limit, beginning.size())) return found;
        Field field = read_description(beginning.substr(found.end, size), dialect);
        // What follows descriptions that nothing ends, such as the name of a database, is zeros mostly.
        if (field.name.empty() && (field.type == '\0' || field.length == 0)) return found;
        field.kind = kind_of(field);
        found.fields.push_back(std::move(field));
    }
}

void add_type_problems(const std::vector<Field>& fields, std::vector<std::string>& problems) {
    const bool none = std::all_of(fields.begin(), fields.end(), [](const Field& f) { return f.type == '0'; });
    if (none) problems.emplace_back("has no fields");
    for (const Field& field : fields) {
        if (known_types.find(field.type) == std::string_view::npos) {
            problems.push_back(
                fmt::format("has a field {} of the unknown type {}", field.name, shown(field.type)));
        } else if (!is_length_of(field.kind, field.length)) {
            problems.push_back(
                fmt::format("has a field {} of type {} with {} bytes", field.name, field.type, field.length));
        }
    }
}

void number_null_bits(std::vector<Field>& fields, std::size_t null_flags_size) {
    const int bits = static_cast<int>(null_flags_size) * 8;
    int next = 0;
    const auto bit = [&]() -> std::optional<int> {
        const int taken = next++;
        return taken < bits ? std::optional(taken) : std::nullopt;
    };
    for (Field& field : fields) {
        if (field.type == 'V' || field.type == 'Q') field.length_bit = bit();
        if ((field.flags & may_be_null) != 0) field.null_bit = bit();
    }
}

}  // namespace zmfb::dbf
