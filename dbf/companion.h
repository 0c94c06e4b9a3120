/// Files that lie beside a DBF file.
#pragma once

#include <string>
#include <string_view>

#include "dbf/header.h"

namespace zmfb::dbf {

/// The path beside the table at `path` with another ending (".fpt", in lower case), in capitals when its own
/// is.
std::string companion_path(const std::string& path, std::string_view ending);

/// The path of the file in the folder of `path` that has its name with another ending (".fpt", in lower
/// case), both in any letter case; that of companion_path() goes before others, and then
/// one of the same letters but for the ending. "" when there is none.
std::string find_companion(const std::string& path, std::string_view ending);

/// The ending of the memo files of a dialect: ".dbt", ".fpt", ".smt".
std::string_view memo_ending(Dialect dialect);

std::string lower(std::string_view text);

}  // namespace zmfb::dbf
