/// The methods of the connection object itself.
#pragma once

#include "zmfbconn/method.h"

namespace zmfb::m {

/// @{
/// Attaching and leaving. An object that is made calls init, one that goes calls axit.
inline constexpr Method<void(std::optional<std::string>, std::optional<std::string>,
                             std::optional<std::string>, std::optional<std::string>)>
    init{"init", {"db", "user", "pass", "role"}, "Attaches to a database and runs the start-up checks"};
inline constexpr Method<void()> disconnect{
    "disconnect", {}, "Closes every work area and detaches from the database"};
inline constexpr Method<bool()> axit{
    "axit", {}, "End-of-life handler: disconnects an object that is still attached"};
inline constexpr Method<bool()> isconnected{"isconnected", {}, "Whether a database is attached"};
inline constexpr Method<std::string()> getdatabasename{
    "getdatabasename", {}, "Name of the database as it was given"};
/// @}

/// @{
/// Properties. `connection(m::sdbname)` reads one, `connection(m::assign_bconn, true)` assigns one.
inline constexpr Method<bool()> bconn{"bconn", {}, "Whether a database is attached", MethodKind::access};
inline constexpr Method<Value(Value)> assign_bconn{
    "bconn", {"value"}, "Stores the attached flag", MethodKind::assign};
inline constexpr Method<std::int64_t()> dbhndl{
    "dbhndl", {}, "Database handle, 0 when never attached", MethodKind::access};
inline constexpr Method<Value(Value)> assign_dbhndl{
    "dbhndl", {"value"}, "Stores the database handle", MethodKind::assign};
inline constexpr Method<std::string()> sdbname{"sdbname", {}, "Name of the database", MethodKind::access};
inline constexpr Method<std::string()> susername{"susername", {}, "User name", MethodKind::access};
inline constexpr Method<std::string()> srolename{"srolename", {}, "SQL role", MethodKind::access};
/// @}

/// @{
/// Work areas of the connection. The aliases of the tables that a driver opens through the object.
inline constexpr Method<void(std::string)> announcealias{
    "announcealias", {"als"}, "Notes the alias of a work area opened on this connection"};
inline constexpr Method<void(std::string)> removealias{
    "removealias", {"als"}, "Forgets the alias of a work area"};
inline constexpr Method<void()> closealltables{
    "closealltables", {}, "Closes every work area opened on this connection"};
/// @}

/// @{
/// Driver and settings. What the object keeps for the driver.
inline constexpr Method<void()> savepreviousrdd{"savepreviousrdd",
                                                {},
                                                "Makes this driver the default and keeps the one before it",
                                                MethodKind::protected_};
inline constexpr Method<void()> restorepreviousrdd{
    "restorepreviousrdd",
    {},
    "Makes the driver kept by savepreviousrdd the default again",
    MethodKind::protected_};
inline constexpr Method<bool()> setibrdd{
    "setibrdd", {}, "Makes this driver the default when a database is attached", MethodKind::protected_};
inline constexpr Method<void(bool)> setrddactive{"setrddactive", {"bol"}, "Switches the driver on or off"};
inline constexpr Method<bool()> isrddactive{"isrddactive", {}, "Whether the driver is switched on"};
inline constexpr Method<bool(std::string)> isfirebirdarea{
    "isfirebirdarea", {"als"}, "Whether a work area is served by this driver"};
inline constexpr Method<std::string(std::optional<std::string>)> setfullpathdatfile{
    "setfullpathdatfile", {"fullpath"}, "Sets the path of the data file; a fresh temporary name without one"};
inline constexpr Method<std::string()> getfullpathdatfile{
    "getfullpathdatfile", {}, "Path of the fixed-length data file of transfers"};
inline constexpr Method<void(std::int64_t)> setglbskipmode{
    "setglbskipmode", {"vl"}, "Sets the global skip mode"};
inline constexpr Method<std::int64_t()> getglbskipmode{"getglbskipmode", {}, "Global skip mode: 0, 1 or 2"};
inline constexpr Method<void(std::int64_t)> setglbskipcachesize{
    "setglbskipcachesize", {"sz"}, "Sets the global skip cache size"};
inline constexpr Method<std::int64_t()> getglbskipcachesize{
    "getglbskipcachesize", {}, "Size of the global skip cache"};
/// @}

/// @{
/// The log. One level for all objects of the process.
inline constexpr Method<void(std::int64_t)> setloglevel{
    "setloglevel", {"level"}, "Sets the log level of the process"};
inline constexpr Method<std::int64_t()> getloglevel{"getloglevel", {}, "Log level of the process"};
inline constexpr Method<void(std::string, std::int64_t)> writelog{
    "writelog", {"ln", "level"}, "Writes a log entry", MethodKind::protected_};
/// @}

/// @{
/// The greeting screen. Nothing without the full screen of curses.
inline constexpr Method<bool()> iscurseson{"iscurseson", {}, "Whether the program runs full-screen"};
inline constexpr Method<void()> showgreetscr{
    "showgreetscr", {}, "Shows the greeting box on a full screen", MethodKind::protected_};
inline constexpr Method<void()> hidegreetscr{
    "hidegreetscr", {}, "Puts back the screen under the greeting box", MethodKind::protected_};
/// @}

/// @{
/// Calling by name. For names that are texts.
inline constexpr Method<void(std::string)> nomethod{"nomethod", {"meth"}, "Handler of unknown method names"};
inline constexpr Method<Value(std::string, std::optional<Array>)> evalmeth{
    "evalmeth", {"met", "param"}, "Calls the method whose name is a text, with up to five arguments"};
/// @}

}  // namespace zmfb::m

namespace zmfb::declared {

inline constexpr MethodRow connection[] = {
    m::announcealias,
    m::axit,
    m::bconn,
    m::assign_bconn,
    m::closealltables,
    m::dbhndl,
    m::assign_dbhndl,
    m::disconnect,
    m::evalmeth,
    m::getdatabasename,
    m::getfullpathdatfile,
    m::getglbskipcachesize,
    m::getglbskipmode,
    m::getloglevel,
    m::hidegreetscr,
    m::init,
    m::isconnected,
    m::iscurseson,
    m::isfirebirdarea,
    m::isrddactive,
    m::nomethod,
    m::removealias,
    m::restorepreviousrdd,
    m::savepreviousrdd,
    m::sdbname,
    m::setfullpathdatfile,
    m::setglbskipcachesize,
    m::setglbskipmode,
    m::setibrdd,
    m::setloglevel,
    m::setrddactive,
    m::showgreetscr,
    m::srolename,
    m::susername,
    m::writelog,
};

}  // namespace zmfb::declared
