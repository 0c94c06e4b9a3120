/// Scripts of statements.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::sql {

/// The statements of a script, without comment lines and without what ends them, which is ";" at the end of a
/// line, or what "SET TERM" says from there on.
std::vector<std::string> statements_of(std::string_view script);

}  // namespace zmfb::sql
