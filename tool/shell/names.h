/// The names that people may type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

const std::vector<std::string>& method_names();
bool is_method(std::string_view name);

/// What an input may begin with: words of SQL and the methods.
std::vector<std::string> beginnings();
/// The words of SQL that may stand elsewhere.
std::vector<std::string> sql_words();

}  // namespace zmfb::tool
