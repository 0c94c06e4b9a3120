/// Locks of records, by one program and by many.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// lock.ours: locks and unlocks a record a number of times. lock.bare: the bare client sends the statements
/// of that, learned from one pair, in the same transactions.
std::span<const Command> lock_commands();

/// crowd.make: a table CUSTOMERS with that many records. crowd.learn, of each process before others: one
/// visit to its record, which tells the statements. crowd.ours, crowd.bare: a number of visits, which lock
/// the record, change and unlock it.
std::span<const Command> crowd_commands();

}  // namespace zmfb::bench
