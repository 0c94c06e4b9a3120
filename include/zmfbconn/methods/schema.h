/// The methods that make, change and drop tables and what belongs to them, and delete rows.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// Creation. Whether it was made; why not is raised.
inline constexpr Method<bool(TableName, Structure)> createtable{
    "createtable", {"tblname", "struct"}, "Creates a table in the driver's layout"};
inline constexpr Method<bool(TableName, Structure, std::string)> createtableexternal{
    "createtableexternal", {"tblname", "struct", "datfile"}, "Declares an external table over a data file"};
inline constexpr Method<bool(TableName, std::string, std::string)> createview{
    "createview", {"vwname", "fldsalias", "stmt"}, "Creates a view"};
inline constexpr Method<bool(std::string, TableName, std::string)> grantaccess{
    "grantaccess", {"priv", "tbl", "user"}, "Grants privileges on a table"};
/// @}

/// @{
/// Dropping one thing. Whether it was dropped; why not is raised.
inline constexpr Method<bool(std::string)> dropgenerator{"dropgenerator", {"genname"}, "Drops a generator"};
inline constexpr Method<bool(std::string)> droptrigger{"droptrigger", {"trigname"}, "Drops a trigger"};
inline constexpr Method<bool(std::string)> dropindex{"dropindex", {"idxname"}, "Drops an index"};
inline constexpr Method<bool(TableName)> droponlytable{
    "droponlytable", {"tblname"}, "Drops a table, not its generators"};
inline constexpr Method<bool(TableName)> dropview{"dropview", {"vwname"}, "Drops a view"};
/// @}

/// @{
/// Dropping with what depends on it. Each stops at the first drop that fails.
inline constexpr Method<bool(TableName)> droptable{
    "droptable", {"tblname"}, "Drops a table with its views and generators"};
inline constexpr Method<bool(TableName)> dropviewsfromtable{
    "dropviewsfromtable", {"tblname"}, "Drops the views built on a table"};
inline constexpr Method<bool(TableName, std::string)> dropindexbasedonfield{
    "dropindexbasedonfield",
    {"tbl", "fldname"},
    "Drops the indexes that use a column",
    MethodKind::protected_};
inline constexpr Method<bool(TableName, std::string)> droptriggerbasedonfield{
    "droptriggerbasedonfield",
    {"tbl", "fldname"},
    "Drops the triggers that depend on a column",
    MethodKind::protected_};
inline constexpr Method<bool(TableName, FieldDescriptor)> dropfield{
    "dropfield",
    {"tbl", "fldstru"},
    "Drops a column with the indexes and triggers that use it",
    MethodKind::protected_};
/// @}

/// @{
/// Rows. Whether the statement went well; why not is raised.
inline constexpr Method<bool(TableName, RecordNumber)> deleterecord{
    "deleterecord", {"tbl", "rec"}, "Deletes a record by its number"};
inline constexpr Method<bool(TableName)> deleteallrecords{
    "deleteallrecords", {"tbl"}, "Deletes all rows of a table"};
/// @}

/// @{
/// Alteration. Whether the column is as wanted; why not is raised.
inline constexpr Method<bool(TableName, FieldDescriptor)> addfield{
    "addfield", {"tbl", "fldstru"}, "Adds a column to a table", MethodKind::protected_};
inline constexpr Method<bool(TableName, Structure, std::int64_t)> addlimbofield{
    "addlimbofield", {"tbl", "tblstru", "fldpos"}, "Adds the limbo twin of a column", MethodKind::protected_};
inline constexpr Method<bool(TableName, std::string, std::string)> renamefield{
    "renamefield", {"tbl", "oldnm", "newnm"}, "Renames a column", MethodKind::protected_};
inline constexpr Method<bool(TableName, FieldDescriptor, std::int64_t)> setfieldposition{
    "setfieldposition", {"tbl", "fstru", "pos"}, "Moves a column to a position", MethodKind::protected_};
inline constexpr Method<bool(TableName, FieldDescriptor, FieldDescriptor)> alterfield{
    "alterfield",
    {"tbl", "fstru_r", "fstru_l"},
    "Changes type, size or name of a column, keeping its data",
    MethodKind::protected_};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow schema[] = {
    m::addfield,
    m::addlimbofield,
    m::alterfield,
    m::createtable,
    m::createtableexternal,
    m::createview,
    m::deleteallrecords,
    m::deleterecord,
    m::dropfield,
    m::dropgenerator,
    m::dropindex,
    m::dropindexbasedonfield,
    m::droponlytable,
    m::droptable,
    m::droptrigger,
    m::droptriggerbasedonfield,
    m::dropview,
    m::dropviewsfromtable,
    m::grantaccess,
    m::renamefield,
    m::setfieldposition,
};

}  // namespace zmfb::declared
