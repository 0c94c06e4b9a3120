/// The methods of sql/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::sql {

Value assemblestatement(Self& self, Args args);
Value cachedupdate(Self& self, Args args);
Value commitchanges(Self& self, Args args);
Value executequery(Self& self, Args args);
Value executeudfskippad(Self& self, Args args);
Value executeupdate(Self& self, Args args);
Value getfirstrows(Self& self, Args args);
Value getrow(Self& self, Args args);
Value internalselect(Self& self, Args args);
Value looptest(Self& self, Args args);
Value starttransaction(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "assemblestatement",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = assemblestatement,
     .help = "Fills the placeholders of a statement template"},
    {.name = "cachedupdate",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = cachedupdate,
     .help = "Runs a statement in the open batch transaction"},
    {.name = "commitchanges",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = commitchanges,
     .help = "Commits the batch transaction"},
    {.name = "executequery",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = executequery,
     .help = "Runs a SELECT and returns its header and rows"},
    {.name = "executeudfskippad",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = executeudfskippad,
     .help = "Value of the skippad function for one record"},
    {.name = "executeupdate",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = executeupdate,
     .help = "Runs a statement in a transaction of its own"},
    {.name = "getfirstrows",
     .parameters = 6,
     .kind = MethodKind::exported,
     .routine = getfirstrows,
     .help = "Rows from an offset of an ordered, filtered table"},
    {.name = "getrow",
     .parameters = 5,
     .kind = MethodKind::exported,
     .routine = getrow,
     .help = "The row at an offset of an ordered, filtered table"},
    {.name = "internalselect",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = internalselect,
     .help = "Runs a SELECT and returns its header and rows"},
    {.name = "looptest",
     .parameters = 4,
     .kind = MethodKind::exported,
     .routine = looptest,
     .help = "Placeholder that raises an error"},
    {.name = "starttransaction",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = starttransaction,
     .help = "Opens a batch transaction"},
};

}  // namespace zmfb::sql
