/// What a person may do about an error.
#pragma once

#include <string_view>

namespace zmfb::tool {

/// A hint for what the engine said, found by the words in it; empty when none is known.
std::string_view hint_for(std::string_view message);

}  // namespace zmfb::tool
