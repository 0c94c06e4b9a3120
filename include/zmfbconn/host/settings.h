/// SET(number [, value]): runtime settings by number.
#pragma once

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// Reads setting `number`, NIL when it was never set. A `number` that is none raises an argument error
/// (2020).
Value set(const Value& number);
/// Sets it and returns what it was before. 1 is EXACT, 3 DECIMALS, 4 DATE FORMAT, 5 EPOCH: these ignore a
/// value of another kind than theirs. Other numbers are only kept.
Value set(const Value& number, const Value& value);

/// SET DECIMALS: how many decimals a quotient shows, 2 at first.
int set_decimals();
/// Sets it, 0 to 15.
void set_decimals(int decimals);
/// SET EPOCH: the first of the hundred years that a year of two digits is taken from, 1900 at first.
int set_epoch();
/// Sets it, 0 to 9900.
void set_epoch(int year);

}  // namespace zmfb::host

#pragma GCC visibility pop
