/// Methods that are in the table but not built yet.
#pragma once

#include <string>

#include "conn/raise.h"

namespace zmfb::conn {

/// Raises "<name> is not built yet" and returns NIL.
inline host::Value unbuilt(const char* name) { return raiseerror(std::string(name) + " is not built yet"); }

}  // namespace zmfb::conn
