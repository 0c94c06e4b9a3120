#include "catalog/methods.h"
#include "host/array.h"
#include "host/compare.h"
#include "host/number.h"
#include "host/result.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

// A row of getinternaltablestruct. The sub-type, the null flag and the position stand in it unused.
enum CatalogColumn : std::size_t {
    field_name = 1,
    field_type = 2,
    field_length = 4,
    field_scale = 5,
    field_precision = 7,
};

// The codes of Firebird's column types that the driver maps; every other one is "U".
struct TypeMapping {
    std::string_view firebird;
    std::string_view xbase;
};

constexpr TypeMapping type_mappings[] = {
    {"27", "N"},  // DOUBLE PRECISION
    {"8", "N"},   // INTEGER
    {"7", "N"},   // SMALLINT
    {"10", "N"},  // FLOAT
    {"16", "N"},  // BIGINT
    {"35", "D"},  // TIMESTAMP
    {"14", "C"},  // CHAR
    {"37", "C"},  // VARCHAR
};

std::string_view xbase_type(const Value& firebird, const Value& description) {
    for (const TypeMapping& mapping : type_mappings) {
        if (!host::exactly_equal(firebird, mapping.firebird)) continue;
        const bool is_logical = mapping.xbase == "C" && host::at("LOGICAL", description).number() > 0;
        return is_logical ? "L" : mapping.xbase;
    }
    return "U";
}

// Between the last "(" and the last "," of "NUMERIC(len,dec)".
constexpr std::string_view described_length = ".*\\((.*),.*";

constexpr int length_without_precision = 15;

Value numeric_length(Self& self, const Value& description, const Value& precision) {
    if (host::at("NUMERIC", description).number() > 0)
        return host::val(call(self, "execregex", description, described_length));
    if (host::exactly_equal(precision, "NULL")) return length_without_precision;
    return host::val(precision);
}

}  // namespace

Value getinternaltablestruct(Self& self, Args args) {
    const Value& tbl = args[0];
    return host::array_of_rows(
        call(self, "internalselect",
             "select rf.rdb$field_name, fd.rdb$field_type, fd.rdb$field_sub_type, fd.rdb$field_length, "
             "fd.rdb$field_scale, rf.rdb$null_flag, fd.rdb$field_precision, rf.rdb$field_position from "
             "rdb$relation_fields rf, rdb$fields fd where fd.rdb$field_name = rf.rdb$field_source and "
             "rf.rdb$relation_name = '" +
                 host::upper(tbl) + "' " + "order by rf.rdb$field_position"));
}

Value gettablestruct(Self& self, Args args) {
    const Value& tbl = args[0];
    Value structure = host::array_of();
    const Value columns = call(self, "getinternaltablestruct", tbl);
    for (const Value& row : columns.items()) {
        const Value name = host::alltrim(host::upper(row[field_name]));
        const Value description = host::alltrim(call(self, "getfielddescription", tbl, name)[1]);
        const Value type = xbase_type(row[field_type], description);
        const Value length = host::exactly_equal(type, "N")
                                 ? numeric_length(self, description, row[field_precision])
                                 : host::val(row[field_length]);
        const Value decimals = host::abs(host::val(row[field_scale]));
        host::aadd(structure, host::array_of(name, type, length, decimals));
    }
    return structure;
}

Value iszmrddtable(Self& self, Args args) {
    const Value& tbl = args[0];
    return host::exactly_equal(host::alltrim(call(self, "gettabledescription", tbl)[1]),
                               "Created by ZMRDDFIRE");
}

}  // namespace zmfb::catalog
