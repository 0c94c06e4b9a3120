/// What the engine's own tables say about the tables of the database.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// What a table is to the driver.
enum class TableKind { driver, system, foreign, view };

/// "driver", "system", "foreign" or "view".
std::string_view kind_name(TableKind kind);

struct ColumnType {
    std::string name;        ///< bytes, as the engine has it
    std::string type;        ///< "NUMERIC(10,2) NOT NULL"
    std::string driver_use;  ///< what the driver keeps in it; empty for a column of the application
};

struct Index {
    std::string name;
    std::vector<std::string> fields;
    std::string constraint;  ///< "PRIMARY KEY", "UNIQUE", "FOREIGN KEY" or empty
    bool unique = false;
    bool descending = false;
    bool active = true;
};

struct Trigger {
    std::string name;
    std::string moment;  ///< "BEFORE INSERT"
    bool active = true;
};

struct Generator {
    std::string name;
    std::int64_t value = 0;
};

/// The rows of a query with their values as they are stored, without the header. Throws Failure.
Value exact_rows(zmFBConn& connection, std::string_view query);

/// The version of the engine that has the database, such as "3.0.11". Throws Failure.
std::string engine_version(zmFBConn& connection);

/// `text` as a literal of SQL, in single quotes.
std::string sql_text(std::string_view text);

/// The bytes of the name of a table that exists, in upper case. Throws Failure when there is none.
std::string existing_table(zmFBConn& connection, const std::string& table);

// All of these take the name as existing_table() gives it, and throw Failure when a query fails.

TableKind kind_of(zmFBConn& connection, const Value& table);
/// How many rows it has: those of the driver's own tables are counted by their generators, any other by
/// reading it. None when this user may not count them.
std::optional<std::uint64_t> records_of(zmFBConn& connection, TableKind kind, const Value& table);
/// "1 record", "10 records", "records that this user may not count".
std::string records_in_words(std::optional<std::uint64_t> records);
/// The columns in their order.
std::vector<ColumnType> columns_of(zmFBConn& connection, const std::string& table);
/// The indexes in the order of their names.
std::vector<Index> indexes_of(zmFBConn& connection, const std::string& table);
/// The triggers in the order in which they fire.
std::vector<Trigger> triggers_of(zmFBConn& connection, const std::string& table);
/// The counting generators of a driver table, those that there are.
std::vector<Generator> generators_of(zmFBConn& connection, const std::string& table);
/// The views that are built on the table.
std::vector<std::string> views_on(zmFBConn& connection, const std::string& table);

/// Names as a person reads them: "A, B".
std::string joined(const std::vector<std::string>& names);
/// " and the views built on it (A, B)"; "" for none.
std::string views_in_words(const std::vector<std::string>& views);

}  // namespace zmfb::tool
