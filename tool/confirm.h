/// Asking a person before something is done.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// Asks `question` on standard error and reads a line from standard input; nothing at its end. Who does not
/// answer has not ended the line of the question, so it is ended then.
std::optional<std::string> ask(std::string_view question);

/// The same with [y/N] behind it; .T. for "y" or "yes" only.
bool confirm(std::string_view question);

}  // namespace zmfb::tool
