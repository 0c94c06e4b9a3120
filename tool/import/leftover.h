/// What imports that were cut off have left of a table, and what becomes of it at the next one of that name.
#pragma once

#include <string>
#include <vector>

#include "tool/import/plan.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// What was loaded beside a table: nothing, or what the next import drops; records that come into the table,
/// which was dropped for them; records whose table has gone; a table that is no import's.
enum class Leftover { none, dropped, brought_in, homeless, foreign };

/// Throws Failure and SqlError.
Leftover leftover_beside(zmFBConn& connection, const std::string& table);

/// Drops it or brings it in. Returns what is to be said of that, a line each.
/// Throws Failure and SqlError; the records are whole in one of the tables then.
std::vector<std::string> settle_leftover(zmFBConn& connection, const std::string& table);

/// What an import is to do about a table that is there.
struct LeftoverWish {
    bool dry_run = false;
    bool goes_on = false;  ///< it replaces that table, or adds to it
};

/// Settles what was left of the table of the plan and tells that on standard error, whatever becomes of the
/// import itself; with dry_run only notes what would come of it. What keeps the import from going on, another
/// one that is at work too, is a refusal of the plan.
void plan_leftovers(zmFBConn& connection, ImportPlan& plan, LeftoverWish wish);

/// The refusal of an import that neither replaces a table nor adds to it.
std::string already_there(const std::string& table);

}  // namespace zmfb::tool
