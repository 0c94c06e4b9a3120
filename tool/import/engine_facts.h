/// What the files of a run ask of the engine, each thing once.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tool/character_set.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Each call is to have the same database. All throw Failure.
class EngineFacts {
  public:
    /// The default character set of the database.
    const CharacterSet& character_set(zmFBConn& connection);
    /// How many characters a name has at most.
    std::size_t longest_name(zmFBConn& connection);
    /// Those of the names, upper case, that this engine or a later one takes for words of its own.
    std::set<std::string> reserved(zmFBConn& connection, const std::vector<std::string>& names);

  private:
    std::optional<CharacterSet> character_set_;
    std::optional<std::size_t> longest_name_;
    std::set<std::string> known_, reserved_;  // names that were asked for, and those of them
};

}  // namespace zmfb::tool
