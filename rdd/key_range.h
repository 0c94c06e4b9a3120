/// Where the keys that a program seeks lie in an order.
#pragma once

#include <string>
#include <string_view>

#include "rdd/order.h"
#include "zmfbconn/sql_value.h"

namespace zmfb::rdd {

/// The keys from `low` to `high`, byte by byte. No row has either of them; where no key is sought `high` is
/// not behind `low`.
struct KeyRange {
    std::string low, high;
    /// Whether a key is one of them.
    [[nodiscard]] bool holds(std::string_view key) const { return low <= key && key <= high; }
};

/// The keys of the records with a value. Of a text they are those that begin with it; blanks at its end that
/// keys have no room for do not count. Texts are bytes as the database keeps them, NULL is the empty date.
/// Throws OrderError for a value of another type than the order's.
KeyRange range_of(const Order& order, const Parameter& value);

}  // namespace zmfb::rdd
