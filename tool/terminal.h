/// What standard output is connected to.
#pragma once

#include <cstddef>

namespace zmfb::tool {

/// Whether standard output is a terminal.
bool output_is_terminal();
/// The width of that terminal in characters; 0 when it is none, and nothing need be cut.
std::size_t terminal_width();
/// The height of that terminal in lines.
std::size_t terminal_height();
/// Whether colours may be used: on a terminal that is not "dumb", unless NO_COLOR is set.
bool output_has_colours();

}  // namespace zmfb::tool
