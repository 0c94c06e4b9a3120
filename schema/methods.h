/// The methods of schema/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::schema {

// Every statement is committed on its own: a method that stops half-way leaves what it has done. What a
// failing statement raises ends in the SQLCODE error text; where the error block returns, the method answers
// .F.. The texts are ISO-8859-1. Without a database every statement counts as done.

/// \name Creation
/// @{
/// createtable(tblname, struct): makes a table in the driver's layout: the columns of the structure,
/// RDD_AREAID and RECNO, the description, the index on RECNO, two generators, two triggers. The name is
/// upper-cased and trimmed. .F. and raised: a table or view that exists, every field whose type is not C, N,
/// D or L (logged at level 0 too; nothing is created), and the first thing that fails. .T. and nothing done:
/// no name, or no structure.
Value createtable(Self& self, Args args);
/// createtableexternal(tblname, struct, datfile): declares an external table over a data file: the columns of
/// the structure and nothing else. As createtable otherwise.
Value createtableexternal(Self& self, Args args);
/// createview(vwname, fldsalias, stmt): makes a view with the columns `fldsalias`, parted by commas. Raises
/// and answers .F. when it fails.
Value createview(Self& self, Args args);
/// grantaccess(priv, tbl, user): grants. Raises (without the error text) and answers .F. when it fails.
Value grantaccess(Self& self, Args args);
/// @}

/// \name Single drops
/// The name is upper-cased and trimmed. An empty one: .F. and nothing done. A failure, such as of an object
/// that does not exist, is raised: .F..
/// @{
Value dropgenerator(Self& self, Args args);  ///< dropgenerator(genname)
Value droptrigger(Self& self, Args args);    ///< droptrigger(trigname)
Value dropindex(Self& self, Args args);      ///< dropindex(idxname)
Value droponlytable(Self& self, Args args);  ///< droponlytable(tblname): not its generators
Value dropview(Self& self, Args args);       ///< dropview(vwname)
/// @}

/// \name Drops with what depends
/// Each stops with .F. at the first drop that fails, which has raised. A view, index or trigger whose name
/// needs quotes is raised before any other is dropped: without them the name would mean another object, or
/// none.
/// @{
/// dropviewsfromtable(tblname): drops the views built on the table; .T. when there are none, .F. without a
/// name.
Value dropviewsfromtable(Self& self, Args args);
/// droptable(tblname): drops the views, the table, and both generators whatever becomes of the first; the
/// second one decides. .F. without a name.
Value droptable(Self& self, Args args);
/// dropindexbasedonfield(tbl, fldname): drops every index that has the column among its segments.
Value dropindexbasedonfield(Self& self, Args args);
/// droptriggerbasedonfield(tbl, fldname): drops every trigger that depends on the column.
Value droptriggerbasedonfield(Self& self, Args args);
/// dropfield(tbl, fldstru): drops those indexes and triggers and then the column; the name of the descriptor
/// goes into the statement as it is. Raises the column's own failure.
Value dropfield(Self& self, Args args);
/// @}

/// \name Rows
/// The table's name is upper-cased, not trimmed. .T. unless the statement failed, which is raised.
/// @{
/// deleterecord(tbl, rec): deletes the row with that record number, a text; none is no error.
Value deleterecord(Self& self, Args args);
/// deleteallrecords(tbl): deletes all rows; record numbers go on from where they were.
Value deleteallrecords(Self& self, Args args);
/// @}

/// \name Alteration
/// Each answers whether it succeeded.
/// @{
/// addfield(tbl, fldstru): adds a column behind the last one, and describes it when it is numeric or logical.
/// Raises a failure of either; a column whose description failed stays. A type other than exactly C, N, D or
/// L: .F. and nothing else.
Value addfield(Self& self, Args args);
/// addlimbofield(tbl, tblstru, fldpos): adds an empty column "RDDLMB_<name>" like field `fldpos` of the
/// structure. .T. and nothing done when that is a limbo field itself or the structure has its limbo field.
Value addlimbofield(Self& self, Args args);
/// renamefield(tbl, oldnm, newnm): the column keeps position, type, default and description.
Value renamefield(Self& self, Args args);
/// setfieldposition(tbl, fstru, pos): moves the descriptor's column, counted from 1 over all columns.
Value setfieldposition(Self& self, Args args);
/// alterfield(tbl, fstru_r, fstru_l): makes of the column that `fstru_l` names one that is as `fstru_r` says,
/// name included, with its data; it becomes the last one. Adds "RDDAUX_<name>", copies, drops the old column
/// with the indexes and triggers that use it, renames. When the copy fails (a value does not convert or fit)
/// the auxiliary column is dropped again; after any other failure what was done stays.
Value alterfield(Self& self, Args args);
/// @}

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "addfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = addfield,
     .help = "Adds a column to a table"},
    {.name = "addlimbofield",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = addlimbofield,
     .help = "Adds the limbo twin of a column"},
    {.name = "alterfield",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = alterfield,
     .help = "Changes type, size or name of a column, keeping its data"},
    {.name = "createtable",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = createtable,
     .help = "Creates a table in the driver's layout"},
    {.name = "createtableexternal",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = createtableexternal,
     .help = "Declares an external table over a data file"},
    {.name = "createview",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = createview,
     .help = "Creates a view"},
    {.name = "deleteallrecords",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = deleteallrecords,
     .help = "Deletes all rows of a table"},
    {.name = "deleterecord",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = deleterecord,
     .help = "Deletes a record by its number"},
    {.name = "dropfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = dropfield,
     .help = "Drops a column with the indexes and triggers that use it"},
    {.name = "dropgenerator",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropgenerator,
     .help = "Drops a generator"},
    {.name = "dropindex",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropindex,
     .help = "Drops an index"},
    {.name = "dropindexbasedonfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = dropindexbasedonfield,
     .help = "Drops the indexes that use a column"},
    {.name = "droponlytable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = droponlytable,
     .help = "Drops a table, not its generators"},
    {.name = "droptable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = droptable,
     .help = "Drops a table with its views and generators"},
    {.name = "droptrigger",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = droptrigger,
     .help = "Drops a trigger"},
    {.name = "droptriggerbasedonfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = droptriggerbasedonfield,
     .help = "Drops the triggers that depend on a column"},
    {.name = "dropview",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropview,
     .help = "Drops a view"},
    {.name = "dropviewsfromtable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropviewsfromtable,
     .help = "Drops the views built on a table"},
    {.name = "grantaccess",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = grantaccess,
     .help = "Grants privileges on a table"},
    {.name = "renamefield",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = renamefield,
     .help = "Renames a column"},
    {.name = "setfieldposition",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = setfieldposition,
     .help = "Moves a column to a position"},
};

}  // namespace zmfb::schema
