/// The methods that ask the system tables of the database.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// Existence. A query that fails reads as false.
inline constexpr Method<bool(TableName)> istable{"istable", {"tbl"}, "Whether a table or view exists"};
inline constexpr Method<bool(TableName)> isview{"isview", {"vwname"}, "Whether a view exists"};
inline constexpr Method<bool(TableName, std::string)> isfieldoftable{
    "isfieldoftable", {"tbl", "fldname"}, "Whether a table has a column"};
inline constexpr Method<bool(std::string)> isindex{"isindex", {"ind"}, "Whether an index exists"};
inline constexpr Method<bool(TableName, std::string)> isindexoftable{
    "isindexoftable", {"tbl", "ind"}, "Whether an index belongs to a table"};
inline constexpr Method<bool(std::string)> istrigger{"istrigger", {"trig"}, "Whether a trigger exists"};
inline constexpr Method<bool(TableName, std::string)> istriggeroftable{
    "istriggeroftable", {"tbl", "trig"}, "Whether a trigger belongs to a table"};
inline constexpr Method<bool(std::string, std::string)> isudf{
    "isudf", {"udfname", "modname"}, "Whether an external function is declared"};
inline constexpr Method<bool()> isallneededudfsinstalled{
    "isallneededudfsinstalled",
    {},
    "Whether every function the driver needs is declared",
    MethodKind::protected_};
/// @}

/// @{
/// Listings. Empty when there is nothing, and when the query failed.
inline constexpr Method<TableNames()> gettablesname{
    "gettablesname", {}, "Names of all user tables and views"};
inline constexpr Method<TextRows(std::string)> getindexfields{
    "getindexfields", {"ind"}, "Segments of an index"};
inline constexpr Method<TextRows(std::string)> getfieldsontrigger{
    "getfieldsontrigger", {"trigname"}, "Columns that a trigger depends on", MethodKind::protected_};
/// @}

/// @{
/// Counts. 0 when the query failed.
inline constexpr Method<std::int64_t(TableName)> counttablerecords{
    "counttablerecords", {"tbl"}, "Number of rows of a table, counted"};
inline constexpr Method<std::int64_t(TableName)> gettablenumberofinserts{
    "gettablenumberofinserts", {"tbl"}, "How many rows were ever inserted"};
inline constexpr Method<std::int64_t(TableName)> gettablereccount{
    "gettablereccount", {"tbl"}, "Number of records by the insert and delete counters"};
/// @}

/// @{
/// Structure. The fields of a table, and what they are made of.
inline constexpr Method<Structure(TableName)> gettablestruct{
    "gettablestruct", {"tbl"}, "Structure of a table as field descriptors"};
inline constexpr Method<TextRows(TableName)> getinternaltablestruct{
    "getinternaltablestruct", {"tbl"}, "Catalog rows of the columns of a table", MethodKind::protected_};
inline constexpr Method<std::string(std::string, std::string)> execregex{
    "execregex", {"str", "expr"}, "Last group that a regular expression captures", MethodKind::protected_};
inline constexpr Method<bool(TableName)> iszmrddtable{
    "iszmrddtable", {"tbl"}, "Whether a table was created by this driver"};
/// @}

/// @{
/// Driver fields. These look at structures, not at the database.
inline constexpr Method<bool(std::string)> islimbofield{
    "islimbofield", {"fldname"}, "Whether a name is that of a limbo field"};
inline constexpr Method<bool(std::string, Structure)> isfieldinstru{
    "isfieldinstru", {"fldname", "tblstru"}, "Whether a structure has a field", MethodKind::protected_};
inline constexpr Method<Structure(Structure)> filterrddfields{
    "filterrddfields",
    {"tblstru"},
    "The fields of a structure that belong to the application",
    MethodKind::protected_};
inline constexpr Method<Structure(Structure)> filternormalfields{
    "filternormalfields",
    {"tblstru"},
    "The fields of a structure that the driver keeps for itself",
    MethodKind::protected_};
inline constexpr Method<Array(Structure)> setrddfields{
    "setrddfields", {"astruct"}, "Tags each field of a structure with its kind"};
/// @}

/// @{
/// Descriptions. Of tables, indexes and columns.
inline constexpr Method<Status(TableName, std::string)> settabledescription{
    "settabledescription", {"tbl", "descr"}, "Sets the description of a table"};
inline constexpr Method<Status(std::string, std::string)> setindexdescription{
    "setindexdescription", {"ind", "descr"}, "Sets the description of an index"};
inline constexpr Method<Status(TableName, std::string, std::string)> setfielddescription{
    "setfielddescription", {"tbl", "fldname", "descr"}, "Sets the description of a column"};
inline constexpr Method<Texts(TableName)> gettabledescription{
    "gettabledescription", {"tbl"}, "Description of a table"};
inline constexpr Method<Texts(std::string)> getindexdescription{
    "getindexdescription", {"ind"}, "Description of an index"};
inline constexpr Method<Texts(TableName, std::string)> getfielddescription{
    "getfielddescription", {"tbl", "fldname"}, "Description of a column"};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow catalog[] = {
    m::counttablerecords,
    m::execregex,
    m::filternormalfields,
    m::filterrddfields,
    m::getfielddescription,
    m::getfieldsontrigger,
    m::getindexdescription,
    m::getindexfields,
    m::getinternaltablestruct,
    m::gettabledescription,
    m::gettablenumberofinserts,
    m::gettablereccount,
    m::gettablesname,
    m::gettablestruct,
    m::isallneededudfsinstalled,
    m::isfieldinstru,
    m::isfieldoftable,
    m::isindex,
    m::isindexoftable,
    m::islimbofield,
    m::istable,
    m::istrigger,
    m::istriggeroftable,
    m::isudf,
    m::isview,
    m::iszmrddtable,
    m::setfielddescription,
    m::setindexdescription,
    m::setrddfields,
    m::settabledescription,
};

}  // namespace zmfb::declared
