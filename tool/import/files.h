/// The files that an import is given: names, folders, patterns.
#pragma once

#include <string>
#include <vector>

namespace zmfb::tool {

/// The paths that each of `given` means: of a folder the DBF files in it, of a pattern what fits it, both in
/// the order of their names; of anything else itself. Throws Failure for a folder without a DBF file, and a
/// pattern that fits nothing.
std::vector<std::string> import_paths(const std::vector<std::string>& given);

}  // namespace zmfb::tool
