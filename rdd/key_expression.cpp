#include "rdd/key_expression.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "host/text.h"
#include "rdd/key_token.h"

namespace zmfb::rdd {

namespace {

constexpr std::size_t number_digits = 18;

// Far more than an expression that its database can note needs. Descriptions may be of any length, and a part
// may stand in the SQL more than once.
constexpr int deepest = 100;
constexpr std::size_t longest_sql = 32768;

class Parser {
  public:
    Parser(std::string_view expression, const KeyFields& table, std::string_view prefix)
        : tokens_(tokens_of(expression)), table_(table), prefix_(prefix) {}

    Term whole() {
        Term term = sum();
        if (next().kind != TokenKind::end) not_understood(next().written);
        if (!has_field_) throw OrderError("it has no field in it");
        return term;
    }

  private:
    [[nodiscard]] const Token& next() const { return tokens_[at_]; }
    Token take() { return tokens_[at_ + 1 < tokens_.size() ? at_++ : at_]; }
    bool take(std::string_view symbol) {
        const bool is_there = next().kind == TokenKind::symbol && next().text == symbol;
        if (is_there) ++at_;
        return is_there;
    }
    void expect(std::string_view symbol) {
        if (!take(symbol)) throw OrderError(fmt::format("{} is missing before {}", symbol, shown(next())));
    }
    static std::string shown(const Token& token) {
        return token.kind == TokenKind::end ? "its end" : fmt::format("\"{}\"", token.written);
    }
    [[noreturn]] static void not_understood(std::string_view words) {
        throw OrderError(fmt::format("\"{}\" is not understood", words));
    }

    Term sum() {
        if (++depth_ > deepest) throw OrderError("it nests too deeply");
        Term term = item();
        for (check_length(term); take("+"); check_length(term)) term = sum_of(term, item());
        --depth_;
        return term;
    }

    static void check_length(const Term& term) {
        if (term.sql.size() > longest_sql) throw OrderError("it becomes too long in SQL");
    }

    Term item() {
        const bool negative = take("-");
        const Token token = take();
        if (token.kind == TokenKind::number) {
            if (token.text.size() > number_digits) not_understood(token.written);
            return number_term(token.text, negative);
        }
        if (negative) not_understood("-");
        if (token.kind == TokenKind::text) return text_term(token.text);
        if (token.kind == TokenKind::name) return named(token);
        if (token.kind == TokenKind::end) throw OrderError("it ends too early");
        if (token.text != "(") not_understood(token.written);
        Term term = sum();
        expect(")");
        return term;
    }

    Term named(const Token& name) {
        if (take("(")) return call(name);
        if (!take("->")) return field(name);
        check_alias(name);
        const Token of = take();
        if (of.kind != TokenKind::name)
            throw OrderError(fmt::format("a field is missing behind {}->", name.written));
        return field(of);
    }

    Term call(const Token& name) {
        if (!is_key_function(name.text)) not_understood(name.written);
        std::vector<Term> arguments;
        do arguments.push_back(sum());
        while (take(","));
        expect(")");
        return rdd::call(name.text, arguments);
    }

    void check_alias(const Token& alias) const {
        if (alias.text == "FIELD" || alias.text == "_FIELD") return;
        const bool is_memory = alias.text == "M" || alias.text == "MEMVAR";
        const bool is_known =
            table_.aliases.empty() || std::ranges::any_of(table_.aliases, [&](const std::string& known) {
                return host::upper(known).string() == alias.text;
            });
        if (is_memory || !is_known) not_understood(fmt::format("{}->", alias.written));
    }

    Term field(const Token& name) {
        const auto found = std::ranges::find(table_.fields, name.text, &FieldDescriptor::name);
        if (found == table_.fields.end()) not_understood(name.written);
        has_field_ = true;
        return field_term(*found, prefix_);
    }

    std::vector<Token> tokens_;
    const KeyFields& table_;
    std::string_view prefix_;
    std::size_t at_ = 0;
    int depth_ = 0;
    bool has_field_ = false;
};

// Numbers become 19 digits each, with a point among them: five times the greatest is added, so that negative
// ones have as many.
std::string number_key(const Term& number) {
    return fmt::format("cast(cast({} as numeric(18, {})) + 5{} as char(20) character set none)", number.sql,
                       number.decimals, std::string(number_digits - number.decimals, '0'));
}

std::string date_key(const Term& date) {
    return fmt::format("coalesce(cast(cast({} as date) as char(10) character set none), {})", date.sql,
                       literal(std::string(10, ' ')));
}

std::string record_key(std::string_view prefix) {
    return fmt::format("cast(cast({}RECNO as bigint) + 1000000000000000 as char({}) character set none)",
                       prefix, record_key_width);
}

}  // namespace

Term key_of(std::string_view expression, const KeyFields& table, std::string_view prefix) {
    try {
        Term key = Parser(expression, table, prefix).whole();
        if (key.type == 'C' && key.width == 0) throw OrderError("it is always empty");
        if (!key.exact) throw OrderError("it is made of floating numbers; STR of it can be one");
        if (key.type == 'N') require_digits(key);
        switch (key.type) {
            case 'C':
                key.sql = padded(key);
                break;
            case 'N':
                key.sql = number_key(key), key.width = 20;
                break;
            case 'D':
                key.sql = date_key(key), key.width = 10;
                break;
            default:
                break;
        }
        return key;
    } catch (const OrderError& error) {
        throw OrderError(
            fmt::format("{} cannot be a key: {}. A key is made of fields, texts, numbers, +, UPPER, LOWER, "
                        "TRIM, SUBSTR, STR, "
                        "STRZERO, DTOS, PADR and PADL",
                        expression, error.what()));
    }
}

Order order_of(std::string_view table, std::string name, std::string expression, bool unique,
               const KeyFields& fields) {
    const Term key = key_of(expression, fields);
    Order order;
    order.name = std::move(name);
    order.expression = std::move(expression);
    order.key = fmt::format("{} || {}", key.sql, record_key(""));
    order.type = key.type;
    order.width = key.width;
    order.decimals = key.decimals;
    if (unique) {
        const std::string of_this = fmt::format("\"{}\".", table);
        const std::string value = key_of(order.expression, fields, of_this).sql;
        const std::string other = key_of(order.expression, fields, "ZM_O.").sql;
        order.only = fmt::format(
            "not exists (select 1 from \"{0}\" ZM_O where {1} || {2} >= {3} and {1} || {2} < {3} || {4})",
            table, other, record_key("ZM_O."), value, record_key(of_this));
    }
    return order;
}

}  // namespace zmfb::rdd
