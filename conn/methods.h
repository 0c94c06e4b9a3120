/// The methods of conn/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/connection.h"

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

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::announcealias, announcealias),
    bound(m::axit, axit),
    bound(m::bconn, access_bconn),
    bound(m::assign_bconn, assign_bconn),
    bound(m::closealltables, closealltables),
    bound(m::dbhndl, access_dbhndl),
    bound(m::assign_dbhndl, assign_dbhndl),
    bound(m::disconnect, disconnect),
    bound(m::evalmeth, evalmeth),
    bound(m::getdatabasename, getdatabasename),
    bound(m::getfullpathdatfile, getfullpathdatfile),
    bound(m::getglbskipcachesize, getglbskipcachesize),
    bound(m::getglbskipmode, getglbskipmode),
    bound(m::getloglevel, getloglevel),
    bound(m::hidegreetscr, hidegreetscr),
    bound(m::init, init),
    bound(m::isconnected, isconnected),
    bound(m::iscurseson, iscurseson),
    bound(m::isfirebirdarea, isfirebirdarea),
    bound(m::isrddactive, isrddactive),
    bound(m::nomethod, nomethod),
    bound(m::removealias, removealias),
    bound(m::restorepreviousrdd, restorepreviousrdd),
    bound(m::savepreviousrdd, savepreviousrdd),
    bound(m::sdbname, access_sdbname),
    bound(m::setfullpathdatfile, setfullpathdatfile),
    bound(m::setglbskipcachesize, setglbskipcachesize),
    bound(m::setglbskipmode, setglbskipmode),
    bound(m::setibrdd, setibrdd),
    bound(m::setloglevel, setloglevel),
    bound(m::setrddactive, setrddactive),
    bound(m::showgreetscr, showgreetscr),
    bound(m::srolename, access_srolename),
    bound(m::susername, access_susername),
    bound(m::writelog, writelog),
};

}  // namespace zmfb::conn
