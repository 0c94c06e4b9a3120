/// The methods of schema/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::schema {

Value addfield(Self& self, Args args);
Value addlimbofield(Self& self, Args args);
Value alterfield(Self& self, Args args);
Value createtable(Self& self, Args args);
Value createtableexternal(Self& self, Args args);
Value createview(Self& self, Args args);
Value deleteallrecords(Self& self, Args args);
Value deleterecord(Self& self, Args args);
Value dropfield(Self& self, Args args);
Value dropgenerator(Self& self, Args args);
Value dropindex(Self& self, Args args);
Value dropindexbasedonfield(Self& self, Args args);
Value droponlytable(Self& self, Args args);
Value droptable(Self& self, Args args);
Value droptrigger(Self& self, Args args);
Value droptriggerbasedonfield(Self& self, Args args);
Value dropview(Self& self, Args args);
Value dropviewsfromtable(Self& self, Args args);
Value grantaccess(Self& self, Args args);
Value renamefield(Self& self, Args args);
Value setfieldposition(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "addfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = addfield,
     .help = "Adds a column to a table"},
    {.name = "addlimbofield",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = addlimbofield,
     .help = "Adds the limbo twin of a column"},
    {.name = "alterfield",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = alterfield,
     .help = "Changes type, size or name of a column, keeping its data"},
    {.name = "createtable",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = createtable,
     .help = "Creates a table in the driver's layout"},
    {.name = "createtableexternal",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = createtableexternal,
     .help = "Declares an external table over a data file"},
    {.name = "createview",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = createview,
     .help = "Creates a view"},
    {.name = "deleteallrecords",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = deleteallrecords,
     .help = "Deletes all rows of a table"},
    {.name = "deleterecord",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = deleterecord,
     .help = "Deletes a record by its number"},
    {.name = "dropfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = dropfield,
     .help = "Drops a column with the indexes and triggers that use it"},
    {.name = "dropgenerator",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropgenerator,
     .help = "Drops a generator"},
    {.name = "dropindex",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropindex,
     .help = "Drops an index"},
    {.name = "dropindexbasedonfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = dropindexbasedonfield,
     .help = "Drops the indexes that use a column"},
    {.name = "droponlytable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = droponlytable,
     .help = "Drops a table, not its generators"},
    {.name = "droptable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = droptable,
     .help = "Drops a table with its views and generators"},
    {.name = "droptrigger",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = droptrigger,
     .help = "Drops a trigger"},
    {.name = "droptriggerbasedonfield",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = droptriggerbasedonfield,
     .help = "Drops the triggers that depend on a column"},
    {.name = "dropview",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropview,
     .help = "Drops a view"},
    {.name = "dropviewsfromtable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = dropviewsfromtable,
     .help = "Drops the views built on a table"},
    {.name = "grantaccess",
     .parameters = 3,
     .kind = MethodKind::exported,
     .routine = grantaccess,
     .help = "Grants privileges on a table"},
    {.name = "renamefield",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = renamefield,
     .help = "Renames a column"},
    {.name = "setfieldposition",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = setfieldposition,
     .help = "Moves a column to a position"},
};

}  // namespace zmfb::schema
