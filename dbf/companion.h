/// Files that lie beside a DBF file.
#pragma once

#include <string>
#include <string_view>

#include "dbf/header.h"

namespace zmfb::dbf {

/// The path of the file in the folder of `path` that has its name with another ending (".fpt", in lower
/// case), both in any letter case; the one in the same letters goes before others. "" when there is none.
std::string find_companion(const std::string& path, std::string_view ending);

/// The ending of the memo files of a dialect: ".dbt", ".fpt", ".smt".
std::string_view memo_ending(Dialect dialect);

std::string lower(std::string_view text);

}  // namespace zmfb::dbf
