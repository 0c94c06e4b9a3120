#include "catalog/methods.h"
#include "host/array.h"
#include "host/compare.h"
#include "host/number.h"
#include "host/result.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

/// A row of getinternaltablestruct. The sub-type, the null flag and the position stand in it unused.
enum CatalogColumn : std::size_t {
    field_name = 1,
    field_type = 2,
    field_length = 4,
    field_scale = 5,
    field_precision = 7,
};

/// The codes of Firebird's column types that the driver maps; every other one is "U".
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

std::string_view xbase_type(const Value& firebird, const Value& sfielddesc) {
    for (const TypeMapping& mapping : type_mappings) {
        if (!exactly_equal(firebird, mapping.firebird)) continue;
        const bool is_logical = mapping.xbase == "C" && at("LOGICAL", sfielddesc).number() > 0;
        return is_logical ? "L" : mapping.xbase;
    }
    return "U";
}

/// Between the last "(" and the last "," of "NUMERIC(len,dec)".
constexpr std::string_view described_length = ".*\\((.*),.*";

constexpr int length_without_precision = 15;

Value numeric_length(Self& self, const Value& sfielddesc, const Value& sprecision) {
    if (at("NUMERIC", sfielddesc).number() > 0)
        return val(call(self, "execregex", sfielddesc, described_length));
    if (exactly_equal(sprecision, "NULL")) return length_without_precision;
    return val(sprecision);
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
                 upper(tbl) + "' " + "order by rf.rdb$field_position"));
}

Value gettablestruct(Self& self, Args args) {
    const Value& tbl = args[0];
    Value astru = host::array_of();
    const Value arealstru = call(self, "getinternaltablestruct", tbl);
    for (const Value& row : arealstru.items()) {
        const Value sfieldname = alltrim(upper(row[field_name]));
        const Value sfielddesc = alltrim(call(self, "getfielddescription", tbl, sfieldname)[1]);
        const Value sfieldtype = xbase_type(row[field_type], sfielddesc);
        const Value ifieldlen = exactly_equal(sfieldtype, "N")
                                    ? numeric_length(self, sfielddesc, row[field_precision])
                                    : val(row[field_length]);
        const Value ifielddec = abs(val(row[field_scale]));
        aadd(astru, host::array_of(sfieldname, sfieldtype, ifieldlen, ifielddec));
    }
    return astru;
}

Value iszmrddtable(Self& self, Args args) {
    const Value& tbl = args[0];
    return exactly_equal(alltrim(call(self, "gettabledescription", tbl)[1]), "Created by ZMRDDFIRE");
}

}  // namespace zmfb::catalog
