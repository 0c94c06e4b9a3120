/// Making the table that an import fills. Until its rows are committed it says of itself that it is
/// unfinished, and nobody takes it for a table of the driver.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "zmfbconn/driver_table.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

// All of these throw SqlError.

/// Makes it, in the place of an unfinished one that an earlier import left, and of generators that a table
/// left behind.
void begin_table(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns);

/// Adds what is still missing, in the transaction of its rows. Their numbers are 1 to `rows`.
void finish_table(Transaction& work, const std::string& table, std::uint64_t rows);

/// Drops it if it is there and unfinished, with its generators. Waits a while for one that is still in use:
/// the engine lets go of what a killed process had only when it notices its death. Returns whether it was
/// there.
bool drop_unfinished_table(zmFBConn& connection, const std::string& table);

}  // namespace zmfb::tool
