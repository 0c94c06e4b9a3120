/// Asking a person before something is done.
#pragma once

#include <string_view>

namespace zmfb::tool {

/// Asks `question` on standard error and reads a line from standard input; .T. for "y" or "yes" only.
bool confirm(std::string_view question);

}  // namespace zmfb::tool
