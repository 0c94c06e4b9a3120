/// The names in a folder, as the C library reads them: the directory iterators of the C++ library end the
/// process where memory ends.
#pragma once

#include <string>
#include <system_error>
#include <vector>

namespace zmfb::dbf {

/// The names of all that is in `folder`, but for "." and "..", in no order; those read so far when it cannot
/// be read, which `error` tells then.
std::vector<std::string> names_in(const std::string& folder, std::error_code& error);

}  // namespace zmfb::dbf
