/// Raising an error to the application.
#pragma once

#include "host/value.h"

namespace zmfb::conn {

/// Hands an error object with the description "[FBCONN Error];" + `message`, gencode -1 and severity 2 to the
/// error handler; returns NIL when the handler returns. `message` is ISO-8859-1; ";" parts its lines. Whoever
/// calls this has written the log line first.
host::Value raiseerror(const host::Value& message);

}  // namespace zmfb::conn
