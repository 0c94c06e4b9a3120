/// Adding the records of a file to a table that is there.
#pragma once

#include "tool/import/plan.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/dbf/header.h"

namespace zmfb::tool {

/// Has the values of the plan travel into the columns of its table, which is there, as these take them. What
/// a field cannot go into is refused; the columns that the file does not have are a note. Throws Failure.
void plan_append(zmFBConn& connection, const dbf::Header& header, ImportPlan& plan);

}  // namespace zmfb::tool
