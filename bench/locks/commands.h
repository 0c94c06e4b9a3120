/// Locks of records.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// lock.ours: locks and unlocks a record a number of times. lock.bare: the bare client sends the statements
/// of that, learned from one pair, in the same transactions.
std::span<const Command> lock_commands();

}  // namespace zmfb::bench
