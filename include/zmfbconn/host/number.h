/// Operations on numbers, their texts and their byte forms.
#pragma once

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// The picture of a computed number: ten columns for the whole part, twenty beyond 9999999999 or below
/// -999999999, and the point and decimals, if any.
Picture computed_picture(double number, int decimals);
/// The picture that the number `n` shows with: its own; for one without, that of a computed number with as
/// many decimals as it takes to show it, up to 15.
Picture shown_picture(const Value& n);

/// STR(n [, length [, decimals]]): right-aligned text. One argument: the columns of shown_picture(). Two: no
/// decimals, rounded half away from zero. A length below 1 counts as 10, decimals below 0 as none; what does
/// not fit becomes asterisks. A length or decimals that is given but no number raises an argument error
/// (1099). Sixteen digits count, those after them show as 0.
Value str(const Value& n);
/// STR(n, length).
Value str(const Value& n, const Value& length);
/// STR(n, length, decimals).
Value str(const Value& n, const Value& length, const Value& decimals);
/// STRZERO(n [, length [, decimals]]): as STR, with zeros for the leading blanks and the sign in the first
/// column.
Value strzero(const Value& n);
/// STRZERO(n, length).
Value strzero(const Value& n, const Value& length);
/// STRZERO(n, length, decimals).
Value strzero(const Value& n, const Value& length, const Value& decimals);
/// VAL(s): the leading number of a text, without exponents; 0 when there is none. Its picture has the columns
/// of the text: as many decimals as characters follow the first point.
Value val(const Value& s);

/// ABS(n).
Value abs(const Value& n);
/// INT(n): cut toward zero, without decimals.
Value integer_part(const Value& n);
/// `a` * `b`; decimals: the sum of both.
Value times(const Value& a, const Value& b);
/// `a` / `b`; decimals: none when whole numbers divide exactly, else SET DECIMALS. Dividing by zero raises a
/// zero-divide error (1340) and gives the number the handler returned, or 0.
Value divide(const Value& a, const Value& b);
/// -`n`.
Value negate(const Value& n);

/// BIN2I(s): signed little-endian 16 bits; missing bytes count as 0; 0 for another kind.
Value bin2i(const Value& s);
/// BIN2L(s): signed little-endian 32 bits; likewise.
Value bin2l(const Value& s);

}  // namespace zmfb::host

#pragma GCC visibility pop
