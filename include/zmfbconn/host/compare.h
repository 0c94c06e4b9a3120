/// Comparisons. C++'s own == is left undefined for values on purpose: say which rule is meant.
///
/// Mixed kinds, and arrays, objects or blocks where the rule has no answer for them, raise an argument error;
/// the comparison is then .T. only if the error handler returned .T.. NIL compares with everything without an
/// error.
#pragma once

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// `a` == `b`: texts byte for byte; arrays and objects by identity.
bool exactly_equal(const Value& a, const Value& b);
/// `a` = `b`: texts by SET EXACT: off (default), "a begins with b"; on, equal but for trailing blanks.
bool equal(const Value& a, const Value& b);
/// `a` != `b`: NOT (`a` = `b`).
bool unequal(const Value& a, const Value& b);
/// `a` < `b`: texts in byte order, equal where = says so; .F. < .T.; the empty date comes first. NIL has no
/// order: it raises.
bool less(const Value& a, const Value& b);
/// `a` <= `b`, in the same order.
bool less_or_equal(const Value& a, const Value& b);
/// `a` > `b`, in the same order.
bool greater(const Value& a, const Value& b);
/// `a` >= `b`, in the same order.
bool greater_or_equal(const Value& a, const Value& b);

/// Whether SET EXACT is on; off at first.
bool set_exact();
/// SET EXACT ON or OFF.
void set_exact(bool on);

}  // namespace zmfb::host

#pragma GCC visibility pop
