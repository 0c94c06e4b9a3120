/// What the benchmarks run on: a private folder, an embedded engine, a server of one's own, an empty
/// database.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// "stage" makes all of it and tells where it is; it goes away with the process, once standard input ends.
std::span<const Command> stage_commands();

/// Removes what "stage" made, if it was asked for.
void clear_stage();

}  // namespace zmfb::bench
