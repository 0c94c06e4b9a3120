/// Values as texts, for comparing and for messages.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/value.h"

namespace zmfb::test {

/// The value as an xBase literal: NIL, "text", 12.5, .T., {^2007-03-01}, {1, {"A"}}. In texts, bytes outside
/// printable ASCII show as \xNN, and the double quote and the backslash with a backslash in front.
std::string show(const host::Value& value);

/// The data rows of a query result (what executequery returns) as texts, the header left out; values of other
/// kinds as show() has them.
std::vector<std::vector<std::string>> row_texts(const host::Value& result);

}  // namespace zmfb::test

namespace zmfb::host {

/// How GoogleTest prints a value.
void PrintTo(const Value& value, std::ostream* out);

}  // namespace zmfb::host
