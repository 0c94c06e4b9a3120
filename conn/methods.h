/// The methods of conn/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::conn {

/// announcealias(als): notes the alias of a work area opened on this connection, whatever it is. NIL.
Value announcealias(Self& self, Args args);
/// axit(): the end-of-life handler. Logs "[GONE] ..." at level 0 and disconnects an object that is attached.
/// .T.
Value axit(Self& self, Args args);
/// The properties. Access returns the value; assign stores its argument unchecked and returns it.
Value access_bconn(Self& self, Args args);
Value assign_bconn(Self& self, Args args);
/// closealltables(): closes the work areas of the announced aliases that are texts, in order, a line at level
/// 5 for each. NIL. The list itself is emptied by the removealias calls that the closes cause.
Value closealltables(Self& self, Args args);
Value access_dbhndl(Self& self, Args args);
Value assign_dbhndl(Self& self, Args args);
/// disconnect(): closes all tables, detaches, logs "[EXIT] ..." at level 0 where there is a handle. NIL. A
/// detach that fails is passed over; `dbhndl` keeps its dead value.
Value disconnect(Self& self, Args args);
/// evalmeth(met, param): calls the method named `met`, in any case of letters, with exactly five arguments:
/// the elements of the array `param`, empty texts for those it does not have. Returns what the method
/// returns.
Value evalmeth(Self& self, Args args);
/// getdatabasename(): the database name as init was given it.
Value getdatabasename(Self& self, Args args);
/// The settings as they stand: see the setters.
Value getfullpathdatfile(Self& self, Args args);
Value getglbskipcachesize(Self& self, Args args);
Value getglbskipmode(Self& self, Args args);
Value getloglevel(Self& self, Args args);
/// hidegreetscr(): puts back the screen kept by showgreetscr; nothing without a full screen. NIL.
Value hidegreetscr(Self& self, Args args);
/// init(db, user, pass, role): attaches and runs the start-up checks. NIL; isconnected() tells the outcome.
///
/// With all four empty only the driver is switched off. A failed attach is logged at level 0 ("[ERROR]
/// SQLCODE=...") and raises nothing. Missing functions, or system tables that cannot be made, are logged
/// ("[FATAL] ...") and raised.
Value init(Self& self, Args args);
/// isconnected(): whether a database is attached.
Value isconnected(Self& self, Args args);
/// iscurseson(): whether the curses standard screen exists.
Value iscurseson(Self& self, Args args);
/// isfirebirdarea(als): whether the work area with that alias is served by the driver "ZMRDDFIRE", in any
/// case of letters; .F. for one that does not exist.
Value isfirebirdarea(Self& self, Args args);
/// isrddactive(): the driver switch, as setrddactive stored it.
Value isrddactive(Self& self, Args args);
/// nomethod(meth): logs "[ERROR] Meth: ..." at level 0 and raises "zmFBConn has no Method named: ...". NIL.
Value nomethod(Self& self, Args args);
/// removealias(als): forgets the first entry that is exactly `als`, and every empty one. NIL.
Value removealias(Self& self, Args args);
/// restorepreviousrdd(), savepreviousrdd(): the default driver kept and replaced, and put back. NIL.
Value restorepreviousrdd(Self& self, Args args);
Value savepreviousrdd(Self& self, Args args);
Value access_sdbname(Self& self, Args args);
/// setfullpathdatfile(fullpath): the path of the data file of transfers; a fresh name "/tmp/zmrdd*.dat" when
/// empty or no text. Returns the new path. Creates nothing.
Value setfullpathdatfile(Self& self, Args args);
/// setglbskipcachesize(sz): 11 for anything but a number above 0. setglbskipmode(vl): 1 for anything but a
/// number from 0 to 2. NIL; both log "[SET] ..." at level 6.
Value setglbskipcachesize(Self& self, Args args);
Value setglbskipmode(Self& self, Args args);
/// setibrdd(): makes the driver the default when a database is attached, and answers whether it did.
Value setibrdd(Self& self, Args args);
/// setloglevel(level): any whole number; logs "[LOG#] ..." at level 0. NIL. getloglevel() returns it.
Value setloglevel(Self& self, Args args);
/// setrddactive(bol): stores the driver switch unchecked. NIL.
Value setrddactive(Self& self, Args args);
/// showgreetscr(): keeps the screen and draws the greeting box; nothing without a full screen. NIL.
Value showgreetscr(Self& self, Args args);
Value access_srolename(Self& self, Args args);
Value access_susername(Self& self, Args args);
/// writelog(ln, level): writes a log entry when `level` is at or below the log level. NIL.
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
