/// The methods of matrix/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/matrix.h"

namespace zmfb::matrix {

/// applymatrix(matrix, simulate): changes tables to the structures of a matrix; returns {ok, log}.
///
/// `matrix` is the name of a matrix file, or the array that extractmatrix returns. `simulate`, unless EMPTY,
/// makes every decision and logs it as done, but changes nothing. The log is an array of {text}: for each
/// table its header and one line for each change, "[OK] ...", "[WARN] ..." or "[ERROR] ...". `ok` is .F.
/// after a damaged group, a foreign table or a change that failed.
///
/// All groups are read first. A damaged one raises what is wrong with it and is left out, the others are
/// applied; so does, when its turn comes, a table that is not of this driver. When the error handler throws
/// on damage, nothing has been changed yet. A change that fails has raised its own error; the next one is
/// made all the same. Changes stay made, whatever follows. A matrix without groups raises "Você deseja que eu
/// processe uma matriz vazia?" and gives {.F., {}}. An array of any shape is taken: what is no group or line
/// in it counts as a damaged record.
Value applymatrix(Self& self, Args args);
/// checkmatrix(matrix): applymatrix(matrix, .T.).
Value checkmatrix(Self& self, Args args);
/// extracmatrixoftable(table): the lines of one table as an array of {line}: six header lines, and a line for
/// each field but the driver's own. The only line " >> Does not exists!" for a name that is no table; no line
/// for a system table or one that is not of this driver.
Value extracmatrixoftable(Self& self, Args args);
/// extractmatrix(tables, filename): the matrix of the tables named, of all tables when `tables` is EMPTY; its
/// first group is the banner. Unless `filename` is EMPTY, also writes it to that name + ".tf"; a file that
/// cannot be made is passed over in silence, a write that fails raises "Erro na gravação do arquivo matriz".
/// `tables` of another kind than array raises, and gives the banner alone. Returns the matrix in every case.
Value extractmatrix(Self& self, Args args);
/// hasfieldnamechanged(right, left): whether the names of two fields differ.
Value hasfieldnamechanged(Self& self, Args args);
/// isfielddropped(field): whether its name is "DROP FIELD", exactly.
Value isfielddropped(Self& self, Args args);
/// isfieldstructurechanged(field, structure): whether the first field of that name in `structure` has another
/// type, length or decimals (`!=`, so SET EXACT matters for the type); .F. when there is none of that name.
Value isfieldstructurechanged(Self& self, Args args);
/// isfieldstructuredifferent(structure1, structure2, position): whether the fields at `position` differ in
/// name, type, length or decimals (`==`); .T. when one structure has no such position. A position below 1
/// raises.
Value isfieldstructuredifferent(Self& self, Args args);
/// isvalidfielddescriptor(pieces): whether {position, name, type, length, decimals, ...} are five or more,
/// with a position and a length above 0, a name that is not EMPTY and a type that occurs in "CNDL" in either
/// case.
Value isvalidfielddescriptor(Self& self, Args args);
/// samefieldname(structure1, structure2, position): whether both have a field at `position` and the names are
/// equal. A position below 1 raises.
Value samefieldname(Self& self, Args args);
/// toarray(line, separator): the pieces of `line` between separators, untrimmed, and a last "" when it ends
/// in one.
/// {} unless both are texts, and for an empty line; an empty separator splits nothing but counts as the end.
Value toarray(Self& self, Args args);

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::applymatrix, applymatrix),
    bound(m::checkmatrix, checkmatrix),
    bound(m::extracmatrixoftable, extracmatrixoftable),
    bound(m::extractmatrix, extractmatrix),
    bound(m::hasfieldnamechanged, hasfieldnamechanged),
    bound(m::isfielddropped, isfielddropped),
    bound(m::isfieldstructurechanged, isfieldstructurechanged),
    bound(m::isfieldstructuredifferent, isfieldstructuredifferent),
    bound(m::isvalidfielddescriptor, isvalidfielddescriptor),
    bound(m::samefieldname, samefieldname),
    bound(m::toarray, toarray),
};

}  // namespace zmfb::matrix
