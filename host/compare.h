/// Comparisons. C++'s own == is left undefined for values on purpose: say which rule is meant.
///
/// Mixed kinds, and arrays, objects or blocks where the rule has no answer for them, raise an argument error;
/// the comparison is then .T. only if the error handler returned .T.. NIL compares with everything without an
/// error.
#pragma once

#include "host/value.h"

namespace zmfb::host {

/// `a` == `b`: texts byte for byte; arrays and objects by identity.
bool exactly_equal(const Value& a, const Value& b);
/// `a` = `b`: texts by SET EXACT: off (default), "a begins with b"; on, equal but for trailing blanks.
bool equal(const Value& a, const Value& b);
/// `a` != `b`: NOT (`a` = `b`).
bool unequal(const Value& a, const Value& b);
/// `a` < `b`: over the length of `b` when SET EXACT is off; .F. < .T.; the empty date comes first.
bool less(const Value& a, const Value& b);

/// SET EXACT.
bool set_exact();
void set_exact(bool on);

}  // namespace zmfb::host
