/// Making the table that an import fills. Until its rows are committed it says of itself that it is
/// unfinished, and nobody takes it for a table of the driver.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "tool/import/hold.h"
#include "zmfbconn/driver_table.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// A table that an import fills.
struct NewTable {
    ImportHold hold;
    Transaction work;  ///< for its rows
};

// All of these throw SqlError.

/// Makes it in the place of an unfinished one that an earlier import left, and of generators that a table
/// left behind. Throws Failure when another import fills it. `mark` becomes what the table says of itself,
/// and no other one: is_marked() tells with it, when this throws, whether it was made.
NewTable begin_table(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns,
                     std::string& mark);

/// Whether there is that table, made by the begin_table() that gave this mark.
bool is_marked(zmFBConn& connection, const std::string& table, const std::string& mark);

/// Adds what is still missing, in the transaction of its rows. Their numbers are 1 to `rows`.
void finish_table(Transaction& work, const std::string& table, std::uint64_t rows);

/// Drops the constraints and indexes of a table. An engine that is killed while it commits the drop of a
/// table can leave it without its pages: nobody can read it then, and it can be dropped again only when it
/// has none of them. So they go before, in a transaction of their own.
void drop_keys(Transaction& work, const std::string& table);

/// Drops it with its generators, if it has them.
void drop_parts(Transaction& work, const std::string& table);

/// Drops a table that nobody needs, with its generators, if it has them.
void drop_table(zmFBConn& connection, const std::string& table);

/// Drops it if it is there and unfinished, with its generators. Returns whether it was there.
bool drop_unfinished_table(zmFBConn& connection, const std::string& table);

/// Makes a table of this name without a key, and drops it. An engine that was killed while it made a table
/// can give its number to the next one, and stumble over what it finds under that number; this one takes it
/// away.
void take_number_away(zmFBConn& connection, const std::string& keyless);

/// A text as it stands in a statement: in quotes, with those in it doubled.
std::string sql_text(std::string text);

/// Runs a step that changes tables, and again while others are in its way for a moment.
void with_patience(const std::function<void()>& step);

}  // namespace zmfb::tool
