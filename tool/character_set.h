/// The character set of the texts of a database.
#pragma once

#include <string>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// The set that columns get which name none.
struct CharacterSet {
    std::string name;
    int bytes = 1;  ///< that a character takes at most
};

/// The default character set of the database. Throws Failure.
CharacterSet default_character_set(zmFBConn& connection);

/// Why no DBF file can go into such a database or out of it; "" when it can.
std::string width_problem(const CharacterSet& set);

}  // namespace zmfb::tool
