#include "rdd/key_token.h"

#include <algorithm>
#include <utility>

#include "host/text.h"

namespace zmfb::rdd {

namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view digits = "0123456789";
constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";

bool is_one_of(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

// How many characters from the beginning on are of a set.
std::size_t run_of(std::string_view text, std::string_view set) {
    return std::min(text.find_first_not_of(set), text.size());
}

std::size_t number_length(std::string_view text) {
    const std::size_t whole = run_of(text, digits);
    if (whole == text.size() || text[whole] != '.') return whole;
    return whole + 1 + run_of(text.substr(whole + 1), digits);
}

std::size_t name_length(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && (is_one_of(text[length], letters) || is_one_of(text[length], digits)))
        ++length;
    return length;
}

bool begins_number(std::string_view text) {
    return is_one_of(text[0], digits) || (text[0] == '.' && text.size() > 1 && is_one_of(text[1], digits));
}

Token first_of(std::string_view rest) {
    const char first = rest.front();
    if (is_one_of(first, letters)) {
        const std::string_view name = rest.substr(0, name_length(rest));
        return {TokenKind::name, host::upper(name).string(), name};
    }
    if (begins_number(rest)) {
        const std::string_view number = rest.substr(0, number_length(rest));
        return {TokenKind::number, std::string(number), number};
    }
    if (is_one_of(first, "\"'[")) {
        const std::size_t end = rest.find(first == '[' ? ']' : first, 1);
        if (end != std::string_view::npos)
            return {TokenKind::text, std::string(rest.substr(1, end - 1)), rest.substr(0, end + 1)};
        return {TokenKind::symbol, std::string(rest), rest};  // a text without an end is all the rest
    }
    const std::string_view symbol = rest.substr(0, rest.starts_with("->") ? 2 : 1);
    return {TokenKind::symbol, std::string(symbol), symbol};
}

}  // namespace

std::vector<Token> tokens_of(std::string_view expression) {
    std::vector<Token> tokens;
    std::string_view rest = expression;
    for (;;) {
        rest.remove_prefix(run_of(rest, blanks));
        if (rest.empty()) break;
        tokens.push_back(first_of(rest));
        rest.remove_prefix(tokens.back().written.size());
    }
    tokens.push_back({TokenKind::end, "", rest});
    return tokens;
}

}  // namespace zmfb::rdd
