#include "lexer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iterator>
#include <utility>

#include "host/date.h"

namespace zmfb::host_test {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
char upper_letter(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

// The longer ones first.
constexpr std::array<std::string_view, 31> symbols{
    ".AND.", ".NOT.", ".OR.", ":=", "==", "!=", "<>", "<=", ">=", "**", "+", "-", "*", "/", "%", "^",
    "$",     "=",     "#",    "<",  ">",  "!",  "(",  ")",  "[",  "]",  "{", "}", "|", ",", ":"};

constexpr std::array<std::pair<std::string_view, bool>, 4> logicals{
    {{".T.", true}, {".F.", false}, {".Y.", true}, {".N.", false}}};

// A whole literal is shown in ten columns, or one more than its digits when these are more than nine; one
// with decimals in ten columns, or as many as it has, before the point.
host::Picture literal_picture(std::size_t whole, std::size_t decimals, bool has_point) {
    constexpr std::size_t columns = 10;
    const std::size_t before = has_point || whole < columns ? std::max(whole, columns) : whole + 1;
    const std::size_t width = before + (decimals > 0 ? decimals + 1 : 0);
    return {static_cast<std::uint8_t>(width), static_cast<std::uint8_t>(decimals)};
}

class Lexer {
  public:
    explicit Lexer(std::string_view source) : source_(source) {}

    std::vector<Token> run() {
        for (skip_blanks(); at_ < source_.size(); skip_blanks()) tokens_.push_back(next());
        tokens_.emplace_back();
        return std::move(tokens_);
    }

  private:
    [[nodiscard]] char peek(std::size_t ahead = 0) const {
        return at_ + ahead < source_.size() ? source_[at_ + ahead] : '\0';
    }

    void skip_blanks() {
        while (peek() == ' ' || peek() == '\t') ++at_;
    }

    [[nodiscard]] bool comes(std::string_view word) const {
        const std::string_view there = source_.substr(at_, word.size());
        return std::ranges::equal(there, word, [](char a, char b) { return upper_letter(a) == b; });
    }

    [[nodiscard]] bool after_operand() const {
        if (tokens_.empty()) return false;
        const Token& last = tokens_.back();
        if (last.kind != TokenKind::symbol) return true;
        return last.text == ")" || last.text == "]" || last.text == "}";
    }

    Token next() {
        const char c = peek();
        if (c == '"' || c == '\'') return text(c);
        if (c == '[' && !after_operand()) return bracket_text();
        if (c == '{' && peek(1) == '^') return braced_date();
        if (is_digit(c) || (c == '.' && is_digit(peek(1)))) return number();
        if (is_letter(c)) return name();
        for (const auto& [word, value] : logicals) {
            if (!comes(word)) continue;
            at_ += word.size();
            return literal(value);
        }
        for (const std::string_view symbol : symbols) {
            if (!comes(symbol)) continue;
            at_ += symbol.size();
            return {.kind = TokenKind::symbol, .text = std::string(symbol), .literal = {}};
        }
        throw SyntaxError("no token begins with '" + std::string(1, c) + "'");
    }

    static Token literal(host::Value value) {
        return {.kind = TokenKind::literal, .text = {}, .literal = std::move(value)};
    }

    Token name() {
        const std::size_t first = at_;
        while (is_letter(peek()) || is_digit(peek())) ++at_;
        std::string word(source_.substr(first, at_ - first));
        std::ranges::transform(word, word.begin(), upper_letter);
        if (word == "NIL") return literal({});
        return {.kind = TokenKind::name, .text = std::move(word), .literal = {}};
    }

    std::string_view digits() {
        const std::size_t first = at_;
        while (is_digit(peek())) ++at_;
        return source_.substr(first, at_ - first);
    }

    Token number() {
        if (peek() == '0' && upper_letter(peek(1)) == 'X') return based_number();
        if (peek() == '0' && upper_letter(peek(1)) == 'D') return date();
        const std::size_t first = at_;
        const std::size_t whole = digits().size();
        // The point of 1.AND. is not the number's.
        const bool has_point = peek() == '.' && !is_letter(peek(1));
        std::size_t decimals = 0;
        if (has_point) {
            ++at_;
            decimals = digits().size();
        }
        double value = 0;
        std::from_chars(source_.data() + first, source_.data() + at_, value, std::chars_format::fixed);
        return literal({value, literal_picture(whole, decimals, has_point)});
    }

    Token based_number() {
        std::uint64_t value = 0;
        const char* first = source_.data() + at_ + 2;
        const auto end = std::from_chars(first, source_.data() + source_.size(), value, 16);
        if (end.ptr == first) throw SyntaxError("a number without digits");
        at_ = static_cast<std::size_t>(end.ptr - source_.data());
        return literal({static_cast<double>(value), host::Picture{}});
    }

    Token date() {
        at_ += 2;
        return literal(host::stod(digits()));
    }

    // {^1999-09-05}, with any signs between, or {^} for the empty date.
    Token braced_date() {
        const std::size_t end = source_.find('}', at_);
        if (end == std::string_view::npos) throw SyntaxError("a date without its end");
        std::string day;
        std::ranges::copy_if(source_.substr(at_, end - at_), std::back_inserter(day), is_digit);
        at_ = end + 1;
        return literal(host::stod(day));
    }

    Token bracket_text() {
        const std::size_t end = source_.find(']', at_);
        if (end == std::string_view::npos) throw SyntaxError("a text without its end");
        const std::string_view inside = source_.substr(at_ + 1, end - at_ - 1);
        at_ = end + 1;
        return literal(inside);
    }

    Token text(char quote) {
        std::string bytes;
        for (++at_; peek() != quote; ++at_) {
            if (at_ >= source_.size()) throw SyntaxError("a text without its end");
            if (peek() == '\\') {
                ++at_;
                bytes += escaped();
            } else {
                bytes += peek();
            }
        }
        ++at_;
        return literal(bytes);
    }

    // The byte of an escape whose backslash has been read; leaves the place at its last character.
    char escaped() {
        const char c = peek();
        switch (c) {
            case 'n':
                return '\n';
            case 'r':
                return '\r';
            case 't':
                return '\t';
            case 'a':
                return '\a';
            case 'b':
                return '\b';
            case 'f':
                return '\f';
            case 'v':
                return '\v';
            case 'x':
                return ++at_, coded(2, 16);
            default:
                return c >= '0' && c <= '7' ? coded(3, 8) : c;
        }
    }

    char coded(std::size_t longest, int base) {
        unsigned code = 0;
        const std::string_view part = source_.substr(at_, longest);
        const auto end = std::from_chars(part.data(), part.data() + part.size(), code, base);
        if (end.ptr == part.data()) throw SyntaxError("an escape without its code");
        at_ += static_cast<std::size_t>(end.ptr - part.data()) - 1;
        return static_cast<char>(code & 0xFF);
    }

    std::string_view source_;
    std::size_t at_ = 0;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> tokens_of(std::string_view source) { return Lexer(source).run(); }

}  // namespace zmfb::host_test
