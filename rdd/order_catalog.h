/// How orders stand in the catalogue of a database.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rdd/order.h"
#include "zmfbconn/transaction.h"

namespace zmfb::rdd {

/// What the description of an order's indexes says.
struct OrderNote {
    std::string name, expression;
    bool unique = false;
    bool operator==(const OrderNote&) const = default;
};

/// The description, and what one says; nothing when it is not of an order.
std::string description_of(const OrderNote& note);
std::optional<OrderNote> note_in(std::string_view description);

/// The names of an order's two indexes, for the way forward and back. No more than 30 bytes, and others for
/// every other order of the database.
std::array<std::string, 2> index_names(std::string_view table, std::string_view order);

/// Whether there is an index of that name.
bool is_there(Transaction& work, std::string_view index);

/// What the database has of an order.
struct NotedOrder {
    OrderNote note;
    int in_use = 0;  ///< how many of its indexes are
};

/// The orders of a table (upper case).
std::vector<NotedOrder> noted_orders(Transaction& work, std::string_view table);

}  // namespace zmfb::rdd
