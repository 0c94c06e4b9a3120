/// The methods of transfer/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/transfer.h"

namespace zmfb::transfer {

/// bringdbf(dbfname): imports a DBF file into a new driver table, named like the file up to its first dot, in
/// upper case. Answers .T. when the table was made and filled, with as many rows as there are records, which
/// are counted before the copy and after it; .F., with nothing raised, for an empty `dbfname`.
///
/// The records go by way of the data file (getfullpathdatfile), which is left on disk, and of the external
/// table "EXT_" + table over it. Deleted records come along. Blank numbers arrive as 0, dates that are none
/// as NULL. A file that holds fewer records than it counts gives those it holds, what is missing of the last
/// one as blanks.
///
/// Logged at level 4: a line with the sizes; a warning when the header has no terminator; a character set of
/// more than a byte; a table that exists already; numbers that differ. Raised: a file that cannot be opened,
/// that has a memo, that is no DBF (another type, a header that is not all there, records too short for their
/// fields); a default character set of more than a byte a character, before anything is made; a table or an
/// external table that exists; a data file that cannot be made or not be written whole; another number of
/// rows than of records; a copy that the database refused; and what createtable, createtableexternal,
/// droptrigger and droponlytable raise. A trigger that cannot be made is not raised.
///
/// Nothing is undone on failure. The DBF file stays open after the memo's refusal, after an existing table,
/// and after any failure between the making of the table and the copy; what was made by then stays in the
/// database.
Value bringdbf(Self& self, Args args);
/// exiletable(tblname): writes the rows of a table into a new DBF file, `tblname` + ".dbf" in the current
/// directory, its fields those that filterrddfields leaves. Answers .T. when the rows went into the data file
/// and from there into the DBF file, and that has a record for each row that was there before the copy; rows
/// that others add or remove meanwhile may be among them.
///
/// The database writes the data file through the external table "EXT_" + tblname, one line a row. `tblname`
/// is used as given. A table without fields answers .F. and makes nothing. A DBF file that cannot be created
/// and a data file that cannot be made answer .F. with nothing raised.
///
/// Raised: an external table that exists, a copy that the database refused, what createtableexternal and
/// droponlytable raise, and as a runtime error a DBF file that cannot be opened or filled. Logged at level 4
/// and raised: a default character set of more than a byte a character, before anything is made, and another
/// number of rows than of records. In every case an external table of that name is dropped at the end, also
/// one of an earlier run; the data file and the DBF file stay. The table is only read.
Value exiletable(Self& self, Args args);
/// fclsfile(handle): unlocks and closes; a negative handle is ignored. NIL.
Value fclsfile(Self& self, Args args);
/// fcrtfile(name): the handle of a new, empty file, -1 when it cannot be made (host/file.h tells why).
Value fcrtfile(Self& self, Args args);
/// fopnfile(name [, mode]): the handle of a file opened by mode "r" (the default) for reading, by "rw" for
/// reading and writing with the whole file locked; -1 when it cannot be opened or the mode is another.
///
/// A lock is tried seven times, half a second apart. One that was not had within the first five tries leaves
/// the file closed; the handle returned is then one that is no longer open.
Value fopnfile(Self& self, Args args);
/// getfilename(path): what stands behind the last "/".
Value getfilename(Self& self, Args args);
/// removefilenameext(name): what stands before the first ".", which is nothing for a name that begins with
/// one.
Value removefilenameext(Self& self, Args args);
/// removezerobytes(line): what stands before the first zero byte.
Value removezerobytes(Self& self, Args args);

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::bringdbf, bringdbf),
    bound(m::exiletable, exiletable),
    bound(m::fclsfile, fclsfile),
    bound(m::fcrtfile, fcrtfile),
    bound(m::fopnfile, fopnfile),
    bound(m::getfilename, getfilename),
    bound(m::removefilenameext, removefilenameext),
    bound(m::removezerobytes, removezerobytes),
};

}  // namespace zmfb::transfer
