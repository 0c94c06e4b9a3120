#include <cstdint>

#include "host/array.h"
#include "host/compare.h"
#include "host/number.h"
#include "host/text.h"
#include "matrix/format.h"
#include "matrix/methods.h"

namespace zmfb::matrix {
namespace {

constexpr std::string_view field_types = "CNDL";

// Element `position` of `array`; one that cannot be a position raises the bound error of element 0.
Value& at_position(const Value& array, const Value& position) {
    const std::int64_t index = position.integer();
    return array[index > 0 && index <= UINT32_MAX ? static_cast<std::size_t>(index) : 0];
}

bool both_reach(const Value& structure1, const Value& structure2, const Value& position) {
    return position.number() <= host::len(structure1).number() &&
           position.number() <= host::len(structure2).number();
}

}  // namespace

Value isvalidfielddescriptor(Self&, Args args) {
    const Value& pieces = args[0];
    return host::len(pieces).number() >= 5 && host::val(pieces[1]).number() > 0 && !host::empty(pieces[2]) &&
           host::contained(host::upper(pieces[3]), field_types) && host::val(pieces[4]).number() > 0;
}

Value isfieldstructuredifferent(Self&, Args args) {
    if (!both_reach(args[0], args[1], args[2])) return true;
    const Value field1 = at_position(args[0], args[2]);
    const Value field2 = at_position(args[1], args[2]);
    return !(host::exactly_equal(field1[1], field2[1]) && host::exactly_equal(field1[2], field2[2]) &&
             host::exactly_equal(field1[3], field2[3]) && host::exactly_equal(field1[4], field2[4]));
}

Value samefieldname(Self&, Args args) {
    if (!both_reach(args[0], args[1], args[2])) return false;
    const Value field1 = at_position(args[0], args[2]);
    const Value field2 = at_position(args[1], args[2]);
    return host::exactly_equal(field1[1], field2[1]);
}

Value hasfieldnamechanged(Self&, Args args) { return !host::exactly_equal(args[0][1], args[1][1]); }

Value isfieldstructurechanged(Self&, Args args) {
    const Value& wanted = args[0];
    const Value same_name = Value::block(
        [&wanted](Args element) { return Value(host::exactly_equal(element[0][1], wanted[1])); });
    const Value found = host::ascan(args[1], same_name);
    if (found.number() <= 0) return false;
    const Value field = at_position(args[1], found);
    return host::unequal(field[2], wanted[2]) || host::unequal(field[3], wanted[3]) ||
           host::unequal(field[4], wanted[4]);
}

Value isfielddropped(Self&, Args args) { return host::exactly_equal(drop_field_words, args[0][1]); }

}  // namespace zmfb::matrix
