/// The methods of catalog/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::catalog {

Value counttablerecords(Self& self, Args args);
Value execregex(Self& self, Args args);
Value filternormalfields(Self& self, Args args);
Value filterrddfields(Self& self, Args args);
Value getfielddescription(Self& self, Args args);
Value getfieldsontrigger(Self& self, Args args);
Value getindexdescription(Self& self, Args args);
Value getindexfields(Self& self, Args args);
Value getinternaltablestruct(Self& self, Args args);
Value gettabledescription(Self& self, Args args);
Value gettablenumberofinserts(Self& self, Args args);
Value gettablereccount(Self& self, Args args);
Value gettablesname(Self& self, Args args);
Value gettablestruct(Self& self, Args args);
Value isallneededudfsinstalled(Self& self, Args args);
Value isfieldinstru(Self& self, Args args);
Value isfieldoftable(Self& self, Args args);
Value isindex(Self& self, Args args);
Value isindexoftable(Self& self, Args args);
Value islimbofield(Self& self, Args args);
Value istable(Self& self, Args args);
Value istrigger(Self& self, Args args);
Value istriggeroftable(Self& self, Args args);
Value isudf(Self& self, Args args);
Value isview(Self& self, Args args);
Value iszmrddtable(Self& self, Args args);
Value setfielddescription(Self& self, Args args);
Value setindexdescription(Self& self, Args args);
Value setrddfields(Self& self, Args args);
Value settabledescription(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "counttablerecords",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = counttablerecords,
     .help = "Number of rows of a table, counted"},
    {.name = "execregex",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = execregex,
     .help = "Last group that a regular expression captures"},
    {.name = "filternormalfields",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = filternormalfields,
     .help = "The fields of a structure that the driver keeps for itself"},
    {.name = "filterrddfields",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = filterrddfields,
     .help = "The fields of a structure that belong to the application"},
    {.name = "getfielddescription",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = getfielddescription,
     .help = "Description of a column"},
    {.name = "getfieldsontrigger",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = getfieldsontrigger,
     .help = "Columns that a trigger depends on"},
    {.name = "getindexdescription",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = getindexdescription,
     .help = "Description of an index"},
    {.name = "getindexfields",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = getindexfields,
     .help = "Segments of an index"},
    {.name = "getinternaltablestruct",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = getinternaltablestruct,
     .help = "Catalog rows of the columns of a table"},
    {.name = "gettabledescription",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = gettabledescription,
     .help = "Description of a table"},
    {.name = "gettablenumberofinserts",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = gettablenumberofinserts,
     .help = "How many rows were ever inserted"},
    {.name = "gettablereccount",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = gettablereccount,
     .help = "Number of records by the insert and delete counters"},
    {.name = "gettablesname",
     .parameters = 0,
     .kind = MethodKind::exported,
     .routine = gettablesname,
     .help = "Names of all user tables and views"},
    {.name = "gettablestruct",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = gettablestruct,
     .help = "Structure of a table as field descriptors"},
    {.name = "isallneededudfsinstalled",
     .parameters = 0,
     .kind = MethodKind::protected_,
     .routine = isallneededudfsinstalled,
     .help = "Whether every function the driver needs is declared"},
    {.name = "isfieldinstru",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = isfieldinstru,
     .help = "Whether a structure has a field"},
    {.name = "isfieldoftable",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = isfieldoftable,
     .help = "Whether a table has a column"},
    {.name = "isindex",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = isindex,
     .help = "Whether an index exists"},
    {.name = "isindexoftable",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = isindexoftable,
     .help = "Whether an index belongs to a table"},
    {.name = "islimbofield",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = islimbofield,
     .help = "Whether a name is that of a limbo field"},
    {.name = "istable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = istable,
     .help = "Whether a table or view exists"},
    {.name = "istrigger",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = istrigger,
     .help = "Whether a trigger exists"},
    {.name = "istriggeroftable",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = istriggeroftable,
     .help = "Whether a trigger belongs to a table"},
    {.name = "isudf",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = isudf,
     .help = "Whether an external function is declared"},
    {.name = "isview",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = isview,
     .help = "Whether a view exists"},
    {.name = "iszmrddtable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = iszmrddtable,
     .help = "Whether a table was created by this driver"},
    {.name = "setfielddescription",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = setfielddescription,
     .help = "Sets the description of a column"},
    {.name = "setindexdescription",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = setindexdescription,
     .help = "Sets the description of an index"},
    {.name = "setrddfields",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = setrddfields,
     .help = "Tags each field of a structure with its kind"},
    {.name = "settabledescription",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = settabledescription,
     .help = "Sets the description of a table"},
};

}  // namespace zmfb::catalog
