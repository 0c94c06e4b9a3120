/// The tokens of an xBase expression.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"

namespace zmfb::host_test {

/// The text is no expression of the language, or names something that is not known.
struct SyntaxError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class TokenKind { literal, name, symbol, end };

struct Token {
    TokenKind kind = TokenKind::end;
    std::string text;     ///< a name or symbol in upper case
    host::Value literal;  ///< a text, number, date, logical or NIL
};

/// Takes `source` apart; the last token is of kind end. Texts stand between "", '' or [], the first two with
/// C escapes
/// (\n \r \t \\ \" \' \0 to \377 \x00 to \xff). Throws SyntaxError.
std::vector<Token> tokens_of(std::string_view source);

}  // namespace zmfb::host_test
