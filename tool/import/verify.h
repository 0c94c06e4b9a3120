/// Whether a table holds what was exported.
#pragma once

#include <string>
#include <vector>

#include "tool/import/plan.h"
#include "tool/transfer/manifest.h"
#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Reads the rows of a table that a file was imported as, by their numbers, and says what differs from what
/// the manifest tells of the file; "" when nothing does. Throws Failure.
std::string difference(zmFBConn& connection, const std::string& table,
                       const std::vector<PlannedColumn>& columns, const dbf::Header& header,
                       const ManifestFile& entry);

}  // namespace zmfb::tool
