/// Work areas: open tables with aliases, each served by a database driver (host/driver.h).
///
/// One area is the current one. Aliases are compared without regard to letter case and outer blanks.
#pragma once

#include "driver.h"
#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// RDDSETDEFAULT(): the default driver's name; "DBFIDX" at the start.
Value rddsetdefault();
/// RDDSETDEFAULT(name): makes `name`, upper-cased, the default and returns the one before it. Any name is
/// taken; one that no driver is registered under fails when a table is opened through it.
Value rddsetdefault(const Value& name);

/// DBCREATE(file, structure [, driver]): creates an empty table of the descriptors {name, type, len, dec} and
/// returns whether that went well. A C field of 256 and more is given by its length, or by len % 256 with dec
/// = len / 256. What fails is raised as an error of gencode create; a structure that is
/// none as an argument error.
Value dbcreate(const Value& file, const Value& structure, const Value& driver = {});

/// DBUSEAREA(new, driver, file [, alias [, shared [, readonly]]]): opens a table, in the next free area when
/// `new` is .T., else in the current one, whose table is closed first. Without a driver the default one,
/// without an alias the file's name without directories and extension, without `shared` what SET EXCLUSIVE
/// says.
///
/// A driver that is not registered, an alias in use and a table that cannot be opened are raised (gencode
/// open); used() is .F. then.
void dbusearea(const Value& new_area, const Value& driver, const Value& file, const Value& alias = {},
               const Value& shared = {}, const Value& readonly = {});
/// DBSETINDEX([files]): without index files nothing; this runtime has none, so a name given is raised as an
/// error.
void dbsetindex(const Value& files = {});
/// DBGOTOP(): to the first record of the current table; an error when there is none open.
void dbgotop();
/// USED(): whether a table is open in the current area.
Value used();
/// NETERR(): whether the last DBUSEAREA failed because of another use of the table.
Value neterr();
/// Sets what NETERR() answers; for drivers.
void neterr(bool failed);

/// ALIAS(): the current area's alias, upper case; "" when no table is open in it.
Value alias();
/// DBSELECTAREA(alias): makes the area with that alias current; false, and nothing changed, when there is
/// none.
bool dbselectarea(const Value& alias);
/// DBOBJECT([alias]): the data-server object of the work area with that alias (of the current one without),
/// whose property `rddname` names the driver that opened it, as it was written there; NIL when there is none.
Value dbobject(const Value& alias = {});
/// The table in the area with that alias (in the current one without), null when there is none.
Table* table_of(const Value& alias = {});
/// Selects the work area with that alias and closes it; nothing happens when there is none. Without an alias:
/// the current one.
void dbclosearea(const Value& alias = {});

}  // namespace zmfb::host

#pragma GCC visibility pop
