#include "tool/export/fields.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace zmfb::tool {
namespace {

using dbf::Format;
using dbf::Kind;

// FoxPro's texts are no longer than this; what is longer is a memo.
constexpr std::size_t longest_text = 254;
constexpr std::size_t longest_char = 32765;
constexpr std::size_t widest_number = 20;

void put_text(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.text(place, value.as<std::string_view>());
}

// As queries show it.
void put_shown(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.text(place, value.text().value_or(""));
}

void put_bytes(dbf::Writer& writer, std::size_t place, const Field& value) {
    const Bytes bytes = value.as<Bytes>();
    writer.bytes(place, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void put_number(dbf::Writer& writer, std::size_t place, const Field& value) {
    const auto number = value.as<Decimal>();
    writer.number(place, number.unscaled(), number.decimals());
}

void put_real(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.real(place, value.as<double>());
}

// The fewest digits that mean the same FLOAT: as a double it would have more.
void put_float(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.real(place, std::strtod(value.text().value_or("").c_str(), nullptr));
}

void put_logical(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.logical(place, value.as<bool>());
}

void put_date(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.date(place, value.as<std::chrono::year_month_day>());
}

void put_timestamp(dbf::Writer& writer, std::size_t place, const Field& value) {
    writer.timestamp(place, std::chrono::time_point_cast<std::chrono::microseconds>(value.as<Timestamp>()));
}

struct Wanted {
    const Column& column;
    const Declared& declared;
    Format format;
    std::size_t character_bytes;

    [[nodiscard]] bool is_visual() const { return format == Format::visual_foxpro; }
    [[nodiscard]] std::optional<ExportField> field() const;

  private:
    [[nodiscard]] ExportField made(char type, Kind kind, ExportField::Put put, std::size_t length = 0,
                                   int decimals = 0) const {
        return {.field = {.name = column.name,
                          .type = type,
                          .length = length,
                          .decimals = decimals,
                          .nullable = is_visual() && column.nullable},
                .kind = kind,
                .put = put,
                .loss = {}};
    }
    [[nodiscard]] ExportField memo() const { return made('M', Kind::memo_text, put_text); }
    [[nodiscard]] std::size_t characters() const;
    [[nodiscard]] std::size_t width() const;
    [[nodiscard]] ExportField text() const;
    [[nodiscard]] std::optional<ExportField> memo_bytes() const;
    [[nodiscard]] std::optional<ExportField> bytes() const;
    [[nodiscard]] ExportField shown(std::size_t length) const;
    [[nodiscard]] ExportField number() const;
    [[nodiscard]] ExportField real() const;
    [[nodiscard]] ExportField timestamp() const;
};

// "VARCHAR(30)" has 30, whatever a character takes in the database.
std::size_t Wanted::characters() const {
    const std::size_t bracket = column.type_name.find('(');
    return bracket == std::string::npos ? column.length
                                        : std::strtoul(column.type_name.c_str() + bracket + 1, nullptr, 10);
}

ExportField Wanted::text() const {
    if (declared.logical) return made('L', Kind::logical, put_text);
    // A table of the driver keeps the lengths of its fields, from file to file.
    const std::size_t length =
        std::max<std::size_t>(1, characters() * (declared.of_driver ? 1 : character_bytes));
    const bool is_fixed = column.type_name.starts_with("CHAR");
    const std::size_t longest = format == Format::dbase3 && is_fixed ? longest_char : longest_text;
    if (length > longest) return memo();
    return made(is_visual() && !is_fixed ? 'V' : 'C', Kind::text, put_text, length);
}

std::optional<ExportField> Wanted::memo_bytes() const {
    if (format == Format::dbase3) return std::nullopt;
    ExportField field = made(is_visual() ? 'M' : 'P', Kind::memo_bytes, put_bytes);
    field.field.binary = is_visual();
    return field;
}

std::optional<ExportField> Wanted::bytes() const {
    if (format == Format::dbase3) return shown(2 * column.length);
    if (!is_visual() || column.length > longest_text) return memo_bytes();
    return made('Q', Kind::bytes, put_bytes, column.length);
}

ExportField Wanted::shown(std::size_t length) const {
    ExportField field = length > longest_text ? made('M', Kind::memo_text, put_shown)
                                              : made('C', Kind::text, put_shown, length);
    field.loss = fmt::format("{}, becomes a text", column.type_name);
    return field;
}

// What a number of the storage, or of so many digits, takes with its sign and point.
std::size_t Wanted::width() const {
    const std::size_t most_digits = column.length == 2 ? 5 : column.length == 4 ? 10 : 19;
    const auto decimals = static_cast<std::size_t>(column.decimals);
    const std::size_t digits =
        declared.precision > 0 ? static_cast<std::size_t>(declared.precision) : most_digits;
    if (declared.of_driver && declared.precision > 0) return digits;
    const std::size_t point = decimals > 0 ? 1 : 0;
    return std::min(widest_number, std::max(digits, decimals + 1) + point + 1);
}

ExportField Wanted::number() const {
    constexpr int decimals_of_currency = 4, digits_of_currency = 18;
    const bool is_whole = column.type == SqlType::integer;
    constexpr std::size_t bytes_of_integer = 4;
    if (is_visual() && is_whole && declared.precision == 0 && column.length <= bytes_of_integer)
        return made('I', Kind::integer, put_number);
    const bool is_currency = column.decimals == decimals_of_currency && column.length > bytes_of_integer &&
                             (declared.precision == 0 || declared.precision == digits_of_currency);
    if (is_visual() && is_currency && (column.nullable || !declared.of_driver))
        return made('Y', Kind::currency, put_number);
    return made('N', Kind::number, put_number, width(), column.decimals);
}

ExportField Wanted::real() const {
    constexpr int decimals = 8;
    if (is_visual()) return made('B', Kind::real, put_real);
    return made('N', Kind::number, column.type_name == "FLOAT" ? put_float : put_real, widest_number,
                decimals);
}

ExportField Wanted::timestamp() const {
    return is_visual() ? made('T', Kind::timestamp, put_timestamp) : made('D', Kind::date, put_timestamp);
}

std::optional<ExportField> Wanted::field() const {
    constexpr std::size_t time_width = 13;
    switch (column.type) {
        case SqlType::text:
            return text();
        case SqlType::bytes:
            return bytes();
        case SqlType::integer:
        case SqlType::decimal:
            return number();
        case SqlType::real:
            return real();
        case SqlType::boolean:
            return made('L', Kind::logical, put_logical);
        case SqlType::date:
            return made('D', Kind::date, put_date);
        case SqlType::time:
            return shown(time_width);
        case SqlType::timestamp:
            return timestamp();
        case SqlType::text_blob:
            return memo();
        case SqlType::blob:
            return memo_bytes();
        case SqlType::other:
            break;
    }
    return std::nullopt;
}

}  // namespace

std::optional<ExportField> export_field(const Column& column, const Declared& declared, Format format,
                                        std::size_t character_bytes) {
    return Wanted{column, declared, format, character_bytes}.field();
}

}  // namespace zmfb::tool
