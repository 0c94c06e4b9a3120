/// Imports of several files at once.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tool/import/run.h"

namespace zmfb::tool {

/// Imports the files in so many processes, each with an attachment of its own to the database of `session`,
/// which is not attached itself. What they say comes in the order of the files, and `told` gets one for each
/// that was begun. Goes on behind a file that was refused. Returns the status of the last that was, or what
/// to end with when it was interrupted.
Exit import_at_once(const Session& session, const ImportOptions& options,
                    const std::vector<std::string>& files, std::size_t jobs, ImportedSoFar& so_far,
                    std::vector<ImportedFile>& told);

}  // namespace zmfb::tool
