// Expressions of keys: taken apart, made into SQL, and that SQL computed for a record beside what the runtime
// makes of the expression.
//
// An input: a record, and the expression.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>

#include "fuzz/fuzz.h"
#include "fuzz/key_sql.h"
#include "host/date.h"
#include "host/text.h"
#include "rdd/key_expression.h"
#include "rdd/key_range.h"
#include "rdd/key_token.h"
#include "rdd/order_catalog.h"
#include "tests/host/expression.h"
#include "tests/host/lexer.h"

namespace zmfb::fuzz {
namespace {

using host::Kind;

constexpr std::size_t name_width = 20, city_width = 8;

const Structure& fields() {
    static const Structure all{
        {"NAME", "C", name_width, 0}, {"CITY", "C", city_width, 0}, {"CREDIT", "N", 10, 2},
        {"CODE", "N", 6, 0},          {"BORN", "D", 8, 0},          {"GOOD", "L", 1, 0},
        {"RATE", "F", 15, 0},         {"NOTE", "U", 8, 0},          {"RECNO", "N", 15, 0}};
    return all;
}

// Numbers of quarters and eighths, which doubles add up exactly.
struct Record {
    explicit Record(Input& input)
        : name(input.bytes(input.below(name_width + 1))),
          city(input.bytes(input.below(city_width + 1))),
          credit(input.number<std::int32_t>() % 400'000'000),
          code(input.number<std::int32_t>() % 1'000'000),
          born(host::date_of({input.number<std::uint16_t>() % 10000, static_cast<int>(input.below(13)),
                              static_cast<int>(input.below(32))})),
          good(input.flag()),
          rate(input.number<std::int16_t>()) {}

    std::string name, city;
    std::int64_t credit;  // in quarters
    std::int64_t code;
    host::Date born;
    bool good;
    int rate;  // in eighths

