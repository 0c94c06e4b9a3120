/// What an import would make of a DBF file, and why it would be refused.
#pragma once

#include <string>
#include <vector>

#include "tool/session.h"
#include "tool/transfer/dbf_file.h"

namespace zmfb::tool {

struct PlannedColumn {
    std::string name;
    std::string sql_type;
};

struct ImportPlan {
    std::string table;  ///< ISO-8859-1
    bool table_exists = false;
    std::vector<PlannedColumn> columns;
    std::vector<std::string> refusals;  ///< UTF-8, a line each
};

/// The table that a file of this path becomes: its name up to the first dot, in upper case.
std::string table_of_file(const std::string& path);

/// The SQL type of the column that a field becomes; "" for a type that cannot be imported.
std::string sql_type_of(const DbfField& field);

/// Looks at the structure of the file, and at the character set of the database: names that are invalid,
/// reserved, repeated or too long, types other than C, N, D and L, lengths and precisions that the engine
/// does not have. A table that exists already is no refusal here.
ImportPlan plan_import(zmFBConn& connection, const DbfFile& file);

}  // namespace zmfb::tool
