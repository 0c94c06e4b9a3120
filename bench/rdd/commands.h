/// Work areas.
#pragma once

#include <span>

#include "bench/support/worker.h"

namespace zmfb::bench {

/// areas.make: makes the table ITEMS with so many records, and its order CODE. areas.open, areas.close: the
/// work area of the runtime that the others use. areas.dbf: the same records in a DBF file, in the area
/// BENCHDBF. areas.walk: DBSKIP through all records with FIELDGET of each field; areas.select: internalselect
/// of the same rows. areas.seek: DBSEEK of random keys; areas.seek.bare: a prepared select of the bare client
/// for each. areas.change, areas.append: lock, change, commit, unlock a record, append one;
/// areas.change.bare, areas.append.bare: the same statements by the bare client, learned from one such
/// change.
std::span<const Command> area_commands();
/// Pages as "zmfb browse" reads them, of the table that areas.make has made, in the order CODE. browse.open,
/// browse.close: the window that the others use. browse.further: so many pages on from the top; browse.ends:
/// to the end and back to the top, so many times. The same with .bare: a prepared select of the bare client
/// for each page, on a plain index.
std::span<const Command> browse_commands();

}  // namespace zmfb::bench
