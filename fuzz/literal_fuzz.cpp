// What a person types: calls with literals, lines of the shell, statements; and the log, which holds what
// others wrote.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "tool/alive.h"
#include "tool/encoding.h"
#include "tool/literal.h"
#include "tool/log_file.h"
#include "tool/shell/statement.h"

namespace zmfb::fuzz {
namespace {

using host::Kind;

bool same(const Value& a, const Value& b) {
    if (!a.is(Kind::array)) return a.same(b);
    if (!b.is(Kind::array) || a.size() != b.size()) return false;
    return std::equal(a.items().begin(), a.items().end(), b.items().begin(), same);
}

// A value that was read is written so that it reads back as itself.
void check_literal(const Value& value) {
    const std::string literal = tool::to_literal(value);
    require(literal.find('\n') == literal.npos, "a literal is one line");
    const tool::Expression again = tool::parse_call("f(" + literal + ")");
    require(again.parts.size() == 1 && same(again.parts[0].value, value), "a literal reads back");
}

void check_call(std::string_view source) {
    try {
        const tool::Expression call = tool::parse_call(source);
        require(!call.method.empty(), "a call has a method");
        for (const tool::Expression& part : call.parts) {
            if (part.kind == tool::Expression::Kind::value) check_literal(part.value);
        }
    } catch (const tool::SyntaxError& problem) {
        require(problem.what()[0] != '\0', "a problem is named");
    }
}

void check_shell(std::string_view source) {
    const tool::Input kind = tool::input_of(source);
    require(kind != tool::Input::nothing || tool::first_word(source).empty(), "nothing has no first word");
    for (std::string_view rest = source; !rest.empty();) {
        const auto end = tool::StatementScan().end_in(rest);
        if (!end) break;
        require(*end > 0 && *end <= rest.size() && rest[*end - 1] == ';',
                "a statement ends behind its semicolon");
        const std::string_view statement = rest.substr(0, *end);
        require(tool::StatementScan().end_in(statement) == end, "a statement ends where it ended");
        require(tool::action_of(statement).starts_with(tool::first_word(statement)),
                "an action is a first word");
        if (tool::is_query(statement))
            require(!tool::first_word(statement).empty(), "a query has a first word");
        rest.remove_prefix(*end);
    }
}

void check_encoding(std::string_view source) {
    const std::string shown = tool::to_utf8(source);
    require(tool::to_latin1(shown) == source, "bytes come back through UTF-8");
    if (const auto bytes = tool::to_latin1(source)) require(tool::to_utf8(*bytes) == source, "so does UTF-8");
}

// The entries of a log are the same however its bytes come in.
void check_log(std::string_view source) {
    tool::LogReader whole, pieces;
    const auto entries = whole.take(source);
    std::size_t count = 0;
    for (std::size_t at = 0; at < source.size(); at += 7) {
        for (const auto& entry : pieces.take(source.substr(at, 7))) {
            require(count < entries.size(), "no more entries in pieces than in all");
            require(entry.text == entries[count].text && entry.level == entries[count].level,
                    "the same entry");
            ++count;
        }
    }
    require(count == entries.size(), "as many entries in pieces as in all");
    for (const auto& entry : entries) tool::tag_of(entry.text);
    require(whole.last().has_value() == pieces.last().has_value(), "the last entry is there either way");
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    const std::string_view source = input.rest();
    check_call(source);
    check_shell(source);
    check_encoding(source);
    check_log(source);
    const Holder holder(source);
    require(holder.id == source, "a holder keeps its id");
    (void)tool::process_of(holder);
}
