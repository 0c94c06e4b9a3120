/// What the engine's own tables say about the tables of the database.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/name.h"
#include "tool/reading.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// What a table is to the driver. Only the names of driver and system tables, and of their columns, are sure
/// to be plain ones. An unfinished one is that of an import that runs, or did not come to its end; a loaded
/// one has all records of such an import, which are to come into another table.
enum class TableKind { driver, system, unfinished, loaded, foreign, view };

/// What the description of an unfinished and of a loaded table begins with.
inline constexpr std::string_view unfinished_description = "Unfinished import for ZMRDDFIRE";
inline constexpr std::string_view loaded_description = "Loaded import for ZMRDDFIRE";

/// How the description in a row of the engine's tables begins: as bytes, since nobody need have written
/// characters there.
std::string description_of(std::string_view row);

/// What an import loads for a table that is there.
std::string table_beside(const std::string& table);

/// "driver", "system", "unfinished", "loaded", "foreign" or "view".
std::string_view kind_name(TableKind kind);

struct Table {
    Name name;
    TableKind kind;
    bool is_temporary = false;  ///< its rows are seen by the program only that adds them
};

struct ColumnType {
    Name name;
    std::string type;        ///< "NUMERIC(10,2) NOT NULL"
    std::string driver_use;  ///< what the driver keeps in it; empty for a column of the application
};

struct Index {
    Name name;
    std::vector<Name> fields;  ///< none when it is by an expression
    std::string constraint;    ///< "PRIMARY KEY", "UNIQUE", "FOREIGN KEY" or empty
    bool unique = false;
    bool descending = false;
    bool active = true;
};

struct Trigger {
    Name name;
    std::string moment;  ///< "BEFORE INSERT"
    bool active = true;
};

struct Generator {
    Name name;
    std::int64_t value = 0;
};

/// @{
/// Whether a column of that name is the driver's own: the record number, the work area, the key of an index;
/// or holds a field that a matrix set aside.
bool is_driver_column(std::string_view name);
bool is_limbo_column(std::string_view name);
/// @}

/// The version of the engine that has the database, such as "3.0.11". Throws Failure.
std::string engine_version(zmFBConn& connection);

/// The names that a query gives, which has no other column. Throws Failure.
template <class... Values>
std::vector<Name> names_of(zmFBConn& connection, std::string_view query, const Values&... values) {
    std::vector<Name> names;
    for (const auto& [name] : rows_of<std::string>(connection, query, values...)) names.emplace_back(name);
    return names;
}

/// A name as a value of a query where it need be no name that the engine allows: a "?" behind "=" takes none
/// that is longer than the column.
inline constexpr std::string_view any_name = "cast(? as varchar(252) character set utf8)";

enum class ObjectKind { relation, generator };
/// Whether there is one of that name. Throws Failure when that cannot be asked.
bool is_there(zmFBConn& connection, ObjectKind kind, const Name& name);

/// Those of the names, all plain, that the engine takes for words of its own: each version has others.
std::vector<Name> reserved_among(zmFBConn& connection, std::span<const Name> names);

// All of these throw Failure when a query fails.

/// The tables and views of the users, in the order of their names.
std::vector<Table> tables_of(zmFBConn& connection);
/// The name of the table or view that a person means. Throws Failure when there is none.
Name existing_name(zmFBConn& connection, const std::string& typed);
/// The same with its kind.
Table existing_table(zmFBConn& connection, const std::string& typed);
/// What the table or view of this name, which exists, is to the driver.
TableKind kind_of(zmFBConn& connection, const Name& name);
/// How many rows it has: those of the driver's own tables are counted by their generators, which may have
/// counted what an import that was cut off did not bring in; that one, and any other, by reading it. Those of
/// an unfinished one do not count, and it may not be possible to read them. None for a view, which would run
/// what its maker wrote, and when this user may not count them.
std::optional<std::uint64_t> records_of(zmFBConn& connection, const Table& table);
/// "1 record", "10 records", "records that this user may not count".
std::string records_in_words(std::optional<std::uint64_t> records);
/// The names of the columns in their order.
std::vector<Name> column_names_of(zmFBConn& connection, const Name& table);
/// Whether methods can name the table and all its columns.
bool is_nameable(zmFBConn& connection, const Name& table);
/// The columns in their order.
std::vector<ColumnType> columns_of(zmFBConn& connection, const Name& table);
/// The indexes in the order of their names.
std::vector<Index> indexes_of(zmFBConn& connection, const Name& table);
/// The triggers in the order in which they fire.
std::vector<Trigger> triggers_of(zmFBConn& connection, const Name& table);
/// The names of the counting generators of a driver table, of those that there are.
std::vector<Name> generator_names_of(zmFBConn& connection, const Name& table);
/// The same with their values.
std::vector<Generator> generators_of(zmFBConn& connection, const Name& table);
/// The views that are built on the table, each once.
std::vector<Name> views_on(zmFBConn& connection, const Name& table);

/// " and the views built on it (A, B)"; "" for none.
std::string views_in_words(const std::vector<Name>& views);

}  // namespace zmfb::tool
