#include "rdd/table_fields.h"

#include <algorithm>
#include <cmath>

#include "host/date.h"
#include "host/dbf_format.h"
#include "host/number.h"
#include "host/text.h"
#include "zmfbconn/decimal.h"
#include "zmfbconn/methods.h"

namespace zmfb::rdd {

namespace {

using host::Kind;
using host::Value;

constexpr int roomy = 512;  // columns that any number fits in

// What the driver has no type of its own for, by how the database keeps it.
host::Field described(const Column& column) {
    host::Field field{.name = column.name};
    switch (column.type) {
        case SqlType::integer:
        case SqlType::decimal:
            field.type = 'N';
            field.length = 19;
            field.decimals = column.decimals;
            break;
        case SqlType::real:
            field.type = 'N';
            field.length = 15;
            break;
        case SqlType::boolean:
            field.type = 'L';
            field.length = 1;
            break;
        case SqlType::date:
        case SqlType::timestamp:
            field.type = 'D';
            field.length = 8;
            break;
        case SqlType::text_blob:
            field.type = 'M';
            field.length = 10;
            break;
        default:
            field.type = 'C';
    }
    return field;
}

Value padded(std::string_view text, std::size_t length) {
    Value value = Value::text_of_size(std::max(text.size(), length));
    const std::span<char> bytes = value.writable_text();
    std::fill(std::ranges::copy(text, bytes.begin()).out, bytes.end(), ' ');
    return value;
}

Kind kind_of(char type) {
    switch (type) {
        case 'N':
            return Kind::numeric;
        case 'D':
            return Kind::date;
        case 'L':
            return Kind::logical;
        default:
            return Kind::character;
    }
}

}  // namespace

std::vector<TableField> table_fields(zmFBConn connection, const Area& area) {
    constexpr int application_field = 0;
    const Value structure = connection.call("gettablestruct", area.table());
    const Value tagged = connection.call("setrddfields", structure)[1];
    std::vector<TableField> fields;
    for (const Value& row : tagged.items()) {
        if (row[5].integer() != application_field) continue;
        const std::string name = row[1].string();
        const auto column = std::ranges::find(area.fields(), name, &Column::name);
        if (column == area.fields().end()) continue;
        host::Field field = described(*column);
        if (const char type = row[2].string().front(); type != 'U') {
            const auto length = static_cast<int>(row[3].integer());
            field = {.name = name,
                     .type = type,
                     .length = type == 'N' && length == 0 ? field.length : length,
                     .decimals = type == 'N' ? static_cast<int>(row[4].integer()) : 0};
        }
        const auto index = static_cast<std::size_t>(column - area.fields().begin());
        fields.push_back({field, index, column->type == SqlType::real});
    }
    return fields;
}

Value runtime_value(const TableField& column, const Value& read) {
    const host::Field& field = column.field;
    switch (field.type) {
        case 'N':
            return {read.is(Kind::numeric) ? read.number() : 0.0,
                    {static_cast<std::uint8_t>(field.length), static_cast<std::uint8_t>(field.decimals)}};
        case 'D':
            return read.is(Kind::date) ? read : Value(host::Date());
        case 'L':
            return read.is(Kind::character) ? host::is_true(read.text())
                                            : read.is(Kind::logical) && read.logical();
        case 'M':
            return read.is(Kind::character) ? read : Value("");
        default:
            return padded(read.is(Kind::character) ? read.text() : "",
                          static_cast<std::size_t>(field.length));
    }
}

Fit fit(const TableField& column, const Value& value) {
    const host::Field& field = column.field;
    if (!value.is(kind_of(field.type))) return Fit::wrong_kind;
    if (field.type != 'N' || column.is_real) return Fit::fits;
    const Value text = host::str(value, field.length, field.decimals);
    return text.text().starts_with('*') ? Fit::too_wide : Fit::fits;
}

void assign_value(const TableField& column, FieldPlace place, const Value& value) {
    const host::Field& field = column.field;
    if (field.type == 'N' && !column.is_real) {
        // Whole numbers as they are: a text of one has no more digits than a double can be trusted with.
        if (field.decimals == 0) {
            place = static_cast<std::int64_t>(std::llround(value.number()));
        } else {
            place = Decimal(host::alltrim(host::str(value, roomy, field.decimals)).string());
        }
    } else if (field.type == 'C') {
        place = value.text().substr(0, static_cast<std::size_t>(field.length));
    } else {
        place.assign(value);
    }
}

}  // namespace zmfb::rdd
