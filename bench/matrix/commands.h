/// Extraction of a matrix.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// matrix.make: tables of many fields. matrix.ours: extractmatrix of so many of them, timed. matrix.bare: the
/// bare client sends the queries of that, learned from one extraction, and reads their rows.
std::span<const Command> matrix_commands();

}  // namespace zmfb::bench
