/// Who has what of the database: what its three system tables say.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/alive.h"
#include "tool/text_table.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Who has something; the texts of the holder are UTF-8.
struct Owner {
    Holder holder;
    Alive alive;
};

struct Lock {
    std::string table;                   ///< UTF-8
    std::optional<std::int64_t> record;  ///< none for the lock of the whole table
    Owner owner;
};

struct Registration {
    std::string table;  ///< UTF-8
    bool shared;
    std::int64_t last_append;  ///< the number of the record that it added last, 0 for none
    Owner owner;
};

/// The locks of tables, then those of records, in the order of their tables and numbers. Throws Failure.
std::vector<Lock> locks_of(zmFBConn& connection);
/// The lock of a table of the driver, and those of these of its records; asks once. Throws Failure.
std::vector<Lock> locks_of(zmFBConn& connection, const std::string& table,
                           std::span<const std::int64_t> records);
/// The tables that are open, in the order of their names. Throws Failure.
std::vector<Registration> registrations_of(zmFBConn& connection);

/// Of a holder whose process is dead that, and that `command` of the tool frees what it has; "" of others.
std::string when_dead(zmFBConn& connection, const Holder& holder, std::string_view command);

/// @{
/// The columns and the cells of a listing, with those of an owner behind them.
std::vector<TextTable::Column> with_owner(std::vector<TextTable::Column> columns);
std::vector<std::string> with_owner(std::vector<std::string> cells, const Owner& owner);
/// @}

}  // namespace zmfb::tool
