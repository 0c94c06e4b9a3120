/// Operations on arrays. Arrays are references: an operation changes the array that every holder sees.
#pragma once

#include <cstddef>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// The greatest number of elements that ARRAY makes.
inline constexpr std::size_t max_array_size = std::size_t{1} << 26;

/// ARRAY(n [, m...]): nested arrays of NIL; NIL when a dimension is no number or there is none; a negative
/// one, or more than max_array_size elements in all, raises a bound error (1131).
Value array(const Value& size);
/// ARRAY of several dimensions.
Value array(Args dimensions);
/// AADD(a, x): appends and returns `x`; raises an argument error (1123) when `a` is no array.
Value aadd(const Value& a, const Value& x);
/// ASCAN(a, x [, start [, count]]): index of the first element that is `= x` (SET EXACT matters), or for
/// which the block `x` gives .T.; 0 when none. Never raises for elements of other kinds.
Value ascan(const Value& a, const Value& x, const Value& start = {}, const Value& count = {});
/// ACOPY(source, target [, start [, count [, target_start]]]): copies elements, shallow; `target` never
/// grows. Returns `target`, NIL when either is no array.
Value acopy(const Value& source, const Value& target, const Value& start = {}, const Value& count = {},
            const Value& target_start = {});
/// ACLONE(a): a copy with its nested arrays copied too, one copy for each array however often it occurs; NIL
/// when `a` is no array.
Value aclone(const Value& a);

}  // namespace zmfb::host

#pragma GCC visibility pop
