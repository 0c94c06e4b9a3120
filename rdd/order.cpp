#include "rdd/order.h"

#include <fmt/format.h>

namespace zmfb::rdd {

namespace {

constexpr std::string_view record_number = "RECNO";

// Bytes pass between the database and programs as they are, whatever programs take texts for.
std::string as_bytes(const Order& order, std::string_view key) {
    if (order.key == record_number) return std::string(key);
    return fmt::format("cast({} as char({}) character set octets)", key, order.width + record_key_width);
}

}  // namespace

Order natural_order() {
    Order order;
    order.key = record_number;
    return order;
}

std::string key_column(const Order& order) { return as_bytes(order, order.key); }

std::string condition_beyond(const Order& order, Direction direction, bool inclusive) {
    return fmt::format("{} {}{} {}", order.key, direction == Direction::forward ? '>' : '<',
                       inclusive ? "=" : "", as_bytes(order, "?"));
}

std::string order_by(const Order& order, Direction direction) {
    return fmt::format("order by {}{}", order.key, direction == Direction::forward ? "" : " desc");
}

}  // namespace zmfb::rdd
