/// The orders of a table that its database keeps, the same for all programs.
///
/// An order is two indexes, one for each direction. Their descriptions have its name and expression. Which
/// rows are walked in which order does not depend on the indexes: without them it only takes longer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rdd/order.h"
#include "zmfbconn/connection.h"

namespace zmfb::rdd {

/// An order that a database keeps.
struct KeptOrder {
    Order order;
    bool complete = false;  ///< whether both of its indexes are there, and in use
};

/// What an order is made of.
struct OrderRequest {
    std::string name;        ///< letters, digits and _, in any case of letters
    std::string expression;  ///< see key_of(); texts in it are bytes as the database keeps them
    bool unique = false;     ///< of records with the same value the first one only
    /// What the table's work area may be called in the expression besides FIELD; anything when there are
    /// none.
    std::vector<std::string> aliases = {};
};

/// The orders of a table (upper case) with these fields; not those whose descriptions have no key. Throws
/// SqlError, as all of these do.
std::vector<KeptOrder> orders_of(zmFBConn& connection, std::string_view table, const Structure& fields);

/// Makes an order, both indexes of it or none. Nothing when there is that order already; what is missing of
/// it is made. Waits a few seconds for others who are changing the table. Throws OrderError for an expression
/// that is no key, another order of that name, and a key that is too long.
void create_order(zmFBConn& connection, std::string_view table, const Structure& fields,
                  const OrderRequest& wanted);

/// Drops an order, in any case of letters. Waits a few seconds for others who use it. Throws OrderError when
/// there is none of that name, or it is still in use.
void drop_order(zmFBConn& connection, std::string_view table, std::string_view name);

/// Makes the indexes of an order anew; likewise.
void rebuild_order(zmFBConn& connection, std::string_view table, const Structure& fields,
                   std::string_view name);

}  // namespace zmfb::rdd
