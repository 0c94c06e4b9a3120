/// The operators of the language over values.
#pragma once

#include <span>
#include <string_view>

#include "host/value.h"

namespace zmfb::host_test {

using BinaryOperator = host::Value (*)(const host::Value& a, const host::Value& b);

struct OperatorRow {
    std::string_view symbol;
    BinaryOperator apply;
};

/// The binary operators from the loosest to the tightest binding; all of them group from the left. .AND. and
/// .OR. are not among them.
std::span<const std::span<const OperatorRow>> binary_operators();

/// NOT `x`, and the truth of an operand of .AND., .OR., IF(): another kind than logical raises an argument
/// error.
host::Value logical_not(const host::Value& x);
bool truth(const host::Value& x, std::string_view operation);

/// The element of array `a` at `index`; raises.
host::Value& element(const host::Value& a, const host::Value& index);

}  // namespace zmfb::host_test
