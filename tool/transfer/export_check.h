/// What of a table a DBF file cannot hold.
#pragma once

#include <string>
#include <vector>

#include "zmfbconn/connection.h"

namespace zmfb::tool {

/// Texts in UTF-8, a line each.
struct ExportCheck {
    std::vector<std::string> warnings;  ///< the export works, but loses this
    std::vector<std::string> refusals;  ///< the export cannot work
};

/// Looks at the columns of `table`, and unless they are refused already at its values. `structure` has its
/// fields without the driver's own.
ExportCheck check_export(zmFBConn& connection, const std::string& table, const Structure& structure);

}  // namespace zmfb::tool
