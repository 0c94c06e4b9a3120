/// APPEND FROM ... SDF: text files with fixed columns, one line a record.
#pragma once

#include "host/value.h"

namespace zmfb::host {

/// __DBAPPSDF(file [, fields [, for [, while [, next [, record]]]]]): appends a record to the current table
/// for each line of `file` (.txt when it has no extension). The columns stand in the order of the fields
/// without a gap, each as wide as its field; `fields` is an array of names that narrows them down. Memo
/// fields have no columns. `next` takes that many lines at most, `record` only the line of that number; the
/// blocks `for` and `while` are asked when the record is filled in, which is taken back if they say no. There
/// is no REST condition: a file is always read from its beginning.
///
/// A file that is made of full lines from one end to the other, all columns and then LF (or CR LF), is read
/// by its line length, so that a column may hold any byte, a line end or CHR(26) too; one last CHR(26) behind
/// the lines is none of them, and the last line may lack its end. Any other file is read by line: a line ends
/// at LF, with a CR before it if there is one; the columns that a short line lacks are blank, those behind
/// the last field are ignored; CHR(26) where a line begins ends the file. Should a line of the first sort of
/// file not end where it must, the rest is read by line.
///
/// Returns .T.; .F. when no table is open, the file cannot be opened or read, or a record cannot be stored,
/// which has been raised then and ends the reading.
Value dbappsdf(const Value& file, const Value& fields = {}, const Value& for_block = {},
               const Value& while_block = {}, const Value& next = {}, const Value& record = {});

/// The same of all fields and lines of the file of exactly the name `file`, byte for byte and without a
/// further extension.
Value dbappsdf_exactly(const Value& file);

}  // namespace zmfb::host
