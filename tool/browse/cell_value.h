/// Values of fields that outlive the records they are of.
#pragma once

#include <chrono>
#include <string>
#include <variant>

#include "zmfbconn/area_fields.h"

namespace zmfb::tool::browse {

/// A value as the field holds it, with all its digits; std::monostate for NULL.
using CellValue = std::variant<std::monostate, bool, Decimal, double, std::string, Bytes,
                               std::chrono::year_month_day, TimeOfDay, Timestamp>;

/// The value of a field of that type. Throws AreaError.
CellValue value_of(const FieldValue& field, SqlType type);
/// Throws AreaError when the field does not hold it.
void assign(FieldPlace place, const CellValue& value);

}  // namespace zmfb::tool::browse
