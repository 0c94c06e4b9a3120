/// Creating databases.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "zmfbconn/status.h"

namespace zmfb::sql {

/// Creates a database of dialect 3 without a default character set; a local file that exists is refused and
/// left alone. `fill`, when given, puts in what it is to have. A local file gets its name when all that is
/// done: until then, and for `fill`, the number of this process stands behind it, and it is removed when
/// anything fails or is thrown.
Status create_database(std::string_view database, std::string_view user, std::string_view password,
                       const std::function<Status(const std::string& name)>& fill = {});

}  // namespace zmfb::sql
