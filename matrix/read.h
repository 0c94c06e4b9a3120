/// Reading a matrix back: from a file into its array form, and from that into the structures it asks for.
///
/// A matrix is {{group}, {group}, ...}, a group {{line}, {line}, ...}, a line a text without its line end.
/// What is called on the object here needs no database.
#pragma once

#include "conn/self.h"

namespace zmfb::matrix {

/// What one group of a matrix says.
struct Group {
    Value table = "";                       ///< as it is written, trimmed; "" when there is no field line
    Value lefts = Value::array_of_size(0);  ///< the fields as they were extracted, one per field line
    Value rights =
        Value::array_of_size(0);  ///< the fields as they are wanted; {"DROP FIELD", "", 0, 0} drops one
    bool drop_table = false;      ///< the group was read up to its "DROP TABLE"
    Value damage;                 ///< NIL, or the message that tells what is damaged
};

/// The array form of `source`: itself when it is an array, the lines of the file when it is a file name, an
/// empty array in every other case and when the file cannot be opened or is empty.
///
/// A file is split ahead of each line that contains "Created by ZMRDDFIRE"; its lines end in LF or CR LF, the
/// last one may lack that. The file stays open.
Value matrix_of(Self& self, const Value& source);

/// Reads one group, up to the first damage. Raises nothing.
///
/// Only lines with "=>" count. `element` is one element of a matrix of any origin: what is no group in an
/// array, or holds something else than texts in arrays, is damaged too, with the message for a bad record and
/// its text, if it is one.
Group read_group(Self& self, const Value& element);

}  // namespace zmfb::matrix
