/// What is found out about a file before anything is made.
#pragma once

#include "tool/import/file_import.h"

namespace zmfb::tool {

/// Plans the table and looks through all records. What is wrong is among the plan's refusals and the rejects;
/// refuse() throws it. Throws Failure when it cannot look.
void inspect(FileImport& file);

/// Whether nothing was found that is in the way.
bool can_work(const FileImport& file);

/// Asks the database what it has against an import that nothing else is in the way of.
void rehearse_import(FileImport& file);

/// Throws Failure with all that is wrong, if anything is.
void refuse(const FileImport& file);

/// What goes with a table that is replaced, and does not come back: ", index BY_NAME".
std::string what_goes(const FileImport& file);

}  // namespace zmfb::tool
