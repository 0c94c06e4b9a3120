/// Files that lie beside a DBF file.
#pragma once

#include <string>
#include <string_view>

namespace zmfb::dbf {

/// The path of the file in the folder of `path` that has its name with another ending (".fpt", in lower
/// case), both in any letter case; the one in the same letters goes before others. "" when there is none.
std::string find_companion(const std::string& path, std::string_view ending);

std::string lower(std::string_view text);

}  // namespace zmfb::dbf
