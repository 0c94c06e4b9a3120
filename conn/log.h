/// The log: one text file, "/var/log/zmrddfire.log", shared by every object of the process.
///
/// An entry is two lines: a tab, the level in brackets, the user and the date; then a blank and the text. It
/// is written when its level is at or below the log level. A log file that cannot be written changes nothing,
/// nor does one that has reached the limit of its size.
#pragma once

#include <string>
#include <string_view>

#include "host/value.h"

namespace zmfb::conn {

/// The log level of the process; 0 at the start.
int log_level();
void set_log_level(int level);

/// Copies `text` into the event buffer, cut to 9999 characters and at a zero byte, and writes an entry of
/// that level.
void log_event(int level, std::string_view text);

/// The log line and result text of a failed statement: "[ERROR] SQLCODE=%d (%s)".
std::string sqlcode_text(int sqlcode, std::string_view message);

/// The integer value of a numeric, 0 for every other kind; held within the range of int.
int integer_or_zero(const host::Value& value);

/// Where the log is kept. The one thing that a test build replaces.
const char* log_path();

}  // namespace zmfb::conn
