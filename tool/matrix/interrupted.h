/// What an applying that was interrupted has done of its plan.
#pragma once

#include <string>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// The actions of a matrix log that are in `plan`, but not in `rest`, each below the line that names its
/// table; ISO-8859-1.
std::vector<std::string> done_of(const host::Value& plan, const host::Value& rest);

/// The lines of a log that has any actions, those of tables without one left out.
std::vector<std::string> actions_of(const host::Value& log);

}  // namespace zmfb::tool