    // As the database has it: nothing is NULL.
    [[nodiscard]] SqlRow in_sql() const {
        const auto text = [](const std::string& text) { return text.empty() ? SqlValue() : SqlValue(text); };
        return {{"NAME", text(name)},
                {"CITY", text(city)},
                {"CREDIT", Exact{credit * 25, 2}},
                {"CODE", code == 0 ? SqlValue() : SqlValue(Exact{code, 0})},
                {"BORN", born == host::Date() ? SqlValue() : SqlValue(born)},
                {"GOOD", good ? SqlValue("T") : SqlValue()},
                {"RATE", rate / 8.0}};
    }
    [[nodiscard]] std::map<std::string, Value> in_runtime() const {
        const auto text = [](const std::string& text, std::size_t width) {
            return host::padr(Value(text), Value(static_cast<double>(width)));
        };
        return {{"NAME", text(name, name_width)},
                {"CITY", text(city, city_width)},
                {"CREDIT", Value(static_cast<double>(credit) / 4, {10, 2})},
                {"CODE", Value(static_cast<double>(code), {6, 0})},
                {"BORN", born},
                {"GOOD", good},
                {"RATE", Value(rate / 8.0, {15, 0})}};
    }
};

void check_tokens(std::string_view expression) {
    const auto tokens = rdd::tokens_of(expression);
    require(!tokens.empty() && tokens.back().kind == rdd::TokenKind::end, "the last word is the end");
    std::string_view rest = expression;
    for (const rdd::Token& token : tokens) {
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n"), rest.size()));
        require(rest.starts_with(token.written), "words stand one behind another");
        require(!token.written.empty() || token.kind == rdd::TokenKind::end, "a word has letters");
        rest.remove_prefix(token.written.size());
    }
    require(rest.empty(), "words leave nothing out");
}

void check_note(std::string_view text) {
    const auto note = rdd::note_in(text);
    if (note) require(rdd::description_of(*note) == text, "a description that is read is written the same");
    const auto begun = rdd::note_in(fmt::format("Unique order A: {}", text));
    require(begun == rdd::OrderNote{"A", std::string(text), true}, "an expression is kept as it is");
}

// The key, or nothing when it was refused: with a reason, and the same one again.
std::optional<rdd::Term> key_of(std::string_view expression, std::string_view prefix) {
    std::string reason;
    try {
        return rdd::key_of(expression, {fields()}, prefix);
    } catch (const rdd::OrderError& error) {
        reason = error.what();
    }
    try {
        rdd::key_of(expression, {fields()}, prefix);
        require(false, "what was refused is refused again");
    } catch (const rdd::OrderError& error) {
        require(error.what() == reason, "for the same reason");
        require(reason.starts_with(expression.substr(0, expression.find('\0'))),
                "which names the expression");
    }
    return std::nullopt;
}

std::string prefixed(std::string_view sql, std::string_view prefix) {
    std::string made;
    bool in_name = false;
    for (const char c : sql) {
        if (c == '"' && !(in_name = !in_name)) {
            made += c;
        } else {
            made += (c == '"' ? std::string(prefix) : "") + c;
        }
    }
    return made;
}

// Numbers that doubles add up as the engine does, and texts that both languages have.
bool can_be_compared(std::string_view expression) {
    if (expression.find('\\') != expression.npos) return false;
    constexpr std::size_t most_digits = 12;
    return std::ranges::all_of(rdd::tokens_of(expression), [](const rdd::Token& token) {
        if (token.kind != rdd::TokenKind::number) return true;
        const std::string behind = token.text.substr(std::min(token.text.find('.'), token.text.size()));
        return token.text.size() <= most_digits && (behind.empty() || behind == ".5" || behind == ".25");
    });
}

// What the runtime makes of it; nothing for what only a key can say, such as FIELD->NAME.
std::optional<Value> computed(std::string_view expression, const Record& record) {
    const auto scope = std::make_shared<host_test::Scope>();
    scope->variables = record.in_runtime();
    const std::size_t raised_before = raised();
    try {
        Value value = host_test::compile(expression)(scope);
        require(raised() == raised_before, "what is a key raises nothing in a program");
        return value;
    } catch (const host_test::SyntaxError&) {
        return std::nullopt;
    }
}

rdd::KeyRange range_of(const rdd::Order& order, const Value& value) {
    switch (value.kind()) {
        case Kind::numeric:
            return rdd::range_of(order, value.number());
        case Kind::logical:
            return rdd::range_of(order, value.logical());
        case Kind::date: {
            const auto day = host::calendar_day(value.date());
            if (day.year == 0) return rdd::range_of(order, std::nullopt);
            return rdd::range_of(order, std::chrono::year(day.year) / day.month / day.day);
        }
        default:
            return rdd::range_of(order, value.text());
    }
}

void check_value(std::string_view expression, const rdd::Term& key, const Record& record) {
    std::string made;
    try {
        const SqlValue value = computed_sql(key.sql, record.in_sql());
        require(std::holds_alternative<std::string>(value), "a key is a text");
        made = std::get<std::string>(value);
    } catch (const TooGreat&) {
        return;
    }
    require(made.size() == key.width, "a key is as wide as it says");
    if (!can_be_compared(expression)) return;
    const auto value = computed(expression, record);
    if (!value) return;
    if (key.type == 'C') {
        require(value->is(Kind::character), "a text is one in a program");
        std::string wanted(value->text());
        require(wanted.size() <= key.width, "a text is no longer than its key");
        wanted.resize(key.width, ' ');
        require(made == wanted, "the key is the value that a program computes");
    }
    const rdd::Order order = rdd::order_of("T", "O", std::string(expression), false, {fields()});
    require(order.width == key.width && order.key.starts_with(key.sql), "an order has that key");
    const std::string with_record = made + "1000000000000007";
    require(range_of(order, *value).holds(with_record), "who seeks the value finds the key");
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const Record record(input);
    const std::string_view expression = input.rest();
    check_tokens(expression);
    check_note(expression);
    const auto key = fuzz::key_of(expression, "");
    const auto of_other = fuzz::key_of(expression, "ZM_O.");
    require(key.has_value() == of_other.has_value(), "a prefix makes no key");
    if (!key) return;
    require(of_other->sql == prefixed(key->sql, "ZM_O."), "only columns have the prefix");
    check_value(expression, *key, record);
}
