/// Attaching.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// attach.ours: an object is made, attached to the database of the request and goes, a number of times.
/// attach.bare: the bare client attaches and detaches.
std::span<const Command> attach_commands();

}  // namespace zmfb::bench
