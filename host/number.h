/// Operations on numbers, their texts and their byte forms.
#pragma once

#include "host/value.h"

namespace zmfb::host {

/// STR(n [, length [, decimals]]): right-aligned text. One argument: the columns of the number's picture
/// (ten, and its decimals, when it has none). Two: no decimals, rounded half away from zero. A length below 1
/// counts as 10; what does not fit becomes asterisks. A length or decimals that is given but no number raises
/// an argument error (1099).
Value str(const Value& n);
Value str(const Value& n, const Value& length);
Value str(const Value& n, const Value& length, const Value& decimals);
/// STRZERO: as STR, with zeros for the leading blanks and the sign in the first column.
Value strzero(const Value& n);
Value strzero(const Value& n, const Value& length);
Value strzero(const Value& n, const Value& length, const Value& decimals);
/// VAL(s): the leading number of a text, without exponents; 0 when there is none.
Value val(const Value& s);

/// ABS(n), INT(n) (cut toward zero).
Value abs(const Value& n);
Value integer_part(const Value& n);
/// `a` * `b` and `a` / `b`; dividing by zero raises a zero-divide error and gives 0.
Value times(const Value& a, const Value& b);
Value divide(const Value& a, const Value& b);
Value negate(const Value& n);

/// BIN2I(s), BIN2L(s): signed little-endian 16 and 32 bits; missing bytes count as 0; 0 for another kind.
Value bin2i(const Value& s);
Value bin2l(const Value& s);

}  // namespace zmfb::host
