/// The names that people may type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

const std::vector<std::string>& method_names();
bool is_method(std::string_view name);
/// "istable(tbl: table): logical"; parameters that may be left out in brackets.
std::string signature_of(const MethodRow& method);

/// What an input may begin with: words of SQL and the methods.
std::vector<std::string> beginnings();
/// The words of SQL that may stand elsewhere.
std::vector<std::string> sql_words();

}  // namespace zmfb::tool
