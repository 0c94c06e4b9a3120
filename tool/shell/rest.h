/// What a script that was stopped has not run.
#pragma once

#include <cstddef>
#include <string>

#include "tool/line_input.h"

namespace zmfb::tool {

struct Rest {
    std::size_t lines = 0;
    std::size_t inputs = 0;  ///< statements, calls and commands
};

/// Counts what is left of `in`, and of the line read last, whose rest is `left`.
Rest count_rest(LineInput& in, const std::string& left);

}  // namespace zmfb::tool
