/// What a script that was stopped has not run.
#pragma once

#include <cstddef>
#include <string_view>

#include "tool/line_input.h"

namespace zmfb::tool {

struct Rest {
    std::size_t lines = 0;
    std::size_t inputs = 0;  ///< statements, calls and commands
};

/// Counts what is left of `in`, and of the line read last, whose rest is `left`.
Rest count_rest(LineInput& in, std::string_view left);

}  // namespace zmfb::tool
