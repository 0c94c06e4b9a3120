/// The methods of matrix/: their routines and their rows of the method table.
#pragma once

#include "conn/self.h"

namespace zmfb::matrix {

Value applymatrix(Self& self, Args args);
Value checkmatrix(Self& self, Args args);
Value extracmatrixoftable(Self& self, Args args);
Value extractmatrix(Self& self, Args args);
Value hasfieldnamechanged(Self& self, Args args);
Value isfielddropped(Self& self, Args args);
Value isfieldstructurechanged(Self& self, Args args);
Value isfieldstructuredifferent(Self& self, Args args);
Value isvalidfielddescriptor(Self& self, Args args);
Value samefieldname(Self& self, Args args);
Value toarray(Self& self, Args args);

/// Ordered by name.
inline constexpr host::Method methods[] = {
    {.name = "applymatrix",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = applymatrix,
     .help = "Changes tables to the structures of a matrix"},
    {.name = "checkmatrix",
     .parameters = 1,
     .kind = MethodKind::exported,
     .routine = checkmatrix,
     .help = "Tells what applying a matrix would do"},
    {.name = "extracmatrixoftable",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = extracmatrixoftable,
     .help = "Matrix block of one table"},
    {.name = "extractmatrix",
     .parameters = 2,
     .kind = MethodKind::exported,
     .routine = extractmatrix,
     .help = "Writes out the structures of tables as a matrix"},
    {.name = "hasfieldnamechanged",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = hasfieldnamechanged,
     .help = "Whether two field descriptors differ in name"},
    {.name = "isfielddropped",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = isfielddropped,
     .help = "Whether a field descriptor is the drop mark"},
    {.name = "isfieldstructurechanged",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = isfieldstructurechanged,
     .help = "Whether a field of a structure has another type or size"},
    {.name = "isfieldstructuredifferent",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = isfieldstructuredifferent,
     .help = "Whether two structures differ at a position"},
    {.name = "isvalidfielddescriptor",
     .parameters = 1,
     .kind = MethodKind::protected_,
     .routine = isvalidfielddescriptor,
     .help = "Whether the pieces of a descriptor are well formed"},
    {.name = "samefieldname",
     .parameters = 3,
     .kind = MethodKind::protected_,
     .routine = samefieldname,
     .help = "Whether two structures have the same name at a position"},
    {.name = "toarray",
     .parameters = 2,
     .kind = MethodKind::protected_,
     .routine = toarray,
     .help = "Splits a text on a separator"},
};

}  // namespace zmfb::matrix
