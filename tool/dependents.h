/// What depends on a field or a table, and becomes of it when that is dropped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/name.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// The kind of a field that is computed by others; all fields of one table.
inline constexpr std::string_view computed_field = "computed field";

struct Dependent {
    std::string kind;  ///< "index", "trigger", "view", ...
    Name name;
};

struct Dependents {
    std::vector<Dependent> taken;       ///< is dropped along
    std::vector<Dependent> in_the_way;  ///< keeps the engine, or the driver, from dropping it
};

// Both throw Failure when a query fails.

/// Of a field, which is changed by dropping it too.
Dependents dependents_of_field(zmFBConn& connection, const Name& table, const Name& field);
/// Of a table; what is its own, such as its indexes, does not count.
Dependents dependents_of_table(zmFBConn& connection, const Name& table);

/// What a query names, which gives the engine's number of a kind and a name. Throws Failure.
std::vector<Dependent> dependents_by(zmFBConn& connection, std::string_view query);

std::vector<Name> names_in(const std::vector<Dependent>& dependents);
/// "index BY_NAME, view \"Names\"".
std::string in_words(const std::vector<Dependent>& dependents);

}  // namespace zmfb::tool
