/// Whose transactions a statement has waited for, or was refused for.
#pragma once

#include <string>
#include <string_view>

#include "tool/session.h"

namespace zmfb::tool {

/// Text for people, a line for each transaction: that of the number in the engine's message about a conflict;
/// without one, after Ctrl-C, all of others that have changed rows and not ended, of which one may have been
/// waited for. "" when there is none. Only SYSDBA and the owner of the database are shown those of other
/// users, which is said to others.
std::string who_is_in_the_way(Session& session, std::string_view engine_message);

}  // namespace zmfb::tool
