/// xBase literals as people type and read them.
///
/// A literal is a text in double or single quotes, a number, .T. or .F., NIL, a date {^2007-03-01} ({^} is
/// the empty date) or an array {a, {b, c}}. Texts may be joined with + and may have CHR(n) among their
/// pieces, which is how a text with line ends, zero bytes or both kinds of quotes is written out.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"

namespace zmfb::tool {

/// What is wrong with a literal or call that was typed, in words for a person.
struct SyntaxError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What was typed, as it was read. What is known without a call is a value.
struct Expression {
    enum class Kind { value, call, array, join };
    Kind kind = Kind::value;
    host::Value value = {};
    std::string method = {};             ///< of a call, in lower case
    std::vector<Expression> parts = {};  ///< arguments of a call, elements of an array, texts to join
};

/// The call that `:area` stands for.
Expression area_call();

/// Reads one call; a name alone is a call without arguments. `source` is UTF-8. Throws SyntaxError.
Expression parse_call(std::string_view source);

/// Writes a value as one line of UTF-8 that parse_call() reads back; objects and blocks, which have no
/// literal, are shown by their kind in angle brackets.
std::string to_literal(const host::Value& value);

}  // namespace zmfb::tool
