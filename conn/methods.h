/// The methods of conn/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::conn {

Value announcealias(Self& self, Args args);
Value axit(Self& self, Args args);
Value access_bconn(Self& self, Args args);
Value assign_bconn(Self& self, Args args);
Value closealltables(Self& self, Args args);
Value access_dbhndl(Self& self, Args args);
Value assign_dbhndl(Self& self, Args args);
Value disconnect(Self& self, Args args);
Value evalmeth(Self& self, Args args);
Value getdatabasename(Self& self, Args args);
Value getfullpathdatfile(Self& self, Args args);
Value getglbskipcachesize(Self& self, Args args);
Value getglbskipmode(Self& self, Args args);
Value getloglevel(Self& self, Args args);
Value hidegreetscr(Self& self, Args args);
Value init(Self& self, Args args);
Value isconnected(Self& self, Args args);
Value iscurseson(Self& self, Args args);
Value isfirebirdarea(Self& self, Args args);
Value isrddactive(Self& self, Args args);
Value nomethod(Self& self, Args args);
Value removealias(Self& self, Args args);
Value restorepreviousrdd(Self& self, Args args);
Value savepreviousrdd(Self& self, Args args);
Value access_sdbname(Self& self, Args args);
Value setfullpathdatfile(Self& self, Args args);
Value setglbskipcachesize(Self& self, Args args);
Value setglbskipmode(Self& self, Args args);
Value setibrdd(Self& self, Args args);
Value setloglevel(Self& self, Args args);
Value setrddactive(Self& self, Args args);
Value showgreetscr(Self& self, Args args);
Value access_srolename(Self& self, Args args);
Value access_susername(Self& self, Args args);
Value writelog(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "announcealias",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = announcealias,
     .help = "Notes the alias of a work area opened on this connection"},
    {.name = "axit",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = axit,
     .help = "End-of-life handler: disconnects an object that is still attached"},
    {.name = "bconn",
     .parameters = 0,
     .kind = MethodKind::access,
     .routine = access_bconn,
     .help = "Whether a database is attached"},
    {.name = "bconn",
     .parameters = 1,
     .kind = MethodKind::assign,
     .routine = assign_bconn,
     .help = "Stores the attached flag"},
    {.name = "closealltables",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = closealltables,
     .help = "Closes every work area opened on this connection"},
    {.name = "dbhndl",
     .parameters = 0,
     .kind = MethodKind::access,
     .routine = access_dbhndl,
     .help = "Database handle, 0 when never attached"},
    {.name = "dbhndl",
     .parameters = 1,
     .kind = MethodKind::assign,
     .routine = assign_dbhndl,
     .help = "Stores the database handle"},
    {.name = "disconnect",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = disconnect,
     .help = "Closes every work area and detaches from the database"},
    {.name = "evalmeth",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = evalmeth,
     .help = "Calls the method whose name is a text, with up to five arguments"},
    {.name = "getdatabasename",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = getdatabasename,
     .help = "Name of the database as it was given"},
    {.name = "getfullpathdatfile",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = getfullpathdatfile,
     .help = "Path of the fixed-length data file of transfers"},
    {.name = "getglbskipcachesize",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = getglbskipcachesize,
     .help = "Size of the global skip cache"},
    {.name = "getglbskipmode",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = getglbskipmode,
     .help = "Global skip mode: 0, 1 or 2"},
    {.name = "getloglevel",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = getloglevel,
     .help = "Log level of the process"},
    {.name = "hidegreetscr",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = hidegreetscr,
     .help = "Puts back the screen under the greeting box"},
    {.name = "init",
     .parameters = 4,
     .kind = MethodKind::exported,
     .routine = init,
     .help = "Attaches to a database and runs the start-up checks"},
    {.name = "isconnected",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = isconnected,
     .help = "Whether a database is attached"},
    {.name = "iscurseson",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = iscurseson,
     .help = "Whether the program runs full-screen"},
    {.name = "isfirebirdarea",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = isfirebirdarea,
     .help = "Whether a work area is served by this driver"},
    {.name = "isrddactive",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = isrddactive,
     .help = "Whether the driver is switched on"},
    {.name = "nomethod",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = nomethod,
     .help = "Handler of unknown method names"},
    {.name = "removealias",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = removealias,
     .help = "Forgets the alias of a work area"},
    {.name = "restorepreviousrdd",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = restorepreviousrdd,
     .help = "Makes the driver kept by savepreviousrdd the default again"},
    {.name = "savepreviousrdd",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = savepreviousrdd,
     .help = "Makes this driver the default and keeps the one before it"},
    {.name = "sdbname",
     .parameters = 0,
     .kind = MethodKind::access,
     .routine = access_sdbname,
     .help = "Name of the database"},
    {.name = "setfullpathdatfile",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = setfullpathdatfile,
     .help = "Sets the path of the data file; a fresh temporary name without one"},
    {.name = "setglbskipcachesize",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = setglbskipcachesize,
     .help = "Sets the global skip cache size"},
    {.name = "setglbskipmode",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = setglbskipmode,
     .help = "Sets the global skip mode"},
    {.name = "setibrdd",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = setibrdd,
     .help = "Makes this driver the default when a database is attached"},
    {.name = "setloglevel",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = setloglevel,
     .help = "Sets the log level of the process"},
    {.name = "setrddactive",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = setrddactive,
     .help = "Switches the driver on or off"},
    {.name = "showgreetscr",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = showgreetscr,
     .help = "Shows the greeting box on a full screen"},
    {.name = "srolename",
     .parameters = 0,
     .kind = MethodKind::access,
     .routine = access_srolename,
     .help = "SQL role"},
    {.name = "susername",
     .parameters = 0,
     .kind = MethodKind::access,
     .routine = access_susername,
     .help = "User name"},
    {.name = "writelog",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = writelog,
     .help = "Writes a log entry"},
};

}  // namespace zmfb::conn
