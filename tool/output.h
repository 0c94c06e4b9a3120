/// Standard output, as far as it cannot be written.
#pragma once

#include "tool/session.h"

namespace zmfb::tool {

/// What to throw, and so to tell, for a failed write to standard output. A pipe that nobody reads any more is
/// nothing to talk about: it has no message, and the status that a process has which SIGPIPE ends.
Failure output_failure(int error);

/// Writes what was printed so far. Throws Failure.
void flush_output();

/// The same at the end: when it fails, or something failed before and was not told, tells it and returns a
/// status for it, where `status` is ok.
Exit finish_output(Exit status);

}  // namespace zmfb::tool
