/// Methods that are in the table but not built yet.
#pragma once

#include <string_view>

#include "host/value.h"

namespace zmfb::conn {

/// Raises "<name> is not built yet" through raiseerror and returns NIL.
host::Value unbuilt(std::string_view name);

}  // namespace zmfb::conn
