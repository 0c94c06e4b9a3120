#include "sql/statement_text.h"

#include "sql/state.h"

namespace zmfb::sql {

namespace {

constexpr int invalid_token = -104;

bool skip_comment(std::string_view& text) {
    const bool is_line = text.starts_with("--");
    if (!is_line && !text.starts_with("/*")) return false;
    const std::string_view end = is_line ? "\n" : "*/";
    const std::size_t at = text.find(end, 2);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + end.size());
    return true;
}

bool skip_blank(std::string_view& text) {
    if (text.empty() || std::string_view(" \t\r\n").find(text.front()) == std::string_view::npos)
        return false;
    text.remove_prefix(1);
    return true;
}

// For the client library a comment is nothing: its words go on behind one. For the engine it is a blank.
enum class Comments { nothing, blank };

// Takes the next word away, and gives it in capitals; "" when something else follows.
std::string next_word(std::string_view& text, Comments comments) {
    while (skip_comment(text) || skip_blank(text)) {
    }
    std::string word;
    while (!text.empty()) {
        if (skip_comment(text)) {
            if (comments == Comments::blank) break;
            continue;
        }
        const char c = text.front();
        const bool is_small = c >= 'a' && c <= 'z';
        if (!is_small && !(c >= 'A' && c <= 'Z')) break;
        word += is_small ? static_cast<char>(c - 'a' + 'A') : c;
        text.remove_prefix(1);
    }
    return word;
}

bool creates_a_database(std::string_view statement, Comments comments) {
    // Nearly every statement begins with a letter that settles it.
    const char first = statement.empty() ? 'C' : statement.front();
    if ((first >= 'A' && first <= 'Z' && first != 'C') || (first >= 'a' && first <= 'z' && first != 'c'))
        return false;
    if (next_word(statement, comments) != "CREATE") return false;
    const std::string what = next_word(statement, comments);
    return what == "DATABASE" || what == "SCHEMA";
}

}  // namespace

std::string text_of(const Value& stmt) {
    return std::string(stmt.is(host::Kind::character) ? stmt.text() : std::string_view());
}

bool begins_with(std::string_view statement, std::string_view word) {
    return next_word(statement, Comments::blank) == word;
}

std::string_view first_quoted_name(std::string_view statement) {
    while (!statement.empty()) {
        if (skip_comment(statement)) continue;
        const char c = statement.front();
        const bool opens = c == '\'' || c == '"';
        const std::size_t end = opens ? statement.find(c, 1) : 0;
        const std::size_t length = end == std::string_view::npos ? statement.size() : end + 1;
        if (c == '"') return statement.substr(0, length);
        statement.remove_prefix(length);
    }
    return {};
}

Status refuse_unfit(const Value& stmt) {
    if (!stmt.is(host::Kind::character)) return refuse(invalid_token, "The statement is no text");
    if (stmt.text().find('\0') != std::string_view::npos)
        return refuse(invalid_token, "The statement holds a zero byte");
    if (creates_a_database(stmt.text(), Comments::nothing) ||
        creates_a_database(stmt.text(), Comments::blank)) {
        return refuse(invalid_token,
                      "CREATE DATABASE is not for a database that is attached; \"zmfb create\" makes one");
    }
    return {};
}

}  // namespace zmfb::sql
