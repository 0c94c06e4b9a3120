/// What becomes of the things that belong to a table when another takes its place.
#pragma once

#include <string>
#include <vector>

#include "tool/name.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

struct Belongings {
    std::vector<std::string> again;  ///< the statements that give the new table its indexes and grants
    std::vector<std::string> lost;   ///< those that it cannot get, in words: "index BY_NAME"
};

/// Those of a table of the driver, besides what each has, for one with these columns.
Belongings belongings_of(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns);

}  // namespace zmfb::tool
