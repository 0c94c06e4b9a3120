/// A process that works with others on one table through work areas.
#pragma once

#include "zmfbconn/connection.h"

namespace zmfb::test {

/// crowd(tbl, milliseconds, seed, anchors, ledger, holds): for so long changes, moves amounts between records
/// in one transaction, appends, deletes, walks and locks the table, at random. Records 1 to `anchors` are
/// left alone; a walk has to meet each of them once, in the order it follows. While it holds the table it has
/// to see the same sum twice. The file `ledger` has what was changed (ledger.h), the file `holds` every lock
/// (contention.h). Answers {changes, transfers, appends, deletions, walks, table locks, times that others
/// were in the way, what was seen that must not be: "" or the first such thing}.
Value crowd(zmFBConn& connection, Args args);

}  // namespace zmfb::test
