/// All locks and registrations, live.
#pragma once

#include <chrono>

#include "tool/browse/screen.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool::browse {

/// Shows them until Esc, q or Enter, read anew every so often, at least once a second. Throws Failure when
/// they cannot be read.
void show_locks(Screen& screen, zmFBConn& connection, std::chrono::seconds every);

}  // namespace zmfb::tool::browse
