/// What an export is to write: tables, by name, by pattern or all of them, or a query.
#pragma once

#include <string>
#include <vector>

#include "tool/catalog.h"
#include "tool/export/fields.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

struct ExportTable : Table {
    std::string file_name;  ///< without an ending
};

/// All tables with rows of their own, but for what the driver keeps for itself. Throws Failure.
std::vector<ExportTable> all_tables(zmFBConn& connection);
/// Those that a name or a pattern means, views too. Throws Failure for a name of none, and a pattern that
/// fits nothing.
std::vector<ExportTable> tables_meant_by(zmFBConn& connection, const std::string& given);

/// What of a table is wanted, as a person wrote it (UTF-8).
struct WantedRows {
    std::vector<std::string> columns;  ///< none for all but those of the driver's own
    std::string where, order;          ///< SQL; "" for all, and for the order of the record numbers
};

/// A query, and what becomes of it.
struct ExportSource {
    std::string shown;               ///< for people: "CUSTOMERS"
    std::string file_name;           ///< without an ending
    std::string query;               ///< UTF-8
    std::vector<Declared> declared;  ///< of the columns in their order; of a query none are known
};

/// The query of a table. Throws Failure for a column that it does not have.
ExportSource export_source(zmFBConn& connection, const ExportTable& table, const WantedRows& wanted);

}  // namespace zmfb::tool
