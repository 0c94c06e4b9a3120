/// The questions whether something exists, and what a failed one says of that: nothing.
#pragma once

#include "conn/self.h"

namespace zmfb::catalog {

/// The statements that count the tables, fields and indexes of a name, which is upper-cased.
Value table_question(const Value& tbl);
Value field_question(const Value& tbl, const Value& fldname);
Value index_question(const Value& ind);

/// Whether the question was answered, and the answer is none. A question that fails is logged as any query.
bool surely_absent(Self& self, const Value& question);

}  // namespace zmfb::catalog
