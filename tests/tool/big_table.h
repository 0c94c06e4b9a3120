#pragma once

#include <string>

#include "tests/support/dbf_builder.h"

namespace zmfb::test {

/// 300,000 records, whose import and export take long enough for something to happen to them.
inline DbfBuilder big_table() {
    DbfBuilder dbf = DbfBuilder().field("CODE", 'N', 8).field("NAME", 'C', 60).field("BORN", 'D', 8);
    for (int i = 0; i < 300000; ++i) dbf.record({std::to_string(i), "name", "20070301"});
    return dbf;
}

}  // namespace zmfb::test
