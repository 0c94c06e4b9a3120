/// The names that people may type.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/session.h"

namespace zmfb::tool {

const std::vector<std::string>& method_names();
bool is_method(std::string_view name);

/// What an input may begin with: words of SQL and the methods.
std::vector<std::string> beginnings();
/// The words of SQL that may stand elsewhere.
std::vector<std::string> sql_words();

/// The tables and views of the database, as of the last time that forget_tables() was called.
const std::vector<std::string>& table_names(Session& session);
void forget_tables();

}  // namespace zmfb::tool
