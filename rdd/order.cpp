#include "rdd/order.h"

#include <fmt/format.h>

namespace zmfb::rdd {

Order natural_order() {
    Order order;
    order.key = "RECNO";
    return order;
}

std::string condition_beyond(const Order& order, Direction direction, bool inclusive) {
    return fmt::format("{} {}{} ?", order.key, direction == Direction::forward ? '>' : '<',
                       inclusive ? "=" : "");
}

std::string order_by(const Order& order, Direction direction) {
    return fmt::format("order by {}{}", order.key, direction == Direction::forward ? "" : " desc");
}

}  // namespace zmfb::rdd
