/// Filling statement templates.
#pragma once

#include "conn/self.h"

namespace zmfb::sql {

/// The template `stmt` with the {placeholder, value} pairs of `param` applied, as assemblestatement() has it.
Value filled(Value stmt, const Value& param);

}  // namespace zmfb::sql
