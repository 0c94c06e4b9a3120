/// Key expressions of xBase, as the engine computes them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rdd/key_term.h"
#include "rdd/order.h"

namespace zmfb::rdd {

/// Which work area an expression such as CUST->NAME is about.
struct KeyFields {
    const Structure& fields;  ///< those of floating numbers with the type "F"
    /// What the area may be called besides FIELD; anything when there are none.
    std::vector<std::string> aliases = {};
};

/// The key of an expression, without the record number; columns are written with `prefix` before their names.
/// An expression is made of fields, texts, numbers, +, parentheses, UPPER, LOWER, TRIM, SUBSTR, STR, STRZERO,
/// DTOS, PADR and PADL; its value is a text, a number, a date or a logical. The keys of two rows compare as
/// their values do: texts byte by byte, numbers by value, dates by day with the empty one first, .F. before
/// .T. Throws OrderError, which tells what was not understood.
Term key_of(std::string_view expression, const KeyFields& table, std::string_view prefix = "");

/// The order by an expression. A unique one has of all records with the same value the first one only.
Order order_of(std::string_view table, std::string name, std::string expression, bool unique,
               const KeyFields& fields);

}  // namespace zmfb::rdd
