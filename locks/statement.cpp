#include "locks/statement.h"

#include "host/text.h"

namespace zmfb::locks {

Placeholder tablename(const Value& tbl) { return {"@@TABLENAME", host::upper(tbl)}; }
Placeholder recno(const Value& number) { return {"@@RECNO", number}; }
Placeholder areaid(const Value& area) { return {"@@AREAID", area}; }
Placeholder shared(bool is_shared) { return {"@@SHARED", is_shared ? "T" : "F"}; }

bool counts_some(const Value& result) { return first_number(result).number() > 0; }

}  // namespace zmfb::locks
