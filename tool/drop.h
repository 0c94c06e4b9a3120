/// Dropping a table of the driver with all that belongs to it.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "tool/errors.h"
#include "tool/name.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Drops the views, all of plain names, then the table and its generators. Throws Failure at the first thing
/// that fails; what was dropped before that stays dropped.
void drop_with_views(zmFBConn& connection, const Name& table, const std::vector<Name>& views);

/// What to throw, and so to tell, of who else uses a table that is to be dropped; nothing when nobody does. A
/// work area has it open, or another program has a statement of that table prepared, as far as the engine
/// tells: SYSDBA and the owner of the database of all. The engine has nothing against a drop itself until
/// that is committed, and waits then.
std::optional<Failure> use_by_others(zmFBConn& connection, const Name& table);

/// Throws it, after a while in which a process that was killed may have gone.
void require_unused_by_others(zmFBConn& connection, const Name& table);

/// Whether a change of tables that the engine has refused with these words is worth another attempt after
/// this one, from 1 on: it lets go of what a killed process had in use only when it notices its death, and of
/// two who make a table at the same moment it refuses one. Waits a little then.
bool wait_for_others(std::string_view message, int attempt);

}  // namespace zmfb::tool
