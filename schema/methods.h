/// The methods of schema/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/schema.h"

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

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::addfield, addfield),
    bound(m::addlimbofield, addlimbofield),
    bound(m::alterfield, alterfield),
    bound(m::createtable, createtable),
    bound(m::createtableexternal, createtableexternal),
    bound(m::createview, createview),
    bound(m::deleteallrecords, deleteallrecords),
    bound(m::deleterecord, deleterecord),
    bound(m::dropfield, dropfield),
    bound(m::dropgenerator, dropgenerator),
    bound(m::dropindex, dropindex),
    bound(m::dropindexbasedonfield, dropindexbasedonfield),
    bound(m::droponlytable, droponlytable),
    bound(m::droptable, droptable),
    bound(m::droptrigger, droptrigger),
    bound(m::droptriggerbasedonfield, droptriggerbasedonfield),
    bound(m::dropview, dropview),
    bound(m::dropviewsfromtable, dropviewsfromtable),
    bound(m::grantaccess, grantaccess),
    bound(m::renamefield, renamefield),
    bound(m::setfieldposition, setfieldposition),
};

}  // namespace zmfb::schema
