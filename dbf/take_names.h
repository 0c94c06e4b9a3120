/// How files that belong together take their names.
#pragma once

#include <string>
#include <vector>

#include "dbf/new_file.h"

namespace zmfb::dbf {

/// Has the new files take their names, the first one last, and the files `gone`, which belonged to what the
/// first one replaces, go. When there are other files than the first, that one is nowhere meanwhile: so a
/// process that is killed leaves no two files under their names that do not belong together; what was there
/// is then beside it, with ".zmfb-old-" before its name. When it fails, everything is as it was.
void take_names(const std::vector<NewFile*>& files, const std::vector<std::string>& gone);

/// Removes what such a process left beside a place.
void remove_old(const std::string& place);

}  // namespace zmfb::dbf
