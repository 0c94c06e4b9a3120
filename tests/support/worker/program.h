/// What a worker process can do on its own, besides calling methods for its test.
#pragma once

#include "zmfbconn/connection.h"

namespace zmfb::test {

/// contend(tbl, areaid, attempts, records, seed, events, looks_again): takes and releases, as often as
/// `attempts` says, a record lock out of `records` or, one time in five, the table lock, held for up to two
/// milliseconds. With `looks_again` .T. a lock that was granted is asked for a second time, and given back
/// when it is refused then. A line of every hold goes to the file `events` (contention.h). Answers {attempts,
/// grants, table grants, refusals, rows that were not this area's alone while it held the lock, releases that
/// had to be tried again, locks that were never released, locks given back, milliseconds of the longest
/// call}.
Value contend(zmFBConn& connection, Args args);

/// takelock(tbl, areaid, record): takes the lock of a record, or for 0 of the table, looks again, and gives
/// it back when another has come in, as the documentation says. Answers whether it has it.
Value takelock(zmFBConn& connection, Args args);

/// opentable(tbl, areaid, shared, safely): opens the table; .F. when another area's open is in the way.
/// Safely is the order that the documentation gives, the other one asks whether the table is in use and
/// registers.
Value opentable(zmFBConn& connection, Args args);
/// closetable(tbl, areaid): takes back the registration and the table lock.
Value closetable(zmFBConn& connection, Args args);

/// appendrows(tbl, areaid, rows): registers the area, appends `rows` rows with NAME "<areaid>/<n>" and
/// unregisters. Answers the record numbers that it learned, or the error text of the statement that failed.
Value appendrows(zmFBConn& connection, Args args);

/// churn(tbl, areaid, records, seed): registers the area and takes record 1, then locks and unlocks the other
/// records and the table until the process is killed. The first answer, .T., comes when record 1 is held;
/// there is no other.
[[noreturn]] void churn(zmFBConn& connection, Args args, void (*answer)(const Value&));

/// makeorder(tbl, name, expression): makes the order. Answers .T.
Value makeorder(zmFBConn& connection, Args args);
/// dropanyorder(tbl, name): drops it, if it is there. Answers whether it was.
Value dropanyorder(zmFBConn& connection, Args args);

/// churnorders(tbl, name, expression): makes the order and drops it until the process is killed. The first
/// answer, .T., comes when it was made once; there is no other.
[[noreturn]] void churnorders(zmFBConn& connection, Args args, void (*answer)(const Value&));

}  // namespace zmfb::test
