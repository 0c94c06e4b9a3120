#include "catalog/methods.h"
#include "host/array.h"
#include "host/compare.h"
#include "host/text.h"

namespace zmfb::catalog {
namespace {

constexpr std::string_view record_number = "RECNO";
constexpr std::string_view area_identity = "RDD_AREAID";
constexpr std::string_view index_prefix = "RDDIDX_";
constexpr std::string_view short_index_prefix = "IDX_";
constexpr std::string_view limbo_prefix = "RDDLMB_";

bool has_prefix(const Value& name, std::string_view prefix) {
    return host::exactly_equal(host::left(name, prefix.size()), prefix);
}

bool is_driver_field(const Value& name) {
    return host::exactly_equal(name, record_number) || host::exactly_equal(name, area_identity) ||
           has_prefix(name, index_prefix) || has_prefix(name, short_index_prefix);
}

template <class Predicate>
Value fields_where(const Value& tblstru, Predicate keep) {
    Value fields = host::array_of();
    for (const Value& field : tblstru.items()) {
        if (keep(field[1])) host::aadd(fields, host::array_of(field[1], field[2], field[3], field[4]));
    }
    return fields;
}

// What a field is to the driver's table code.
constexpr int application_field = 0;
constexpr int record_number_field = 1;
constexpr int index_field = 2;
constexpr int area_identity_field = 3;

int field_kind(const Value& name, const Value& type) {
    if (host::exactly_equal(name, record_number) && host::exactly_equal(type, "N"))
        return record_number_field;
    if (host::exactly_equal(name, area_identity) && host::exactly_equal(type, "C"))
        return area_identity_field;
    if (has_prefix(name, index_prefix)) return index_field;
    return application_field;
}

}  // namespace

Value islimbofield(Self&, Args args) { return has_prefix(args[0], limbo_prefix); }

Value isfieldinstru(Self&, Args args) {
    const Value fldname = args[0];
    const Value& tblstru = args[1];
    const Value named_so = Value::block([&fldname](Args field) -> Value {
        return host::exactly_equal(field[0][1], host::alltrim(host::upper(fldname)));
    });
    return host::ascan(tblstru, named_so).number() > 0;
}

Value filterrddfields(Self&, Args args) {
    return fields_where(args[0], [](const Value& name) { return !is_driver_field(name); });
}

// A limbo field is in both selections.
Value filternormalfields(Self&, Args args) {
    return fields_where(
        args[0], [](const Value& name) { return is_driver_field(name) || has_prefix(name, limbo_prefix); });
}

Value setrddfields(Self& self, Args args) {
    const Value& astruct = args[0];
    const Value fields = host::array_of();
    bool has_limbo_field = false;
    for (const Value& field : astruct.items()) {
        const Value name = field[1], type = field[2];
        if (ask(self, "islimbofield", name)) has_limbo_field = true;
        host::aadd(fields, host::array_of(name, type, field[3], field[4], field_kind(name, type)));
    }
    return host::array_of(fields, has_limbo_field);
}

}  // namespace zmfb::catalog
