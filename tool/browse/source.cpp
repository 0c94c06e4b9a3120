#include "tool/browse/source.h"

#include <algorithm>

#include "tool/browse/cell_text.h"
#include "tool/encoding.h"

namespace zmfb::tool::browse {
namespace {

constexpr int widest = 40;
constexpr int memo_width = 20;
constexpr int width_of_day = 10;

int width_of_type(const Column& column) {
    constexpr int real = 18, time_of_day = 13, moment = 24;
    switch (column.type) {
        case SqlType::text:
            return length_of_text(column);
        case SqlType::bytes:
            return 2 * length_of_text(column);
        case SqlType::integer:
        case SqlType::decimal:
            return length_of_number(column);
        case SqlType::real:
            return real;
        case SqlType::boolean:
            return 5;
        case SqlType::date:
            return width_of_day;
        case SqlType::time:
            return time_of_day;
        case SqlType::timestamp:
            return moment;
        case SqlType::text_blob:
        case SqlType::blob:
            return memo_width;
        case SqlType::other:
            break;
    }
    return memo_width;
}

// The driver keeps days as time stamps.
int width_of_field(const Column& column, const FieldDescriptor& field) {
    if (column.type == SqlType::timestamp && field.type == "D") return width_of_day;
    const bool has_length =
        column.type == SqlType::text || column.type == SqlType::integer || column.type == SqlType::decimal;
    if (!has_length || field.length <= 0) return width_of_type(column);
    return static_cast<int>(std::min<std::int64_t>(field.length, widest));
}

}  // namespace

// In the brackets of the type as it is written: VARCHAR(30).
int length_of_text(const Column& column) {
    const std::size_t open = column.type_name.find('(');
    return open == std::string::npos ? widest : std::atoi(column.type_name.c_str() + open + 1);
}

int length_of_number(const Column& column) {
    constexpr int small = 6, whole = 11, large = 20;
    return (column.length <= 2 ? small : column.length <= 4 ? whole : large) + (column.decimals > 0 ? 1 : 0);
}

Cell shortened(Cell value, SqlType type) {
    const auto drop = [&](std::string_view end) {
        if (value->ends_with(end)) value->resize(value->size() - end.size());
    };
    if (!value || (type != SqlType::timestamp && type != SqlType::time)) return value;
    drop(".0000");
    if (type == SqlType::timestamp) drop(" 00:00:00");
    return value;
}

const FieldDescriptor* field_of(const Structure& structure, const Column& column) {
    const auto found = std::ranges::find_if(
        structure, [&](const FieldDescriptor& field) { return to_utf8(field.name) == column.name; });
    return found == structure.end() ? nullptr : &*found;
}

ShownColumn shown_column(const Column& column, const FieldDescriptor* field) {
    const int wanted = field != nullptr ? width_of_field(column, *field) : width_of_type(column);
    constexpr int null = 4;
    const int least = std::max(null, width_of(column.name));
    return {.name = column.name,
            .type = column.type,
            .type_name = column.type_name,
            .width = std::clamp(wanted, std::min(least, widest), widest)};
}

}  // namespace zmfb::tool::browse
