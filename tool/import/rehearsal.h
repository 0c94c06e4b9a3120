/// What the database has against an import.
#pragma once

#include <string>

#include "tool/import/plan.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// What is to be made, and of what.
struct Rehearsed {
    std::string made;      ///< the table that the rows are loaded into
    std::string replaced;  ///< a table that is dropped for it; "" for none
    std::string added_to;  ///< a table that the rows go on to; "" for none
};

/// Has the engine make and drop what an import would, in a transaction that is rolled back, and looks for
/// other programs that have in use what would be dropped. Returns why that fails, in the engine's words; ""
/// when it does not.
std::string rehearse(zmFBConn& connection, const ImportPlan& plan, const Rehearsed& rehearsed);

}  // namespace zmfb::tool
