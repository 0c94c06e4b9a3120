/// The fixed-length data file of the transfers.
#pragma once

#include <cstdint>

#include "host/value.h"
#include "transfer/record_conversion.h"

namespace zmfb::transfer {

/// FCREATE's attribute for the data file: everybody may read and write it, since the database server that
/// does may run under an account of its own.
inline constexpr int data_file_permissions = 666;

/// Reads up to `records` DBF records from the current position of the handle `dbf` on and writes each
/// converted to the handle `dat`. Returns whether everything could be written.
///
/// A file that holds fewer records than it counts is not an error: what is missing of the last one counts as
/// blanks, and one of which not even a field's first byte is there is none. So no more is written than the
/// file has.
bool write_data_file(const host::Value& dbf, std::int64_t records, const RecordConversion& conversion,
                     const host::Value& dat);

}  // namespace zmfb::transfer
