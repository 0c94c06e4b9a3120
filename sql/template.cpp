#include "host/text.h"
#include "sql/methods.h"

namespace zmfb::sql {

// Pairs are applied in their order, so that a value may hold a placeholder of a later pair.
Value assemblestatement(Self&, Args args) {
    Value stmt = args[0];
    const Value& param = args[1];
    if (host::empty(param)) return stmt;
    for (const Value& pair : param.items()) stmt = host::strtran(stmt, pair[1], pair[2]);
    return stmt;
}

}  // namespace zmfb::sql
