#include "rdd/order.h"

#include <fmt/format.h>

namespace zmfb::rdd {

Order natural_order() {
    Order order;
    order.keys = {"RECNO"};
    return order;
}

// Of two keys, (a, b) > (x, y) is written as a >= x and (a > x or b > y): the first part is what the engine
// finds its way in the index with.
Condition condition_beyond(const Order& order, Direction direction, bool inclusive) {
    const char sign = direction == Direction::forward ? '>' : '<';
    const std::string_view last = inclusive ? "=" : "";
    const std::vector<std::string>& keys = order.keys;
    if (keys.size() == 1) return {fmt::format("{} {}{} ?", keys[0], sign, last), {0}};
    return {fmt::format("{0} {1}= ? and ({0} {1} ? or {2} {1}{3} ?)", keys[0], sign, keys[1], last),
            {0, 0, 1}};
}

std::string order_by(const Order& order, Direction direction) {
    const std::string_view way = direction == Direction::forward ? "" : " desc";
    return fmt::format("order by {}{}", fmt::join(order.keys, fmt::format("{}, ", way)), way);
}

}  // namespace zmfb::rdd
