#include "host/dbf_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "dbf/layout.h"
#include "dbf/new_header.h"
#include "dbf/put_value.h"
#include "host/date.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::host {
namespace {

constexpr std::size_t name_size = 10;
constexpr std::uint8_t plain_table = 3;
constexpr std::uint8_t table_with_memo = 0x83;
constexpr int date_length = 8;

std::string wrong_field(const Field& field, std::string_view what) {
    return fmt::format("field {}: {}", field.name, what);
}

std::string fit_field(Field& field) {
    field.name = upper(field.name.substr(0, name_size)).string();
    if (field.name.empty() || field.name.find('\0') != std::string::npos)
        return wrong_field(field, "no name");
    switch (field.type) {
        case 'C':
            field.decimals = 0;
            break;
        case 'N':
            if (field.length > 255) return wrong_field(field, "longer than 255");
            if (field.decimals > 0 && field.decimals >= field.length)
                return wrong_field(field, "too many decimals");
            break;
        case 'D':
            field.length = date_length;
            field.decimals = 0;
            break;
        case 'L':
            field.length = 1;
            field.decimals = 0;
            break;
        default:
            return wrong_field(field, fmt::format("type {} cannot be kept in a DBF file", field.type));
    }
    return field.length < 1 ? wrong_field(field, "no length") : std::string();
}

// What a descriptor means to the driver; returns what is wrong with it, else "".
std::string read_field(const dbf::Descriptor& descriptor, Field& field) {
    field.name = upper(trim(descriptor.name.substr(0, descriptor.name.find('\0')))).string();
    field.type = descriptor.type;
    field.length = static_cast<int>(descriptor.length);
    field.decimals = descriptor.decimals;
    if (field.length < 1) return wrong_field(field, "no length");
    if (field.type == 'D' && field.length != date_length)
        return wrong_field(field, "a date that is not 8 long");
    if (std::string_view("CNDL").find(field.type) == std::string_view::npos)
        return wrong_field(field, "unknown type");
    return {};
}

dbf::Date today() {
    const CalendarDay day = calendar_day(date().date());
    return std::chrono::year(static_cast<int>(day.year)) / static_cast<int>(day.month) /
           static_cast<int>(day.day);
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The leading number of a text, as VAL() reads it.
Encoding encode_number(const Field& field, std::string_view text, std::span<char> bytes) {
    std::size_t i = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    const bool negative = i < text.size() && text[i] == '-';
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
    std::string digits;
    for (; i < text.size() && is_digit(text[i]); ++i) digits += text[i];
    const std::size_t whole = digits.size();
    if (i < text.size() && text[i] == '.') {
        for (++i; i < text.size() && is_digit(text[i]); ++i) digits += text[i];
    }
    const dbf::Digits number{negative, dbf::without_zeros(digits), digits.size() - whole};
    const dbf::Loss loss = dbf::put_digits(bytes, field.decimals, number);
    return loss == dbf::Loss::too_wide ? Encoding::too_wide : Encoding::stored;
}

Encoding encode_text(std::string_view text, std::span<char> bytes) {
    const std::size_t size = std::min(text.size(), bytes.size());
    std::fill(std::copy_n(text.begin(), size, bytes.begin()), bytes.end(), ' ');
    return Encoding::stored;
}

}  // namespace

bool is_true(std::string_view bytes) {
    return !bytes.empty() && std::string_view("TtYy").find(bytes.front()) != std::string_view::npos;
}

std::string fit_for_dbf(std::vector<Field>& structure) {
    if (structure.empty()) return "a table needs a field";
    std::size_t record_size = 1;
    for (auto field = structure.begin(); field != structure.end(); ++field) {
        if (std::string wrong = fit_field(*field); !wrong.empty()) return wrong;
        const bool twice = std::any_of(structure.begin(), field,
                                       [&](const Field& other) { return other.name == field->name; });
        if (twice) return wrong_field(*field, "another one has this name");
        record_size += static_cast<std::size_t>(field->length);
        if (record_size > std::numeric_limits<std::uint16_t>::max())
            return "a record longer than 65535 bytes";
    }
    constexpr std::size_t most_fields =
        (std::numeric_limits<std::uint16_t>::max() - dbf::prolog_size - 1) / dbf::descriptor_size;
    return structure.size() > most_fields ? "too many fields" : std::string();
}

std::string dbf_header(std::span<const Field> structure) {
    dbf::Header header;
    header.first_byte = plain_table;
    header.start = dbf::prolog_size + dbf::descriptor_size * structure.size() + 1;
    header.record_size = 1;
    for (const Field& field : structure) {
        dbf::Field& made = header.fields.emplace_back();
        made.name = field.name;
        made.type = field.type;
        made.length = static_cast<std::size_t>(field.length);
        made.decimals = field.decimals;
        header.record_size += made.length;
    }
    return dbf::header_bytes(header, today());
}

std::string dbf_change(std::uint32_t records) {
    std::string change = dbf::changed_bytes(today());
    change.resize(7);
    dbf::put_little_endian(change, 3, 4, records);
    return change;
}

std::string read_dbf_header(std::string_view beginning, std::int64_t file_size, DbfLayout& layout) {
    layout = {};
    if (beginning.empty()) return "not a DBF file: it is empty";
    const auto first_byte = static_cast<std::uint8_t>(beginning[0]);
    if (first_byte == table_with_memo) return "a DBF file with memo fields";
    if (first_byte != plain_table || beginning.size() < dbf::prolog_size) return "not a DBF file";
    const dbf::Sizes sizes = dbf::read_sizes(beginning);
    layout.header_size = sizes.header;
    layout.record_size = sizes.record;
    if (layout.header_size > beginning.size() || layout.header_size <= dbf::prolog_size) {
        return "a damaged DBF header: its size cannot be";
    }
    std::size_t offset = 1;
    for (std::size_t at = dbf::prolog_size; at + dbf::descriptor_size <= layout.header_size;
         at += dbf::descriptor_size) {
        if (beginning[at] == dbf::end_of_descriptors) break;
        Field field;
        const std::string_view bytes = beginning.substr(at, dbf::descriptor_size);
        const std::string wrong = read_field(dbf::with_long_text(dbf::read_descriptor(bytes)), field);
        if (!wrong.empty()) return "a damaged DBF header: " + wrong;
        layout.offsets.push_back(offset);
        offset += static_cast<std::size_t>(field.length);
        layout.fields.push_back(std::move(field));
    }
    if (layout.fields.empty()) return "a DBF file without fields";
    if (offset > layout.record_size) return "a damaged DBF header: the fields are longer than a record";
    const std::int64_t room = (file_size - static_cast<std::int64_t>(layout.header_size)) /
                              static_cast<std::int64_t>(layout.record_size);
    layout.records = static_cast<std::uint32_t>(std::min<std::int64_t>(sizes.records, room));
    return {};
}

Value decode_field(const Field& field, std::string_view bytes) {
    switch (field.type) {
        case 'N':
            return {val(bytes).number(),
                    {static_cast<std::uint8_t>(field.length), static_cast<std::uint8_t>(field.decimals)}};
        case 'D':
            return stod(bytes);
        case 'L':
            return is_true(bytes);
        default:
            return bytes;
    }
}

Value empty_field(const Field& field) {
    return decode_field(field, std::string(static_cast<std::size_t>(field.length), ' '));
}

Encoding encode_field(const Field& field, const Value& value, std::span<char> bytes) {
    switch (field.type) {
        case 'C':
            return value.is(Kind::character) ? encode_text(value.text(), bytes) : Encoding::wrong_kind;
        case 'N': {
            if (!value.is(Kind::numeric)) return Encoding::wrong_kind;
            constexpr int roomy = 512;
            const Value text = str(value, roomy, field.decimals);
            return text.text().front() == '*' ? Encoding::too_wide : encode_number(field, text.text(), bytes);
        }
        case 'D':
            return value.is(Kind::date) ? encode_text(dtos(value).string(), bytes) : Encoding::wrong_kind;
        case 'L':
            return value.is(Kind::logical) ? encode_text(value.logical() ? "T" : "F", bytes)
                                           : Encoding::wrong_kind;
        default:
            return Encoding::wrong_kind;
    }
}

Encoding encode_columns(const Field& field, std::string_view columns, std::span<char> bytes) {
    switch (field.type) {
        case 'N':
            return encode_number(field, columns, bytes);
        case 'D':
            return encode_text(dtos(stod(columns)).string(), bytes);
        case 'L':
            if (columns.empty() || columns.front() == ' ' || columns.front() == '?')
                return encode_text(columns, bytes);
            return encode_text(is_true(columns) ? "T" : "F", bytes);
        default:
            return encode_text(columns, bytes);
    }
}

}  // namespace zmfb::host
