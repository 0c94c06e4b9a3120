/// Area ids taken apart: table ":" area ":" process ":" host, cut to 50 characters.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// Whether the process that an area id names still lives.
enum class Alive { yes, no, unknown };

/// "alive", "dead" or "unknown".
std::string_view alive_name(Alive alive);

struct AreaId {
    std::string table;
    std::string area;
    std::optional<long>
        process;       ///< nothing when it is not to be told, for an id that was cut before the host
    std::string host;  ///< perhaps cut
};

/// Takes an area id apart. An id that was not made by the driver comes back with all of it in `area`.
AreaId split_area_id(std::string_view id);

/// Asks this host whether the process lives; unknown when the id names another host, or none for sure.
Alive is_alive(const AreaId& id, std::string_view id_text, std::string_view this_host);

}  // namespace zmfb::tool
