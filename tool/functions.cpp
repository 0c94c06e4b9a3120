#include "tool/functions.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/catalog.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view module_name = "zmrddudfs";

// As a list of SQL.
std::string names_in_quotes() {
    std::string names;
    for (const DriverFunction& function : driver_functions)
        names += fmt::format("{}'{}'", names.empty() ? "" : ", ", function.name);
    return names;
}

}  // namespace

Functions functions_named(std::string_view word) {
    return word == stored_word   ? Functions::stored
           : word == module_word ? Functions::module
                                 : Functions::by_engine;
}

std::optional<Functions> functions_of(zmFBConn& connection) {
    if (!connection(m::isallneededudfsinstalled)) return std::nullopt;
    const bool declared = connection(m::isudf, driver_functions.front().name, module_name);
    return declared ? Functions::module : Functions::stored;
}

std::string functions_problem(zmFBConn& connection) {
    const std::vector<Name> there =
        names_of(connection, fmt::format("SELECT RDB$FUNCTION_NAME FROM RDB$FUNCTIONS WHERE "
                                         "RDB$FUNCTION_NAME IN ({})",
                                         names_in_quotes()));
    std::string missing;
    for (const DriverFunction& function : driver_functions) {
        if (std::ranges::find(there, Name(function.name)) == there.end())
            missing += (missing.empty() ? "missing: " : ", ") + std::string(function.name);
    }
    return missing.empty()
               ? "neither all the module's nor all stored ones with the parameters they should have"
               : missing;
}

std::vector<Dependent> dependents_of_functions(zmFBConn& connection) {
    const std::string names = names_in_quotes();
    return dependents_by(
        connection,
        // What a view computes depends on it, not the view.
        fmt::format(
            "select distinct iif(r.rdb$view_blr is null, d.rdb$dependent_type, 1), "
            "iif(r.rdb$view_blr is null, coalesce(f.rdb$field_name, d.rdb$dependent_name), "
            "r.rdb$relation_name) from rdb$dependencies d left join rdb$relation_fields f on "
            "d.rdb$dependent_type = 3 and f.rdb$field_source = d.rdb$dependent_name left join "
            "rdb$relations r on r.rdb$relation_name = f.rdb$relation_name "
            "where d.rdb$depended_on_type = 15 and d.rdb$depended_on_name in "
            "({0}) and not (d.rdb$dependent_type = 15 and d.rdb$dependent_name in ({0})) order by 1, 2",
            names));
}

}  // namespace zmfb::tool
