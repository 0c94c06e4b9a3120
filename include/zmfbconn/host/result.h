/// Reading what a query returns: {header, row, row, ...}, and {} when nothing could be run.
#pragma once

#include <algorithm>
#include <span>

#include "value.h"

namespace zmfb::host {

/// The data rows of a result; none for any other value. They live as long as the result.
inline std::span<Value> data_rows(const Value& result) {
    if (!result.is(Kind::array) || result.size() == 0) return {};
    return result.items().subspan(1);
}
std::span<Value> data_rows(const Value&& result) = delete;

/// Whether a result has a data row.
inline bool has_row(const Value& result) { return !data_rows(result).empty(); }

/// The data rows as an array of their own.
inline Value array_of_rows(const Value& result) {
    const std::span<Value> rows = data_rows(result);
    Value array = Value::array_of_size(rows.size());
    std::ranges::copy(rows, array.items().begin());
    return array;
}

}  // namespace zmfb::host
