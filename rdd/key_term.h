/// What key expressions are made of, in SQL: fields, constants, functions.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rdd/order.h"
#include "zmfbconn/method_types.h"

namespace zmfb::rdd {

/// A part of a key expression. Texts are bytes of the character set NONE, never NULL; dates are NULL when
/// they are empty.
struct Term {
    std::string sql;
    char type = 'C';           ///< 'C', 'N', 'D' or 'L'
    std::size_t width = 0;     ///< of a text, in bytes; of a field of numbers, its digits
    bool varying = false;      ///< whether a text may be shorter than that
    std::size_t decimals = 0;  ///< of a number
    double most = 0;           ///< of a number: how far it is from zero at most, as fields are declared
    bool exact = true;         ///< whether a number has no other digits than these
    /// Of a number that stands there itself.
    std::optional<double> constant = {};
    bool is_field = false;  ///< whether it is a field, and nothing but it
};

/// A field, whose column is written with `prefix` before its name. One of floating numbers has the type "F".
/// Throws for one of no such type.
Term field_term(const FieldDescriptor& field, std::string_view prefix);
/// A text that stands there itself.
Term text_term(std::string_view bytes);
/// A number that stands there itself, as digits with or without a point.
Term number_term(std::string_view digits, bool negative);
/// Throws for a number, not a floating one, that may have more digits than the engine adds up in a key.
void require_digits(const Term& number);
/// `a` + `b`.
Term sum_of(const Term& a, const Term& b);
/// A function of that name, upper case.
Term call(std::string_view name, const std::vector<Term>& arguments);
/// Whether there is one of that name.
bool is_key_function(std::string_view name);

/// A literal in SQL of the character set NONE.
std::string literal(std::string_view bytes);
/// A text term as CHAR of its width.
std::string padded(const Term& text);

}  // namespace zmfb::rdd
