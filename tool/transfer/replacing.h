/// What becomes of a table, and of what belongs to it, when other rows take its place or come to it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tool/name.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/driver_table.h"

namespace zmfb::tool {

struct Belongings {
    std::vector<std::string> again;  ///< the statements that give the new table its indexes and grants
    std::vector<std::string> lost;   ///< those that it cannot get, in words: "index BY_NAME"
};

/// Those of a table of the driver, besides what each has, for one with these columns.
Belongings belongings_of(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns);

/// Puts the rows of `beside`, a whole table of the driver with the numbers 1 to `rows`, into the place of
/// `table`, which goes with these views, and runs the statements of `again`. Throws Failure and SqlError;
/// whatever ends it, the rows of one of the two tables are whole.
void replace_with(zmFBConn& connection, const std::string& beside, const std::string& table,
                  std::span<const DriverColumn> columns, std::uint64_t rows, const std::vector<Name>& views,
                  const std::vector<std::string>& again);

/// Adds the rows of `beside`, an unfinished table, to those of `table`, which has its columns, in one
/// transaction. Throws SqlError.
void add_rows(zmFBConn& connection, const std::string& beside, const std::string& table,
              std::span<const DriverColumn> columns);

}  // namespace zmfb::tool
