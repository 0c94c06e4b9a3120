/// Rows as the plainest C++ program would keep them: a vector of vectors of std::string.
#pragma once

#include <string>
#include <vector>

#include "bench/support/bare_session.h"

namespace zmfb::bench {

using StringRows = std::vector<std::vector<std::string>>;

/// All rows of a query, converted by the means of the standard library; NULL as "NULL". Texts are as long as
/// they are stored.
StringRows read_strings(BareSession& session, const std::string& sql);

}  // namespace zmfb::bench
