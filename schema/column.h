/// The columns of driver tables: how a field descriptor becomes a column definition and a description.
#pragma once

#include <optional>
#include <string_view>

#include "conn/statement.h"

namespace zmfb::schema {

enum class Column { character, numeric, date, record_number, logical, area_identity };

/// The definition of such a column, with its placeholders.
std::string_view column_template(Column column);

/// The kind of column of a field type, compared exactly with "C", "N", "D" and "L"; none for any other.
std::optional<Column> column_of_type(const Value& type);

/// Appends to `placeholders` the pairs of a column's length and decimals, as far as its template has them.
void add_size_placeholders(Placeholders& placeholders, Column column, const Value& len, const Value& dec);

/// Why no column of the driver has this length: a number of more digits than the types that methods read
/// hold. Firebird 3.0 refuses it by itself, in these words.
std::optional<Objection> objection_to_size(Column column, const Value& len);

/// What the description of such a column keeps of the field: "NUMERIC(<len>,<dec>)" or "LOGICAL". NIL: the
/// column has no description.
Value column_description(Column column, const Value& len, const Value& dec);

/// A field descriptor as table definitions take it: the name upper-cased and trimmed, the first letter of the
/// type, the sizes as texts.
struct Field {
    Value name;
    Value type;
    Value len;
    Value dec;
};
Field field_of(const Value& descriptor);

/// Appends to `placeholders` the pairs that put a column for each field of `structure` in place of "@@FIELDS"
/// and leave a fresh ",@@FIELDS" behind the last. Logs (level 0) and raises each field of a type other than
/// C, N, D and L, and goes on; whether there was none.
bool add_columns(Self& self, Placeholders& placeholders, const Value& table, const Value& structure);

}  // namespace zmfb::schema
