/// Texts on their way to a terminal, a file or a library that speaks UTF-8.
#pragma once

#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace zmfb::host {

/// The UTF-8 form of a text of the runtime, which is ISO-8859-1: one byte for each below 128, two for each
/// other.
std::string to_utf8(std::string_view latin1);

}  // namespace zmfb::host

#pragma GCC visibility pop
