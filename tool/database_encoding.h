/// The encoding of the texts of a database, as its description says it.
#pragma once

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Has the database say that its texts are in the encoding in force, instead of its description. Throws
/// Failure.
void keep_encoding(zmFBConn& connection);

/// Puts into force the encoding that the database says; UTF-8 when it says none and that is its default
/// character set, else ISO-8859-1. Throws Failure when
/// that is none for texts here, or cannot be asked.
void adopt_encoding(zmFBConn& connection);

}  // namespace zmfb::tool
