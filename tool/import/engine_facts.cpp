#include "tool/import/engine_facts.h"

#include <cstdlib>

#include "tool/catalog.h"
#include "tool/transfer/names.h"

namespace zmfb::tool {

const CharacterSet& EngineFacts::character_set(zmFBConn& connection) {
    if (!character_set_) character_set_ = default_character_set(connection);
    return *character_set_;
}

// Engines before 4 have names of 31 bytes.
std::size_t EngineFacts::longest_name(zmFBConn& connection) {
    if (!longest_name_) longest_name_ = std::atoi(engine_version(connection).c_str()) >= 4 ? 63 : 31;
    return *longest_name_;
}

std::set<std::string> EngineFacts::reserved(zmFBConn& connection, const std::vector<std::string>& names) {
    std::vector<Name> asked;
    for (const std::string& name : names) {
        if (!known_.contains(name)) asked.emplace_back(name);
    }
    for (const Name& name : reserved_among(connection, asked)) reserved_.insert(name.bytes());
    known_.insert(names.begin(), names.end());
    std::set<std::string> found = reserved_later(names);
    for (const std::string& name : names) {
        if (reserved_.contains(name)) found.insert(name);
    }
    return found;
}

}  // namespace zmfb::tool
