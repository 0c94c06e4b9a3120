/// How the records of a file become those of a table.
#pragma once

#include "tool/import/file_import.h"

namespace zmfb::tool {

/// Makes the table and loads the records into it, in the place of the one that is there, or for it to have
/// too: whole or not at all. Throws Failure, after what was made is undone.
void load(FileImport& file);

}  // namespace zmfb::tool
