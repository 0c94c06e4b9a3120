#include "expression.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

#include "functions.h"
#include "host/error.h"
#include "host/number.h"
#include "operators.h"

namespace zmfb::host_test {
namespace {

using host::Args;
using host::Value;
using ScopePointer = std::shared_ptr<Scope>;

Value* find_variable(Scope* scope, const std::string& name) {
    for (; scope != nullptr; scope = scope->outer.get()) {
        const auto found = scope->variables.find(name);
        if (found != scope->variables.end()) return &found->second;
    }
    return nullptr;
}

Scope& outermost(Scope& scope) {
    Scope* found = &scope;
    while (found->outer != nullptr) found = found->outer.get();
    return *found;
}

Value variable(Scope& scope, const std::string& name) {
    if (const Value* found = find_variable(&scope, name)) return *found;
    if (name.front() == 'O') return outermost(scope).variables[name] = host::error_new();
    throw SyntaxError("unknown variable " + name);
}

Code literal(Value value) {
    return [value = std::move(value)](const ScopePointer&) { return value; };
}

std::vector<Value> evaluated(const std::vector<Code>& list, const ScopePointer& scope) {
    std::vector<Value> values;
    values.reserve(list.size());
    for (const Code& code : list) values.push_back(code(scope));
    return values;
}

std::string lower_case(std::string name) {
    std::ranges::transform(name, name.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name;
}

Value field_of(const Value& object, const std::string& name) {
    if (object.object() == nullptr) return host::argument_error(host::Subcode::wrong_kind, name, {object});
    return object.object()->get(name);
}

Value sent(const Value& object, const std::string& name, const std::vector<Value>& args) {
    if (object.object() == nullptr) return host::argument_error(host::Subcode::wrong_kind, name, {object});
    return object.object()->send(name, Args(args));
}

class Parser {
  public:
    explicit Parser(std::string_view source) : tokens_(tokens_of(source)) {}

    Code whole() {
        Code code = expression();
        if (now().kind != TokenKind::end) throw SyntaxError("more than one expression");
        return code;
    }

  private:
    [[nodiscard]] const Token& now() const { return tokens_[at_]; }
    [[nodiscard]] bool at_symbol(std::string_view symbol) const {
        return now().kind == TokenKind::symbol && now().text == symbol;
    }
    [[nodiscard]] bool assignment_follows() const {
        return now().kind == TokenKind::name && tokens_[at_ + 1].text == ":=" &&
               tokens_[at_ + 1].kind == TokenKind::symbol;
    }
    bool take(std::string_view symbol) {
        const bool there = at_symbol(symbol);
        if (there) ++at_;
        return there;
    }
    void expect(std::string_view symbol) {
        if (!take(symbol)) throw SyntaxError("expected " + std::string(symbol));
    }
    std::string take_name() {
        if (now().kind != TokenKind::name) throw SyntaxError("expected a name");
        return tokens_[at_++].text;
    }

    Code expression() {
        if (!assignment_follows()) return disjunction();
        std::string name = take_name();
        expect(":=");
        return [name = std::move(name), value = expression()](const ScopePointer& scope) {
            Value assigned = value(scope);
            Value* place = find_variable(scope.get(), name);
            (place != nullptr ? *place : scope->variables[name]) = assigned;
            return assigned;
        };
    }

    Code disjunction() {
        Code code = conjunction();
        while (take(".OR.")) {
            code = [a = std::move(code), b = conjunction()](const ScopePointer& scope) -> Value {
                return truth(a(scope), ".OR.") || truth(b(scope), ".OR.");
            };
        }
        return code;
    }

    Code conjunction() {
        Code code = negation();
        while (take(".AND.")) {
            code = [a = std::move(code), b = negation()](const ScopePointer& scope) -> Value {
                return truth(a(scope), ".AND.") && truth(b(scope), ".AND.");
            };
        }
        return code;
    }

    Code negation() {
        if (!take(".NOT.") && !take("!")) return binary(0);
        return [x = negation()](const ScopePointer& scope) { return logical_not(x(scope)); };
    }

    Code binary(std::size_t level) {
        if (level == binary_operators().size()) return unary();
        const auto operators = binary_operators()[level];
        Code code = binary(level + 1);
        for (;;) {
            const auto found = std::ranges::find_if(
                operators, [&](const OperatorRow& row) { return at_symbol(row.symbol); });
            if (found == operators.end()) return code;
            ++at_;
            code = [a = std::move(code), b = binary(level + 1),
                    apply = found->apply](const ScopePointer& scope) {
                const Value left = a(scope);
                return apply(left, b(scope));
            };
        }
    }

    Code unary() {
        if (take("+")) return unary();
        if (take("-")) {
            return [x = unary()](const ScopePointer& scope) { return host::negate(x(scope)); };
        }
        if (take("!") || take(".NOT.")) {
            return [x = unary()](const ScopePointer& scope) { return logical_not(x(scope)); };
        }
        return postfix(primary());
    }

    Code postfix(Code code) {
        for (;;) {
            if (take("[")) {
                code = indexed(std::move(code));
            } else if (take(":")) {
                code = member(std::move(code));
            } else {
                return code;
            }
        }
    }

    Code indexed(Code base) {
        do {
            base = [a = std::move(base), i = expression()](const ScopePointer& scope) {
                const Value array = a(scope);
                return element(array, i(scope));
            };
        } while (take(","));
        expect("]");
        return base;
    }

    Code member(Code base) {
        std::string name = lower_case(take_name());
        if (take("(")) {
            return [o = std::move(base), name = std::move(name), args = list(")")](
                       const ScopePointer& scope) { return sent(o(scope), name, evaluated(args, scope)); };
        }
        return [o = std::move(base), name = std::move(name)](const ScopePointer& scope) {
            return field_of(o(scope), name);
        };
    }

    Code primary() {
        if (now().kind == TokenKind::literal) return literal(tokens_[at_++].literal);
        if (now().kind == TokenKind::name) return named();
        if (take("(")) return sequence(")");
        if (take("{")) return at_symbol("|") ? block() : array();
        throw SyntaxError(now().kind == TokenKind::end ? "expected an operand" : "no operand: " + now().text);
    }

    Code named() {
        std::string name = take_name();
        if (!take("(")) {
            return [name = std::move(name)](const ScopePointer& scope) { return variable(*scope, name); };
        }
        if (name == "IF" || name == "IIF") return choice();
        const Function function = find_function(name);
        if (function == nullptr) throw SyntaxError("unknown function " + name);
        return [function, args = list(")")](const ScopePointer& scope) {
            return function(Args(evaluated(args, scope)));
        };
    }

    Code choice() {
        std::vector<Code> parts = list(")");
        if (parts.size() != 3) throw SyntaxError("IF takes three arguments");
        return [parts = std::move(parts)](const ScopePointer& scope) {
            return truth(parts[0](scope), "IF") ? parts[1](scope) : parts[2](scope);
        };
    }

    Code array() {
        return [elements = list("}")](const ScopePointer& scope) {
            Value made = Value::array_of_size(0);
            for (const Code& code : elements) made.push(code(scope));
            return made;
        };
    }

    Code block() {
        expect("|");
        std::vector<std::string> parameters;
        while (!at_symbol("|")) {
            parameters.push_back(take_name());
            if (!take(",")) break;
        }
        expect("|");
        Code body = at_symbol("}") ? literal({}) : Code();
        if (body) {
            expect("}");
        } else {
            body = sequence("}");
        }
        return [parameters = std::move(parameters), body = std::move(body)](const ScopePointer& scope) {
            return Value::block([parameters, body, scope](Args args) {
                const auto inner = std::make_shared<Scope>();
                inner->outer = scope;
                for (std::size_t i = 0; i < parameters.size(); ++i) inner->variables[parameters[i]] = args[i];
                return body(inner);
            });
        };
    }

    // Expressions with commas between them; the value is the last one's.
    Code sequence(std::string_view end) {
        std::vector<Code> parts = list(end);
        if (parts.empty()) throw SyntaxError("expected an expression");
        return
            [parts = std::move(parts)](const ScopePointer& scope) { return evaluated(parts, scope).back(); };
    }

    // A list up to the symbol `end`; what is left out between commas is NIL.
    std::vector<Code> list(std::string_view end) {
        std::vector<Code> parts;
        if (take(end)) return parts;
        do {
            parts.push_back(at_symbol(",") || at_symbol(end) ? literal({}) : expression());
        } while (take(","));
        expect(end);
        return parts;
    }

    std::vector<Token> tokens_;
    std::size_t at_ = 0;
};

}  // namespace

Code compile(std::string_view expression) { return Parser(expression).whole(); }

Value evaluate(std::string_view expression) {
    const auto scope = std::make_shared<Scope>();
    Value result = compile(expression)(scope);
    scope->variables.clear();  // a variable may hold a block that holds the scope
    return result;
}

}  // namespace zmfb::host_test
