/// Fields between the runtime and the database: their types, and values of them.
#pragma once

#include <cstdint>
#include <vector>

#include "host/value.h"
#include "rdd/area_table.h"

namespace zmfb::rdd {

/// The fields of the program that an area reads, in their order.
std::vector<TableField> table_fields(zmFBConn connection, const Area& area);

/// A value that was read as the field's type of the runtime has it: texts with their blanks, numbers with the
/// field's picture. What is NULL, or was not read, is the field's empty value.
host::Value runtime_value(const TableField& field, const host::Value& read);

enum class Fit : std::uint8_t { fits, wrong_kind, too_wide };
/// Whether the field holds a value of the program.
Fit fit(const TableField& field, const host::Value& value);
/// Assigns one that fits: a text cut to the field's length, a number rounded to its decimals, half away from
/// zero. Throws AreaError.
void assign_value(const TableField& field, FieldPlace place, const host::Value& value);

}  // namespace zmfb::rdd
