/// Orders: what the records of a table are sorted by, and where one stands among them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zmfb::rdd {

/// Which way an order is walked.
enum class Direction { forward, backward };

/// An order of the records of one table.
struct Order {
    std::string name;        ///< upper case; "" for the natural order
    std::string expression;  ///< as the program wrote it, such as "UPPER(NAME)"; "" for the natural order
    /// What rows are sorted by, ascending, in SQL: the record number is the last one, or at the end of the
    /// only one. Texts of an expression are bytes of the character set NONE. Nothing here is ever NULL.
    std::vector<std::string> keys;
    char type = 'N';        ///< what a program seeks: 'C', 'N', 'D' or 'L'
    std::size_t width = 0;  ///< of a key of type 'C', in bytes
    /// The rows that are in the order, as a condition in SQL; "" when all are.
    std::string only;
};

/// The order by record numbers.
Order natural_order();

/// A condition in SQL.
struct Condition {
    std::string sql;                  ///< with a "?" for each value
    std::vector<std::size_t> values;  ///< for each "?" which of Order::keys it is of
};

/// The rows that come after the position with these keys, that row included or not. Rows that are not in the
/// order (Order::only) are not left out.
Condition condition_beyond(const Order& order, Direction direction, bool inclusive);

/// What sorts rows: "order by ...".
std::string order_by(const Order& order, Direction direction);

}  // namespace zmfb::rdd
