/// What belongs to a table that is made anew.
#pragma once

#include <string>
#include <vector>

#include "tool/name.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// An index that is made on the table beside, under another name, to see whether its rows can have it.
struct TriedIndex {
    std::string statement;
    std::string tried_name, name;
};

struct Belongings {
    std::vector<std::string> again;  ///< the statements that make indexes, triggers, views and rights again
    std::vector<std::string> lost;   ///< what cannot be made again, in words: "index BY_NAME"
    std::vector<TriedIndex> tried;
};

/// Those of a table of the driver, besides what each has, and of these views on it, for one with these
/// columns. Throws Failure.
Belongings belongings_of(zmFBConn& connection, const Name& table, const std::vector<std::string>& columns,
                         const std::vector<Name>& views);

/// What the engine said of an index that was tried, for that of the table.
std::string in_words_of_table(const Belongings& belongings, std::string message);

}  // namespace zmfb::tool
