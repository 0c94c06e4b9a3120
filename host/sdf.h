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
/// A line ends at LF, with a CR before it if there is one, wherever that is; the columns that a short line
/// lacks are blank, those behind the last field are ignored; CHR(26) where a line begins ends the file.
///
/// Returns .T.; .F. when no table is open, the file cannot be opened or read, or a record cannot be stored,
/// which has been raised then and ends the reading.
Value dbappsdf(const Value& file, const Value& fields = {}, const Value& for_block = {},
               const Value& while_block = {}, const Value& next = {}, const Value& record = {});

/// The same of all fields and lines of the rows that an external table wrote: the file of exactly the name
/// `file`, without a further extension, is made of full lines, all columns and then LF, so that a column may
/// hold any byte, a line end or CHR(26) too. A line that is not as long is raised, too, and ends the reading.
Value dbappsdf_exactly(const Value& file);

}  // namespace zmfb::host
