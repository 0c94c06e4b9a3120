/// The methods that bring DBF files in and out, and their helpers.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// Tables. By way of the data file of the object, which the engine reads and writes.
inline constexpr Method<bool(std::string)> bringdbf{
    "bringdbf", {"dbfname"}, "Imports a DBF file into a new table"};
inline constexpr Method<bool(TableName)> exiletable{
    "exiletable", {"tblname"}, "Exports a table into a new DBF file"};
/// @}

/// @{
/// Files. By handles; -1 for a file that is not to be had.
inline constexpr Method<std::int64_t(std::string)> fcrtfile{
    "fcrtfile", {"name"}, "Creates an empty file", MethodKind::protected_};
inline constexpr Method<std::int64_t(std::string, std::optional<std::string>)> fopnfile{
    "fopnfile", {"name", "mode"}, "Opens a file for reading, or locked for writing", MethodKind::protected_};
inline constexpr Method<void(std::int64_t)> fclsfile{
    "fclsfile", {"handle"}, "Unlocks and closes a file", MethodKind::protected_};
/// @}

/// @{
/// Names and texts. Parts of names and texts.
inline constexpr Method<std::string(std::string)> getfilename{
    "getfilename", {"path"}, "File name of a path", MethodKind::protected_};
inline constexpr Method<std::string(std::string)> removefilenameext{
    "removefilenameext", {"name"}, "File name up to its first dot", MethodKind::protected_};
inline constexpr Method<std::string(std::string)> removezerobytes{
    "removezerobytes", {"line"}, "Text up to its first zero byte", MethodKind::protected_};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow transfer[] = {
    m::bringdbf, m::exiletable,  m::fclsfile,          m::fcrtfile,
    m::fopnfile, m::getfilename, m::removefilenameext, m::removezerobytes,
};

}  // namespace zmfb::declared
