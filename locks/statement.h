/// What the statement templates of the system tables are filled with, besides their names.
#pragma once

#include "locks/names.h"

namespace zmfb::locks {

/// A table name is upper-cased, the others go in as they are.
Placeholder tablename(const Value& tbl);
Placeholder recno(const Value& number);
Placeholder areaid(const Value& area);
Placeholder shared(bool is_shared);

/// Whether the first value of the first data row is a number above 0.
bool counts_some(const Value& result);

}  // namespace zmfb::locks
