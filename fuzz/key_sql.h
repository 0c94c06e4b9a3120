/// The SQL of keys, computed here: what the engine makes of the few functions that key expressions become.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

#include "host/date.h"

namespace zmfb::fuzz {

/// A number with decimals, as NUMERIC(18, scale) has it.
struct Exact {
    std::int64_t units = 0;
    int scale = 0;
};

/// What a column has; std::monostate is NULL.
using SqlValue = std::variant<std::monostate, std::string, Exact, double, host::Date>;
using SqlRow = std::map<std::string, SqlValue, std::less<>>;

/// The engine would refuse the row: a number is greater than NUMERIC(18) holds.
struct TooGreat : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The value of an expression. Aborts when it is made of anything else than those functions and the columns
/// of the row, or a text does not fit into its CHAR.
SqlValue computed_sql(std::string_view sql, const SqlRow& row);

}  // namespace zmfb::fuzz
