/// The class zmFBConn: its variables with their defaults, and its method table.
#pragma once

#include "host/class.h"

namespace zmfb::conn {

/// The class; its method table is built on first use and serves every object of the process.
const host::Class& zmfbconn_class();

}  // namespace zmfb::conn
