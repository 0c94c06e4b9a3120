/// The methods of transfer/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::transfer {

Value bringdbf(Self& self, Args args);
Value exiletable(Self& self, Args args);
Value fclsfile(Self& self, Args args);
Value fcrtfile(Self& self, Args args);
Value fopnfile(Self& self, Args args);
Value getfilename(Self& self, Args args);
Value removefilenameext(Self& self, Args args);
Value removezerobytes(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "bringdbf",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = bringdbf,
     .help = "Imports a DBF file into a new table"},
    {.name = "exiletable",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = exiletable,
     .help = "Exports a table into a new DBF file"},
    {.name = "fclsfile",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = fclsfile,
     .help = "Unlocks and closes a file"},
    {.name = "fcrtfile",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = fcrtfile,
     .help = "Creates an empty file"},
    {.name = "fopnfile",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = fopnfile,
     .help = "Opens a file for reading, or locked for writing"},
    {.name = "getfilename",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = getfilename,
     .help = "File name of a path"},
    {.name = "removefilenameext",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = removefilenameext,
     .help = "File name up to its first dot"},
    {.name = "removezerobytes",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = removezerobytes,
     .help = "Text up to its first zero byte"},
};

}  // namespace zmfb::transfer
