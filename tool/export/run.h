/// Writing the rows of a query into a DBF file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/export/source.h"
#include "tool/session.h"
#include "tool/transfer/manifest.h"
#include "tool/transfer/names.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

struct ExportOptions {
    dbf::Format format = dbf::Format::dbase3;
    bool lossy = false;
    bool yes = false;
    std::string encoding;  ///< of the texts in the files, by its name for iconv
    std::string folder = ".";
    std::string manifest;  ///< "" for none
    Renames renames;
};

/// Writes one file, which appears under its name when it is whole, and tells of it on standard output.
/// `expected` is how many records there will be, 0 when that is not known. `entries` are those of the
/// manifest, when there is to be one. Throws Failure; what was there
/// under the name stays then.
void export_file(Session& session, Transaction& work, const ExportSource& source,
                 const ExportOptions& options, std::uint64_t expected, std::vector<ManifestFile>& entries);

}  // namespace zmfb::tool
