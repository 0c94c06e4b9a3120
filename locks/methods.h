/// The methods of locks/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/locks.h"

namespace zmfb::locks {

/// \name System tables
/// @{
/// createtableofopn(), createtableofflocks(), createtableofrlocks(): each makes one system table and its
/// unique index when istable() does not find the table, and answers .T. on success. An existing table is not
/// looked into. .F. when createtable or the index fails; a table whose index failed stays.
Value createtableofopn(Self& self, Args args);
Value createtableofflocks(Self& self, Args args);
Value createtableofrlocks(Self& self, Args args);
/// clearsystemtables(): removes all registrations and locks of everybody; .T. when the registrations could be
/// removed, whatever became of the locks. Logs at level 0 which it was. While this connection has open
/// aliases nothing is removed: logs at level 0 and raises "[ERROR] Impossible to clear System Tables with
/// opened tables", answers .F..
Value clearsystemtables(Self& self, Args args);
/// @}

/// \name Identity
/// @{
/// getpid(): process id, a number.
Value getpid(Self& self, Args args);
/// gethostname(): canonical name of this host; "" when the name is longer than 49 bytes or does not resolve.
Value gethostname(Self& self, Args args);
/// getipaddress(): first network address of this host as text; "" on any failure, or when it needs more than
/// 29 bytes.
Value getipaddress(Self& self, Args args);
/// getuniqueareaid(tbl, area): "<tbl>:<area>:<process id>:<host name>" cut to 50 bytes. An id that was not
/// cut names one work area of one process of one host. Logs the uncut id at level 8.
Value getuniqueareaid(Self& self, Args args);
/// @}

/// \name Open registrations
/// Table names are matched upper-cased, area ids as they are. A query that fails reads as an empty answer.
/// @{
/// istableusedbyarea(tbl, areaid): whether the area has the table registered.
Value istableusedbyarea(Self& self, Args args);
/// istableinuse(tbl): whether any area has, one of this process included.
Value istableinuse(Self& self, Args args);
/// istableinexclusivemode(tbl): whether some area registered the table exclusively.
Value istableinexclusivemode(Self& self, Args args);
/// settableusedbyarea(bol, tbl, areaid, shared): registers (.T.) or unregisters (.F.) an open. What is so
/// already answers .T. and changes nothing, the mode of an existing row included. .F. when the change fails.
Value settableusedbyarea(Self& self, Args args);
/// getapprecnofromarea(tbl, areaid): number of the record that the registered area appended last; 0 before
/// the first append and without a registration.
Value getapprecnofromarea(Self& self, Args args);
/// @}

/// \name Holders of locks
/// `recno` is a text and goes into statements as it is. A query that fails reads as "nobody".
/// Own locks are recognised byte for byte, those of others by the rule of SET EXACT: while it is off, a
/// holder whose id begins with the caller's does not count as another; the unique indexes refuse such a
/// caller's lock in the end.
/// @{
/// getrlockareaid(tbl, recno), getflockareaid(tbl): area id of the holder without trailing blanks, "" when
/// nobody.
Value getrlockareaid(Self& self, Args args);
Value getflockareaid(Self& self, Args args);
/// istablelockedbyuser(tbl, areaid): whether the area holds the table lock.
Value istablelockedbyuser(Self& self, Args args);
/// isrecordlocked(tbl, areaid, recno): whether anyone holds the record; `areaid` is not looked at.
Value isrecordlocked(Self& self, Args args);
/// isrecordlockedbyuser(tbl, areaid, recno): whether the area holds the record.
Value isrecordlockedbyuser(Self& self, Args args);
/// isrecordlockedbyanotheruser(tbl, areaid, recno): whether another area does.
Value isrecordlockedbyanotheruser(Self& self, Args args);
/// existsanotheruserflock(tbl, areaid): whether another area holds the table lock.
Value existsanotheruserflock(Self& self, Args args);
/// existsuserrlocks(tbl, areaid), existsanotheruserrlocks(tbl, areaid): whether the area, or another one,
/// holds any record of the table. Both compare in the database, without SET EXACT.
Value existsuserrlocks(Self& self, Args args);
Value existsanotheruserrlocks(Self& self, Args args);
/// @}

/// \name Record locks
/// None of these waits for a lock to be given back, or tries again. .F. also when the statement fails, for an
/// unlock too; the log has why.
/// @{
/// setrecordaslocked(tbl, areaid, recno): grants the lock unless another area holds the record or the table.
/// .T. at no cost when the area holds it already; the area's own table lock is no hindrance. A table lock
/// taken at the same moment is granted as well: a second call answers .F. then.
Value setrecordaslocked(Self& self, Args args);
/// setrecordasunlocked(tbl, areaid, recno): .F. when the area does not hold the record.
Value setrecordasunlocked(Self& self, Args args);
/// unlockallrecords(tbl, areaid): releases every record of the table that the area holds; .F. when it holds
/// none.
Value unlockallrecords(Self& self, Args args);
/// getlockedrecords(tbl, areaid): the numbers of the records that the area holds, in no promised order.
Value getlockedrecords(Self& self, Args args);
/// @}

/// \name Table locks
/// As for record locks.
/// @{
/// settableaslocked(tbl, areaid): grants the table lock unless another area holds a record of the table or
/// the table. .T. at no cost when the area holds it already. Open registrations are not looked at. A record
/// lock taken at the same moment is granted as well: a second call answers .F. then.
Value settableaslocked(Self& self, Args args);
/// settableasunlocked(tbl, areaid): .F. when the area does not hold the table lock.
Value settableasunlocked(Self& self, Args args);
/// releaselocks(tbl): removes the record locks of everybody on a table and, when that went well, its table
/// lock; .T. when both went well.
Value releaselocks(Self& self, Args args);
/// getlockedtables(): a row {table, area id} for every table lock of everybody, padded with blanks as its
/// columns are.
Value getlockedtables(Self& self, Args args);
/// @}

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::clearsystemtables, clearsystemtables),
    bound(m::createtableofflocks, createtableofflocks),
    bound(m::createtableofopn, createtableofopn),
    bound(m::createtableofrlocks, createtableofrlocks),
    bound(m::existsanotheruserflock, existsanotheruserflock),
    bound(m::existsanotheruserrlocks, existsanotheruserrlocks),
    bound(m::existsuserrlocks, existsuserrlocks),
    bound(m::getapprecnofromarea, getapprecnofromarea),
    bound(m::getflockareaid, getflockareaid),
    bound(m::gethostname, gethostname),
    bound(m::getipaddress, getipaddress),
    bound(m::getlockedrecords, getlockedrecords),
    bound(m::getlockedtables, getlockedtables),
    bound(m::getpid, getpid),
    bound(m::getrlockareaid, getrlockareaid),
    bound(m::getuniqueareaid, getuniqueareaid),
    bound(m::isrecordlocked, isrecordlocked),
    bound(m::isrecordlockedbyanotheruser, isrecordlockedbyanotheruser),
    bound(m::isrecordlockedbyuser, isrecordlockedbyuser),
    bound(m::istableinexclusivemode, istableinexclusivemode),
    bound(m::istableinuse, istableinuse),
    bound(m::istablelockedbyuser, istablelockedbyuser),
    bound(m::istableusedbyarea, istableusedbyarea),
    bound(m::releaselocks, releaselocks),
    bound(m::setrecordaslocked, setrecordaslocked),
    bound(m::setrecordasunlocked, setrecordasunlocked),
    bound(m::settableaslocked, settableaslocked),
    bound(m::settableasunlocked, settableasunlocked),
    bound(m::settableusedbyarea, settableusedbyarea),
    bound(m::unlockallrecords, unlockallrecords),
};

}  // namespace zmfb::locks
