/// SET(number [, value]): runtime settings by number.
#pragma once

#include "host/value.h"

namespace zmfb::host {

/// Reads setting `number` (NIL when it was never set), and sets it when `value` is given. 1 is EXACT, 4 is
/// DATE FORMAT; other numbers are only kept.
Value set(const Value& number);
Value set(const Value& number, const Value& value);

}  // namespace zmfb::host
