/// The fixed-length data file of the transfers.
#pragma once

#include <cstdint>

#include "conn/self.h"
#include "transfer/record_conversion.h"

namespace zmfb::transfer {

/// FCREATE's attribute for the data file: everybody may read and write it, since the database server that
/// does may run under an account of its own.
inline constexpr int data_file_permissions = 666;

/// Where the data file is: the path of getfullpathdatfile, which is of the current folder when it is
/// relative. The engine would look for a relative path in folders of its own, and on a server for that of
/// another process: a transfer uses this one on both sides, from its beginning to its end.
Value data_file_path(Self& self);

/// Makes the external table `name` with the columns of `structure` over the data file at `path`; whether it
/// is there.
bool make_external_table(Self& self, const Value& name, const Value& structure, const Value& path);

/// Reads up to `records` DBF records from the current position of the handle `dbf` on and writes each
/// converted to the handle `dat`. Returns whether everything could be written.
///
/// A file that holds fewer records than it counts is not an error: what is missing of the last one counts as
/// blanks, and one of which not even a field's first byte is there is none. So no more is written than the
/// file has.
bool write_data_file(const Value& dbf, std::int64_t records, const RecordConversion& conversion,
                     const Value& dat);

}  // namespace zmfb::transfer
