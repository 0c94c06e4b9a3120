/// The types that came with Firebird 4: whole numbers of 128 bits, which sums and products are there, too,
/// DECFLOAT, and times with a zone. The client library of 3.0 knows none of them.
#pragma once

#include <string_view>

#include "sql/client.h"
#include "zmfbconn/status.h"

namespace zmfb::sql {

/// As what an attachment has their values: as types of before, which methods give and which may have no room
/// for digits and zones; or as texts, whole.
enum class NewTypes { as_before, as_texts };

/// Attaches with them as types of before; engines that have none pass it over.
inline constexpr std::string_view new_types_as_before =
    "int128 to legacy; decfloat to legacy; time zone to legacy";

/// The lengths of their texts, in ASCII, by which they are known: nobody declares a column so.
inline constexpr unsigned whole_number_length = 1011, float_length = 1013, zoned_time_length = 1017;

/// Has an attachment give them so from now on. Its engine has to know them.
Status set_new_types(isc_db_handle database, NewTypes as);

/// The major numbers of the on-disk structures of Firebird 3.0 and 4.0: what a database can have goes by
/// them.
inline constexpr int structure_of_3 = 12, structure_of_4 = 13;
/// Asks for that of a database.
Status ask_structure(isc_db_handle database, int& major);

}  // namespace zmfb::sql
