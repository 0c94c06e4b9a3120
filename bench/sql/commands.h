/// Reading all rows of a query: through internalselect, with the bare client, and into plain C++ strings.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// select.ours, select.bare, select.strings: time one query over the columns of the table PEOPLE.
/// sample.ours: the first rows, as texts. hold.ours, hold.strings: keep the rows of one query.
std::span<const Command> select_commands();

/// select.typed: reads the columns of the table PEOPLE as C++ types. sample.typed: the first rows, as texts.
std::span<const Command> typed_commands();

/// select.object: the same query by the plainest loop over the client's object interface.
std::span<const Command> object_commands();

}  // namespace zmfb::bench
