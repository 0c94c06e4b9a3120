/// Dropping a table of the driver with all that belongs to it.
#pragma once

#include <vector>

#include "tool/name.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Drops the views, all of plain names, then the table and its generators. Throws Failure at the first thing
/// that fails; what was dropped before that stays dropped.
void drop_with_views(zmFBConn& connection, const Name& table, const std::vector<Name>& views);

}  // namespace zmfb::tool
