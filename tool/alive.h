/// Whether who has something still lives.
#pragma once

#include <optional>
#include <string_view>

#include "zmfbconn/area_error.h"

namespace zmfb::tool {

enum class Alive { yes, no, unknown };

/// "alive", "dead" or "unknown".
std::string_view alive_name(Alive alive);

/// The number of its process; nothing when it is not to be told.
std::optional<long> process_of(const Holder& holder);

/// Asks this host whether the process lives; unknown when it is one of another host, or of none for sure.
Alive is_alive(const Holder& holder, std::string_view this_host);

}  // namespace zmfb::tool
