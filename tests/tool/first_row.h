#pragma once

#include <string>

#include "tests/tool/tool.h"

namespace zmfb::test {

/// The first row of a query that was run with --mode csv; "" when it has none.
inline std::string first_row(const Finished& run) {
    EXPECT_EQ(run.status, 0) << run.err;
    const std::vector<std::string> all = lines(run.out);
    return all.size() < 2 ? "" : all[1].substr(0, all[1].find('\r'));
}

}  // namespace zmfb::test
