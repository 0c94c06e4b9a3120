/// The fixed-length data file of the transfers.
#pragma once

#include <cstdint>
#include <optional>

#include "conn/self.h"
#include "transfer/record_conversion.h"

namespace zmfb::transfer {

/// FCREATE's attribute for the data file: everybody may read and write it, since the database server that
/// does may run under an account of its own.
inline constexpr int data_file_permissions = 666;
/// The level of what transfers log.
inline constexpr int transfer_log_level = 4;

/// Whether a text of the data file is as wide in the database as in the file: the default character set of
/// the database, which the columns of an external table have, takes one byte a character. One that takes more
/// is logged at level 4 and raised. A database that gives no answer is taken for one of single bytes.
bool has_single_bytes(Self& self);

/// Where the data file is: the path of getfullpathdatfile, which is of the current folder when it is
/// relative. The engine would look for a relative path in folders of its own, and on a server for that of
/// another process: a transfer uses this one on both sides, from its beginning to its end.
Value data_file_path(Self& self);

/// Makes the external table `name` with the columns of `structure` over the data file at `path`; whether it
/// is there.
bool make_external_table(Self& self, const Value& name, const Value& structure, const Value& path);

/// Whether the method `counter` counts `records` rows in the table `name`; see refuse_rows(). Without a
/// database, where statements succeed without being sent, there is nothing to count.
bool holds_rows(Self& self, MethodName<1> counter, const Value& name, std::int64_t records,
                const Value& path);
/// Logs at level 4, and raises, that the table `name` has another number of rows than the program has
/// records: the engine had another file than that at `path`, or had it otherwise. Returns .F..
bool refuse_rows(Self& self, const Value& name, std::int64_t rows, std::int64_t records, const Value& path);

/// Reads up to `records` DBF records from the current position of the handle `dbf` on and writes each
/// converted to the handle `dat`. Returns how many there were; none when something could not be read or
/// written.
///
/// A file that holds fewer records than it counts is not an error: what is missing of the last one counts as
/// blanks, and one of which not even a field's first byte is there is none. So no more is written than the
/// file has.
std::optional<std::int64_t> write_data_file(const Value& dbf, std::int64_t records,
                                            const RecordConversion& conversion, const Value& dat);

}  // namespace zmfb::transfer
