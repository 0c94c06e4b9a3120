/// The methods of catalog/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/catalog.h"

namespace zmfb::catalog {

/// \name Existence
/// Each asks the system tables and answers .T. or .F.. Names are upper-cased where it says so, and neither
/// trimmed nor escaped: one with a single quote in it breaks the query, which reads as .F. like any query
/// that fails.
/// @{
/// istable(tbl): whether there is a table or view of that name, upper-cased.
Value istable(Self& self, Args args);
/// isview(vwname): whether there is a view of that name, upper-cased.
Value isview(Self& self, Args args);
/// isfieldoftable(tbl, fldname): whether the table or view has that column, both upper-cased.
Value isfieldoftable(Self& self, Args args);
/// isindex(ind): whether there is an index of that name, upper-cased.
Value isindex(Self& self, Args args);
/// istrigger(trig): whether there is a trigger of that name, upper-cased.
Value istrigger(Self& self, Args args);
/// isindexoftable(tbl, ind): whether the index belongs to the table, both upper-cased.
Value isindexoftable(Self& self, Args args);
/// istriggeroftable(tbl, trig): whether the trigger belongs to the table, both upper-cased.
Value istriggeroftable(Self& self, Args args);
/// isudf(udfname, modname): whether the module's function is declared; both names as they are.
Value isudf(Self& self, Args args);
/// isallneededudfsinstalled(): whether all functions of the module "zmrddudfs" that the driver needs are
/// declared, or all are there as stored functions with the same parameters, which is asked at the first that
/// is not declared. Does not tell which is missing.
Value isallneededudfsinstalled(Self& self, Args args);
/// @}

/// \name Listings
/// An empty array when there is nothing, or the query failed.
/// @{
/// gettablesname(): trimmed names of all user tables and views, in order.
Value gettablesname(Self& self, Args args);
/// getindexfields(ind): the segments of an index (upper-cased) in their order, each a row of one element: the
/// column's name as the query gave it, padded with blanks.
Value getindexfields(Self& self, Args args);
/// getfieldsontrigger(trigname): the columns that a trigger (upper-cased and trimmed) depends on, rows
/// likewise.
Value getfieldsontrigger(Self& self, Args args);
/// @}

/// \name Counts
/// Numbers; the table's name is upper-cased. 0 when the query failed.
/// @{
/// counttablerecords(tbl): the number of rows, counted.
Value counttablerecords(Self& self, Args args);
/// gettablenumberofinserts(tbl): the insert generator, how many rows were ever inserted.
Value gettablenumberofinserts(Self& self, Args args);
/// gettablereccount(tbl): inserts minus deletes by the two generators, the number of rows without a scan. A
/// table without them is counted, which is logged at level 5.
Value gettablereccount(Self& self, Args args);
/// @}

/// \name Structure
/// @{
/// getinternaltablestruct(tbl): a row for each column in order of position: name, type code, sub-type, length
/// in bytes, scale, null flag, precision, position, all as texts. Empty for an unknown table.
Value getinternaltablestruct(Self& self, Args args);
/// gettablestruct(tbl): the structure as field descriptors {name, type, len, dec}, the driver's own columns
/// among them; type "C", "N", "D" or "L", "U" for a column that the driver does not map. A numeric's length
/// is what its description keeps in "NUMERIC(len,dec)", else its precision, else 15; a CHAR whose description
/// has "LOGICAL" in it is "L". One query for the columns and one for the description of each. Empty for an
/// unknown table.
Value gettablestruct(Self& self, Args args);
/// execregex(str, expr): what the last group of the extended regular expression captures in `str`; "" when it
/// does not match, has no group or is not valid. See matchregex().
Value execregex(Self& self, Args args);
/// iszmrddtable(tbl): whether the table's description, trimmed, is "Created by ZMRDDFIRE".
Value iszmrddtable(Self& self, Args args);
/// @}

/// \name Driver fields
/// Names are compared exactly as they stand in a structure, which gettablestruct gives in upper case.
/// @{
/// islimbofield(fldname): whether the name begins with "RDDLMB_".
Value islimbofield(Self& self, Args args);
/// isfieldinstru(fldname, tblstru): whether the structure has a field of that name, upper-cased and trimmed.
Value isfieldinstru(Self& self, Args args);
/// filterrddfields(tblstru): a new structure without RECNO, RDD_AREAID and the index columns ("RDDIDX_",
/// "IDX_"); limbo fields stay.
Value filterrddfields(Self& self, Args args);
/// filternormalfields(tblstru): a new structure of those columns and the limbo fields.
Value filternormalfields(Self& self, Args args);
/// setrddfields(astruct): {structure, limbo flag}: the descriptors with a fifth element for the kind, 1 for a
/// numeric RECNO, 3 for a character RDD_AREAID, 2 for "RDDIDX_", else 0; the flag is .T. when there is a
/// limbo field.
Value setrddfields(Self& self, Args args);
/// @}

/// \name Descriptions
/// Names are upper-cased, neither trimmed nor escaped.
///
/// The setters give back "" or the SQLCODE error text, and raise nothing; what does not exist is not
/// described, which is no error. Up to Firebird 2.5 the system table is updated. Later engines refuse that,
/// so it is COMMENT ON there, only for an object that exists (a name with trailing blanks names none); ""
/// then removes the description, and the description is kept in UTF-8.
///
/// The getters give back an array of one text: the first 255 bytes of the description, padded with blanks;
/// "NULL" for an object without one; "" when there is no such object or the query failed.
/// @{
Value settabledescription(Self& self, Args args);  ///< settabledescription(tbl, descr)
Value setindexdescription(Self& self, Args args);  ///< setindexdescription(ind, descr)
Value setfielddescription(Self& self, Args args);  ///< setfielddescription(tbl, fldname, descr)
Value gettabledescription(Self& self, Args args);  ///< gettabledescription(tbl)
Value getindexdescription(Self& self, Args args);  ///< getindexdescription(ind)
Value getfielddescription(Self& self, Args args);  ///< getfielddescription(tbl, fldname)
/// @}

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::counttablerecords, counttablerecords),
    bound(m::execregex, execregex),
    bound(m::filternormalfields, filternormalfields),
    bound(m::filterrddfields, filterrddfields),
    bound(m::getfielddescription, getfielddescription),
    bound(m::getfieldsontrigger, getfieldsontrigger),
    bound(m::getindexdescription, getindexdescription),
    bound(m::getindexfields, getindexfields),
    bound(m::getinternaltablestruct, getinternaltablestruct),
    bound(m::gettabledescription, gettabledescription),
    bound(m::gettablenumberofinserts, gettablenumberofinserts),
    bound(m::gettablereccount, gettablereccount),
    bound(m::gettablesname, gettablesname),
    bound(m::gettablestruct, gettablestruct),
    bound(m::isallneededudfsinstalled, isallneededudfsinstalled),
    bound(m::isfieldinstru, isfieldinstru),
    bound(m::isfieldoftable, isfieldoftable),
    bound(m::isindex, isindex),
    bound(m::isindexoftable, isindexoftable),
    bound(m::islimbofield, islimbofield),
    bound(m::istable, istable),
    bound(m::istrigger, istrigger),
    bound(m::istriggeroftable, istriggeroftable),
    bound(m::isudf, isudf),
    bound(m::isview, isview),
    bound(m::iszmrddtable, iszmrddtable),
    bound(m::setfielddescription, setfielddescription),
    bound(m::setindexdescription, setindexdescription),
    bound(m::setrddfields, setrddfields),
    bound(m::settabledescription, settabledescription),
};

}  // namespace zmfb::catalog
