/// The methods of locks/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::locks {

Value clearsystemtables(Self& self, Args args);
Value createtableofflocks(Self& self, Args args);
Value createtableofopn(Self& self, Args args);
Value createtableofrlocks(Self& self, Args args);
Value existsanotheruserflock(Self& self, Args args);
Value existsanotheruserrlocks(Self& self, Args args);
Value existsuserrlocks(Self& self, Args args);
Value getapprecnofromarea(Self& self, Args args);
Value getflockareaid(Self& self, Args args);
Value gethostname(Self& self, Args args);
Value getipaddress(Self& self, Args args);
Value getlockedrecords(Self& self, Args args);
Value getlockedtables(Self& self, Args args);
Value getpid(Self& self, Args args);
Value getrlockareaid(Self& self, Args args);
Value getuniqueareaid(Self& self, Args args);
Value isrecordlocked(Self& self, Args args);
Value isrecordlockedbyanotheruser(Self& self, Args args);
Value isrecordlockedbyuser(Self& self, Args args);
Value istableinexclusivemode(Self& self, Args args);
Value istableinuse(Self& self, Args args);
Value istablelockedbyuser(Self& self, Args args);
Value istableusedbyarea(Self& self, Args args);
Value releaselocks(Self& self, Args args);
Value setrecordaslocked(Self& self, Args args);
Value setrecordasunlocked(Self& self, Args args);
Value settableaslocked(Self& self, Args args);
Value settableasunlocked(Self& self, Args args);
Value settableusedbyarea(Self& self, Args args);
Value unlockallrecords(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "clearsystemtables",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = clearsystemtables,
     .help = "Removes all registrations and locks of everybody"},
    {.name = "createtableofflocks",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = createtableofflocks,
     .help = "Creates the table of table locks when absent"},
    {.name = "createtableofopn",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = createtableofopn,
     .help = "Creates the table of open registrations when absent"},
    {.name = "createtableofrlocks",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = createtableofrlocks,
     .help = "Creates the table of record locks when absent"},
    {.name = "existsanotheruserflock",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = existsanotheruserflock,
     .help = "Whether another area holds the table lock"},
    {.name = "existsanotheruserrlocks",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = existsanotheruserrlocks,
     .help = "Whether another area holds a record lock of a table"},
    {.name = "existsuserrlocks",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = existsuserrlocks,
     .help = "Whether an area holds a record lock of a table"},
    {.name = "getapprecnofromarea",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = getapprecnofromarea,
     .help = "Record number of the last append of an area"},
    {.name = "getflockareaid",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = getflockareaid,
     .help = "Area id that holds the table lock"},
    {.name = "gethostname",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = gethostname,
     .help = "Canonical name of this host"},
    {.name = "getipaddress",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = getipaddress,
     .help = "Network address of this host"},
    {.name = "getlockedrecords",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = getlockedrecords,
     .help = "Record numbers that an area has locked"},
    {.name = "getlockedtables",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = getlockedtables,
     .help = "All table locks of all areas"},
    {.name = "getpid",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = getpid,
     .help = "Process id"},
    {.name = "getrlockareaid",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = getrlockareaid,
     .help = "Area id that holds a record lock"},
    {.name = "getuniqueareaid",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = getuniqueareaid,
     .help = "Area id of a work area of this process"},
    {.name = "isrecordlocked",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = isrecordlocked,
     .help = "Whether anyone holds the lock of a record"},
    {.name = "isrecordlockedbyanotheruser",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = isrecordlockedbyanotheruser,
     .help = "Whether another area holds the lock of a record"},
    {.name = "isrecordlockedbyuser",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = isrecordlockedbyuser,
     .help = "Whether an area holds the lock of a record"},
    {.name = "istableinexclusivemode",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = istableinexclusivemode,
     .help = "Whether some area has a table open exclusively"},
    {.name = "istableinuse",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = istableinuse,
     .help = "Whether some area has a table open"},
    {.name = "istablelockedbyuser",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = istablelockedbyuser,
     .help = "Whether an area holds the table lock"},
    {.name = "istableusedbyarea",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = istableusedbyarea,
     .help = "Whether an area has a table registered"},
    {.name = "releaselocks",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = releaselocks,
     .help = "Removes every lock on a table, whoever holds it"},
    {.name = "setrecordaslocked",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = setrecordaslocked,
     .help = "Locks a record for an area"},
    {.name = "setrecordasunlocked",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = setrecordasunlocked,
     .help = "Unlocks a record of an area"},
    {.name = "settableaslocked",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = settableaslocked,
     .help = "Locks a table for an area"},
    {.name = "settableasunlocked",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = settableasunlocked,
     .help = "Unlocks a table of an area"},
    {.name = "settableusedbyarea",
     .parameters = 4,
     .kind = MethodKind::exported,
     .routine = settableusedbyarea,
     .help = "Registers or unregisters an open of a table"},
    {.name = "unlockallrecords",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = unlockallrecords,
     .help = "Unlocks all records of an area in a table"},
};

}  // namespace zmfb::locks
