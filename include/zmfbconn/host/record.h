/// The current record: its fields, changes, and locks.
///
/// In exclusive use nothing needs a lock, and every lock is granted. In shared use a record is changed under
/// its own lock or the table's; changing one without is raised (gencode unlocked).
#pragma once

#include <chrono>
#include <cstdint>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// FCOUNT(): how many fields the table has; 0 when none is open.
std::int64_t fcount();
/// FIELDNAME(number): the name of the field of that number, counted from 1; "" when there is none.
Value fieldname(std::int64_t number);
/// FIELDPOS(name): the number of the field of that name; 0 when there is none.
std::int64_t fieldpos(const Value& name);
/// FIELDGET(field): the value of a field of the current record, by number or name; at the end an empty one.
/// NIL for a number that is none; a name that is none is raised.
Value fieldget(const Value& field);
/// FIELDPUT(field, value): stores a value in a field, by number or name, and returns it; NIL, and nothing
/// changed, where that cannot be, and at the end of the table. What was stored is written by the next move,
/// commit or unlock.
Value fieldput(const Value& field, const Value& value);

/// DBAPPEND(release): adds an empty record, which is the current one then, and locked in shared use; the
/// other locks of the area are given back first unless `release` is .F.. Whether that went well; when another
/// use of the table has it locked neterr() is .T. then.
bool dbappend(const Value& release = true);
/// DBDELETE(): deletes the current record.
bool dbdelete();
/// DBRECALL(): takes that back, where the driver can.
bool dbrecall();
/// DELETED(): whether the current record is deleted.
bool deleted();
/// ZAP: removes all records; needs exclusive use.
bool dbzap();
/// PACK: removes the deleted records; needs exclusive use.
bool dbpack();
/// DBCOMMIT(): writes what was changed in the current area. Whether that went well.
bool dbcommit();
/// DBCOMMITALL(): the same in all areas.
bool dbcommitall();

/// RLOCK(): locks the current record and reads it anew; the other record locks of the area are given back.
/// .F. at the end, and when another use of the table has the record or the table, for all of `wait`.
bool rlock(std::chrono::milliseconds wait = {});
/// DBRLOCK([record]): locks a record besides those that are locked; without one as RLOCK().
bool dbrlock(const Value& record = {}, std::chrono::milliseconds wait = {});
/// DBRLOCKLIST(): the numbers of the records that the area has locked one by one.
Value dbrlocklist();
/// DBRUNLOCK([record]): writes what was changed and gives the lock of a record back; of all without one.
void dbrunlock(const Value& record = {});
/// FLOCK(): locks the table in place of its records. .F. when another use has it or a record of it, for all
/// of `wait`.
bool flock(std::chrono::milliseconds wait = {});
/// DBUNLOCK(): writes what was changed and gives all locks of the current area back.
void dbunlock();
/// DBUNLOCKALL(): the same in all areas.
void dbunlockall();

}  // namespace zmfb::host

#pragma GCC visibility pop
