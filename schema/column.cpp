#include "schema/column.h"

#include "conn/raise.h"
#include "conn/statement.h"
#include "host/array.h"
#include "host/compare.h"
#include "host/number.h"
#include "host/text.h"

namespace zmfb::schema {
namespace {

constexpr std::string_view templates[] = {
    "@@FIELDNAME CHAR(@@FIELDLEN) DEFAULT '' NOT NULL",
    "@@FIELDNAME NUMERIC(@@FIELDLEN,@@FIELDDEC) DEFAULT 0 NOT NULL",
    "@@FIELDNAME TIMESTAMP DEFAULT NULL",
    "@@RECNO DOUBLE PRECISION NOT NULL",
    "@@FIELDNAME CHAR(1) DEFAULT 'F' NOT NULL",
    "@@AREAID VARCHAR(@@FIELDLEN) DEFAULT NULL",
};

void refuse(Self& self, const Value& table, const Field& field) {
    call(self, "writelog",
         "[ERROR] FieldType not supported on table creation. Table " + table + " Field: " + field.name +
             " Type " + field.type,
         0);
    conn::raiseerror("FieldType not supported; Field: " + field.name + " Type: " + field.type);
}

}  // namespace

std::string_view column_template(Column column) { return templates[static_cast<std::size_t>(column)]; }

std::optional<Column> column_of_type(const Value& type) {
    if (host::exactly_equal(type, "C")) return Column::character;
    if (host::exactly_equal(type, "N")) return Column::numeric;
    if (host::exactly_equal(type, "D")) return Column::date;
    if (host::exactly_equal(type, "L")) return Column::logical;
    return {};
}

void add_size_placeholders(Placeholders& placeholders, Column column, const Value& len, const Value& dec) {
    const bool numeric = column == Column::numeric;
    if (numeric || column == Column::character) placeholders.add("@@FIELDLEN", len);
    if (numeric) placeholders.add("@@FIELDDEC", dec);
}

std::optional<Objection> objection_to_size(Column column, const Value& len) {
    constexpr int most_digits = 18;
    if (column != Column::numeric || host::val(len).number() <= most_digits) return {};
    return Objection{-842, "Precision must be from 1 to 18"};
}

Value column_description(Column column, const Value& len, const Value& dec) {
    switch (column) {
        case Column::numeric:
            return "NUMERIC(" + len + "," + dec + ")";
        case Column::logical:
            return "LOGICAL";
        default:
            return {};
    }
}

Field field_of(const Value& descriptor) {
    return {.name = host::alltrim(host::upper(descriptor[1])),
            .type = host::left(host::alltrim(host::upper(descriptor[2])), 1),
            .len = host::alltrim(host::str(descriptor[3])),
            .dec = host::alltrim(host::str(descriptor[4]))};
}

bool add_columns(Self& self, Placeholders& placeholders, const Value& table, const Value& structure) {
    bool all_fit = true;
    for (const Value& descriptor : structure.items()) {
        const Field field = field_of(descriptor);
        const auto column = column_of_type(field.type);
        if (!column) {
            refuse(self, table, field);
            all_fit = false;
            continue;
        }
        placeholders.add("@@FIELDS", column_template(*column) + Value(",@@FIELDS"));
        placeholders.add("@@FIELDNAME", field.name);
        add_size_placeholders(placeholders, *column, field.len, field.dec);
    }
    return all_fit;
}

}  // namespace zmfb::schema
