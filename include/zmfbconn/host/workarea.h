/// Work areas: open tables with aliases, each served by a database driver (host/driver.h).
///
/// One area is the current one, number 1 at the start. An area is named by its alias, compared without regard
/// to letter case and outer blanks, or by its number. What a program does with the table in the current area
/// is in host/moves.h and host/record.h, which come with this header.
#pragma once

#include "driver.h"
#include "moves.h"
#include "record.h"
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
/// open); used() is .F. then. When another use of the table is in the way the error has `candefault`,
/// neterr() is .T., and a program without an error block of its own goes on.
void dbusearea(const Value& new_area, const Value& driver, const Value& file, const Value& alias = {},
               const Value& shared = {}, const Value& readonly = {});
/// USED(): whether a table is open in the current area.
Value used();
/// NETERR(): whether the last DBUSEAREA or DBAPPEND failed because of another use of the table.
Value neterr();
/// Sets what NETERR() answers; for drivers.
void neterr(bool failed);
/// Whether an error object has `candefault` set, so that a program without an error block of its own meets it
/// by NETERR().
bool is_told_by_neterr(const Value& error);
/// Who was in the way of the last open, append or lock that was refused, in the words of its driver; "" when
/// nobody was, and when the driver cannot tell.
Value neterrholder();
/// Sets what neterrholder() answers; for drivers.
void neterrholder(std::string_view holder);

/// ALIAS([area]): the alias of the current area, or of the one of that number, upper case; "" when no table
/// is open in it.
Value alias(const Value& number = {});
/// SELECT([alias]): the number of the current area, or of the one with that alias, 0 when there is none.
std::int64_t select(const Value& alias = {});
/// DBSELECTAREA(area): makes the area with that alias or number current, the next free one for 0; false, and
/// nothing changed, when there is none of that alias.
bool dbselectarea(const Value& area);
/// DBSTRUCT(): the descriptors {name, type, len, dec} of the fields of the current table; {} when none is
/// open.
Value dbstruct();
/// DBOBJECT([area]): the data-server object of that work area (of the current one without), whose property
/// `rddname` names the driver that opened it, as it was written there; NIL when there is none.
Value dbobject(const Value& alias = {});
/// The table in that area (in the current one without), null when there is none.
Table* table_of(const Value& alias = {});
/// Selects that work area and closes it, the current one without an argument; what was changed is written,
/// and its locks are given back. Nothing happens when there is none.
void dbclosearea(const Value& alias = {});
/// DBCLOSEALL(): closes all areas; area 1 is the current one then.
void dbcloseall();

}  // namespace zmfb::host

#pragma GCC visibility pop
