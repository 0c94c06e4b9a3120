#include "tool/character_set.h"

#include <fmt/format.h>

#include "tool/catalog.h"

namespace zmfb::tool {

CharacterSet default_character_set(zmFBConn& connection) {
    const auto rows = rows_of<std::string, int>(
        connection,
        "SELECT C.RDB$CHARACTER_SET_NAME, C.RDB$BYTES_PER_CHARACTER FROM RDB$CHARACTER_SETS C JOIN "
        "RDB$DATABASE D ON C.RDB$CHARACTER_SET_NAME = COALESCE(D.RDB$CHARACTER_SET_NAME, 'NONE')");
    if (rows.empty()) return {"NONE", 1};
    const auto& [name, bytes] = rows.front();
    return {name, bytes};
}

std::string width_problem(const CharacterSet& set) {
    if (set.bytes == 1) return "";
    return fmt::format(
        "the database's default character set {} takes up to {} bytes a character; DBF files go in and out "
        "of databases where it takes one",
        set.name, set.bytes);
}

}  // namespace zmfb::tool
