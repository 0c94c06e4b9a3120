/// Values that nobody should pass, each with a name for messages.
#pragma once

#include <string>
#include <vector>

#include "host/value.h"

namespace zmfb::test {

struct HostileValue {
    std::string name;
    host::Value value;
};

/// Texts with quotes, semicolons, zero bytes, percent signs, line ends and the signs of placeholders, empty
/// and long ones; numbers at and beyond the ends of every integer type, NaN and infinities; the other kinds,
/// arrays nested deep and of odd shapes. `longest` is the size of the long texts, `deepest` the depth of the
/// arrays.
std::vector<HostileValue> hostile_values(std::size_t longest, std::size_t deepest);

}  // namespace zmfb::test
