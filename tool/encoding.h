/// Between the terminal's UTF-8 and the object's ISO-8859-1.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// ISO-8859-1 to UTF-8; every byte has a character.
std::string to_utf8(std::string_view latin1);

/// UTF-8 to ISO-8859-1; nothing when the text is not UTF-8 or has a character outside ISO-8859-1.
std::optional<std::string> to_latin1(std::string_view utf8);

}  // namespace zmfb::tool
