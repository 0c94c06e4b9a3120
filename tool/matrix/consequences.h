/// What a matrix does besides what its log says: what it takes along, what will stop it, whose values will
/// not be what they were.
#pragma once

#include <string>
#include <vector>

#include "tool/dependents.h"
#include "tool/json.h"
#include "tool/matrix/fit.h"

namespace zmfb::tool {

/// Of changing or dropping one field, or of dropping one table.
struct Consequence {
    std::string table;        ///< bytes
    std::string field = {};   ///< empty when the table goes
    std::string wanted = {};  ///< "N(8,2)"; empty when the field goes
    Dependents dependents = {};
    Fit fit = {};
};

/// Those of what the log of a check says that will be done, in its order; only what there is something to say
/// of. Throws Failure when a query fails.
std::vector<Consequence> consequences_of(zmFBConn& connection, const host::Value& matrix,
                                         const host::Value& log);

// Lines for a person, UTF-8.

/// What the change does besides.
std::vector<std::string> notes_of(const Consequence& consequence);
/// Why the engine will refuse it; empty when it will not.
std::vector<std::string> hindrances_of(const Consequence& consequence);

Json json_of(const Consequence& consequence);

}  // namespace zmfb::tool
