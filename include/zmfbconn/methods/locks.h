/// The methods by which programs share tables.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// System tables. What all programs keep registrations and locks in.
inline constexpr Method<bool()> createtableofopn{
    "createtableofopn", {}, "Creates the table of open registrations when absent"};
inline constexpr Method<bool()> createtableofflocks{
    "createtableofflocks", {}, "Creates the table of table locks when absent"};
inline constexpr Method<bool()> createtableofrlocks{
    "createtableofrlocks", {}, "Creates the table of record locks when absent"};
inline constexpr Method<bool()> clearsystemtables{
    "clearsystemtables", {}, "Removes all registrations and locks of everybody"};
/// @}

/// @{
/// Identity. Who this process is, and one work area of it.
inline constexpr Method<std::int64_t()> getpid{"getpid", {}, "Process id", MethodKind::protected_};
inline constexpr Method<std::string()> gethostname{
    "gethostname", {}, "Canonical name of this host", MethodKind::protected_};
inline constexpr Method<std::string()> getipaddress{
    "getipaddress", {}, "Network address of this host", MethodKind::protected_};
inline constexpr Method<AreaId(TableName, std::string)> getuniqueareaid{
    "getuniqueareaid", {"tbl", "area"}, "Area id of a work area of this process"};
/// @}

/// @{
/// Open registrations. Who has a table open, and how.
inline constexpr Method<bool(bool, TableName, AreaId, bool)> settableusedbyarea{
    "settableusedbyarea", {"bol", "tbl", "areaid", "shared"}, "Registers or unregisters an open of a table"};
inline constexpr Method<bool(TableName, AreaId)> istableusedbyarea{
    "istableusedbyarea", {"tbl", "areaid"}, "Whether an area has a table registered", MethodKind::protected_};
inline constexpr Method<bool(TableName)> istableinuse{
    "istableinuse", {"tbl"}, "Whether some area has a table open", MethodKind::protected_};
inline constexpr Method<bool(TableName)> istableinexclusivemode{
    "istableinexclusivemode",
    {"tbl"},
    "Whether some area has a table open exclusively",
    MethodKind::protected_};
inline constexpr Method<RecordNumber(TableName, AreaId)> getapprecnofromarea{
    "getapprecnofromarea", {"tbl", "areaid"}, "Record number of the last append of an area"};
/// @}

/// @{
/// Record locks. None of these waits for a lock to be given back.
inline constexpr Method<bool(TableName, AreaId, RecordNumber)> setrecordaslocked{
    "setrecordaslocked", {"tbl", "areaid", "recno"}, "Locks a record for an area"};
inline constexpr Method<bool(TableName, AreaId, RecordNumber)> setrecordasunlocked{
    "setrecordasunlocked", {"tbl", "areaid", "recno"}, "Unlocks a record of an area"};
inline constexpr Method<bool(TableName, AreaId)> unlockallrecords{
    "unlockallrecords", {"tbl", "areaid"}, "Unlocks all records of an area in a table"};
inline constexpr Method<RecordNumbers(TableName, AreaId)> getlockedrecords{
    "getlockedrecords", {"tbl", "areaid"}, "Record numbers that an area has locked"};
inline constexpr Method<bool(TableName, AreaId, RecordNumber)> isrecordlocked{
    "isrecordlocked", {"tbl", "areaid", "recno"}, "Whether anyone holds the lock of a record"};
inline constexpr Method<bool(TableName, AreaId, RecordNumber)> isrecordlockedbyuser{
    "isrecordlockedbyuser", {"tbl", "areaid", "recno"}, "Whether an area holds the lock of a record"};
inline constexpr Method<bool(TableName, AreaId, RecordNumber)> isrecordlockedbyanotheruser{
    "isrecordlockedbyanotheruser",
    {"tbl", "areaid", "recno"},
    "Whether another area holds the lock of a record"};
inline constexpr Method<AreaId(TableName, RecordNumber)> getrlockareaid{
    "getrlockareaid", {"tbl", "recno"}, "Area id that holds a record lock", MethodKind::protected_};
inline constexpr Method<bool(TableName, AreaId)> existsuserrlocks{
    "existsuserrlocks",
    {"tbl", "areaid"},
    "Whether an area holds a record lock of a table",
    MethodKind::protected_};
inline constexpr Method<bool(TableName, AreaId)> existsanotheruserrlocks{
    "existsanotheruserrlocks",
    {"tbl", "areaid"},
    "Whether another area holds a record lock of a table",
    MethodKind::protected_};
/// @}

/// @{
/// Table locks. As for record locks.
inline constexpr Method<bool(TableName, AreaId)> settableaslocked{
    "settableaslocked", {"tbl", "areaid"}, "Locks a table for an area"};
inline constexpr Method<bool(TableName, AreaId)> settableasunlocked{
    "settableasunlocked", {"tbl", "areaid"}, "Unlocks a table of an area"};
inline constexpr Method<bool(TableName, AreaId)> istablelockedbyuser{
    "istablelockedbyuser", {"tbl", "areaid"}, "Whether an area holds the table lock"};
inline constexpr Method<bool(TableName, AreaId)> existsanotheruserflock{
    "existsanotheruserflock",
    {"tbl", "areaid"},
    "Whether another area holds the table lock",
    MethodKind::protected_};
inline constexpr Method<AreaId(TableName)> getflockareaid{
    "getflockareaid", {"tbl"}, "Area id that holds the table lock"};
inline constexpr Method<TextRows()> getlockedtables{"getlockedtables", {}, "All table locks of all areas"};
inline constexpr Method<bool(TableName)> releaselocks{
    "releaselocks", {"tbl"}, "Removes every lock on a table, whoever holds it"};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow locks[] = {
    m::clearsystemtables,      m::createtableofflocks,
    m::createtableofopn,       m::createtableofrlocks,
    m::existsanotheruserflock, m::existsanotheruserrlocks,
    m::existsuserrlocks,       m::getapprecnofromarea,
    m::getflockareaid,         m::gethostname,
    m::getipaddress,           m::getlockedrecords,
    m::getlockedtables,        m::getpid,
    m::getrlockareaid,         m::getuniqueareaid,
    m::isrecordlocked,         m::isrecordlockedbyanotheruser,
    m::isrecordlockedbyuser,   m::istableinexclusivemode,
    m::istableinuse,           m::istablelockedbyuser,
    m::istableusedbyarea,      m::releaselocks,
    m::setrecordaslocked,      m::setrecordasunlocked,
    m::settableaslocked,       m::settableasunlocked,
    m::settableusedbyarea,     m::unlockallrecords,
};

}  // namespace zmfb::declared
