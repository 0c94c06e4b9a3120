/// What the statement templates of the system tables are filled with, besides their names.
#pragma once

#include "locks/names.h"

namespace zmfb::locks {

/// A table name is upper-cased, the others go in as they are.
Parameter tablename(const Value& tbl);
Parameter recno(const Value& number);
Parameter areaid(const Value& area);
Parameter shared(bool is_shared);

/// Whether the first value of the first data row is a number above 0.
bool counts_some(const Value& result);

}  // namespace zmfb::locks
