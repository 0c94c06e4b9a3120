/// What depends on a field or a table, and becomes of it when that is dropped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// The kind of a field that is computed by others; all fields of one table.
inline constexpr std::string_view computed_field = "computed field";

struct Dependent {
    std::string kind;  ///< "index", "trigger", "view", ...
    std::string name;  ///< bytes, as the engine has it
};

struct Dependents {
    std::vector<Dependent> taken;       ///< is dropped along
    std::vector<Dependent> in_the_way;  ///< keeps the engine from dropping it
};

// The names are those of the catalog. Both throw Failure when a query fails.

/// Of a field, which is changed by dropping it too.
Dependents dependents_of_field(zmFBConn& connection, const std::string& table, const std::string& field);
/// Of a table; what is its own, such as its indexes, does not count.
Dependents dependents_of_table(zmFBConn& connection, const std::string& table);

}  // namespace zmfb::tool
