/// One import, in the process that does it.
#pragma once

#include <string>

#include "tool/session.h"
#include "tool/transfer/supervised.h"

namespace zmfb::tool {

struct ImportOptions {
    bool dry_run = false;
    bool skip_deleted = false;
    bool drop_existing = false;
    bool yes = false;
    bool keep_data_file = false;
    bool incomplete = false;
    std::string encoding;
    std::string rejects;
};

/// Imports a file after it was looked through, or with dry_run says only what would come of it. Reports what
/// it begins: "folder", "data", "external", "table" and "replaces" with a value each; and how far it is:
/// "phase" with "check", "copy" or "none" and the number of records, "at" with the records checked, "size"
/// with the bytes that one takes in the data file. Throws Failure.
Exit import_file(Session& session, const Reports& reports, const ImportOptions& options,
                 const std::string& file);

}  // namespace zmfb::tool
