/// The statements that make a table of the driver: for programs whose table has columns that createtable()
/// does not know, or is to be filled before anybody takes it for one of the driver's.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)

namespace zmfb {

/// A column of such a table.
struct DriverColumn {
    std::string name;              ///< upper case, one that needs no quotes
    std::string definition;        ///< what follows the name: "CHAR(10) DEFAULT '' NOT NULL"
    std::string description = {};  ///< without an apostrophe; "" for none
};

/// The column that createtable() makes of a field of type C, N, D or L.
DriverColumn driver_column(std::string_view name, char type, std::size_t length, int decimals);

/// The statements that begin a table: the columns with the driver's own behind them, their descriptions, the
/// generators at 0 and `description` for the table. They may run in one transaction. Nobody takes the table
/// for one of the driver's yet.
std::vector<std::string> statements_to_begin_table(std::string_view table,
                                                   std::span<const DriverColumn> columns,
                                                   std::string_view description);

/// The statements that finish it: the index of RECNO, the triggers and the driver's description. They may run
/// in one transaction with the rows, which are to have the numbers 1, 2, 3 ... as RECNO.
std::vector<std::string> statements_to_finish_table(std::string_view table);

}  // namespace zmfb

#pragma GCC visibility pop
