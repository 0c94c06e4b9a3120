/// Orders: what the records of a table are sorted by, and where one stands among them.
#pragma once

#include <cstddef>
#include <string>

#include "zmfbconn/area_error.h"

namespace zmfb::rdd {

/// Why there is no such order, or no such key of it.
class OrderError : public AreaError {
  public:
    explicit OrderError(const std::string& message) : AreaError(Reason::no_order, message) {}
};

/// Which way an order is walked.
enum class Direction { forward, backward };

/// How many bytes of a key are the record number.
inline constexpr std::size_t record_key_width = 16;

/// An order of the records of one table.
struct Order {
    std::string name;        ///< upper case; "" for the natural order
    std::string expression;  ///< as the program wrote it, such as "UPPER(NAME)"; "" for the natural order
    /// What rows are sorted by, ascending, in SQL. It ends in the record number, so that no two rows have the
    /// same, and is never NULL. That of the natural order is the record number itself, any other a text of
    /// fixed length of the character set NONE.
    std::string key;
    char type = 'N';           ///< what a program seeks: 'C', 'N', 'D' or 'L'
    std::size_t width = 0;     ///< of the key without the record number, in bytes
    std::size_t decimals = 0;  ///< of a key of type 'N'
    /// The rows that are in the order, as a condition in SQL; "" when all are.
    std::string only;
};

/// The order by record numbers.
Order natural_order();

/// The key of rows as they are read: a number of the natural order, else bytes.
std::string key_column(const Order& order);

/// The rows behind a position, as a condition in SQL with a "?" for the key of that position, as it was read;
/// the row that stands there included or not. It leaves Order::only out.
std::string condition_beyond(const Order& order, Direction direction, bool inclusive);

/// What sorts rows: "order by ...".
std::string order_by(const Order& order, Direction direction);

}  // namespace zmfb::rdd
