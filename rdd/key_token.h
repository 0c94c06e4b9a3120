/// The words of a key expression.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::rdd {

/// What a word is.
enum class TokenKind { name, text, number, symbol, end };

/// A word of an expression.
struct Token {
    TokenKind kind = TokenKind::end;
    std::string text;          ///< a name in upper case, what stands between the quotes of a text
    std::string_view written;  ///< as it stands in the expression
};

/// Takes an expression apart; the last one is of kind end. A text stands between "", '' or []. Symbols are
/// ->, +, -, (, ), the comma, and every other character that begins nothing else.
std::vector<Token> tokens_of(std::string_view expression);

}  // namespace zmfb::rdd
