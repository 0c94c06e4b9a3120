#include "tool/shell/statement.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tool/shell/names.h"

namespace zmfb::tool {
namespace {

bool is_word_byte(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

// Goes through a text token by token: words in lower case, quoted pieces as their quote, all else a byte at
// a time. Blanks and comments are passed over.
class Tokens {
  public:
    explicit Tokens(std::string_view text) : text_(text) {}
    // In a text whose beginning belongs to something that ends with `open`.
    Tokens(std::string_view text, std::string_view open) : text_(text) {
        if (!open.empty()) skip_behind(open);
    }

    // "" at the end, also at the end of something that was not closed.
    std::string next() {
        skip_blanks_and_comments();
        if (at_ == text_.size()) return {};
        start_ = at_;
        if (is_word_byte(text_[at_])) {
            while (at_ < text_.size() && is_word_byte(text_[at_])) ++at_;
            std::string word(text_.substr(start_, at_ - start_));
            std::ranges::transform(word, word.begin(),
                                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
            return word;
        }
        const char c = text_[at_++];
        if (c == '\'') skip_behind("'");
        if (c == '"') skip_behind("\"");
        return std::string(1, c);
    }
    [[nodiscard]] std::size_t position() const { return at_; }
    // The last token as it stands in the text.
    [[nodiscard]] std::string_view token() const { return text_.substr(start_, at_ - start_); }
    // Where the last token begins.
    [[nodiscard]] std::size_t start() const { return start_; }
    // What the text leaves open, by its end; "" when nothing.
    [[nodiscard]] std::string_view open() const { return open_; }

  private:
    void skip_blanks_and_comments() {
        while (at_ < text_.size()) {
            const std::string_view rest = text_.substr(at_);
            if (std::isspace(static_cast<unsigned char>(rest.front())) != 0) {
                ++at_;
            } else if (rest.starts_with("--")) {
                skip_behind("\n");
            } else if (rest.starts_with("/*")) {
                at_ += 2;
                skip_behind("*/");
            } else {
                return;
            }
        }
    }
    void skip_behind(std::string_view mark) {
        const std::size_t found = text_.find(mark, at_);
        at_ = found == std::string_view::npos ? text_.size() : found + mark.size();
        open_ = found == std::string_view::npos ? mark : std::string_view();
    }

    std::string_view text_;
    std::size_t start_ = 0;
    std::string_view open_;
    std::size_t at_ = 0;
};

bool is_one_of(std::string_view word, std::string_view words) {
    if (word.empty()) return false;
    const std::size_t at = (" " + std::string(words) + " ").find(" " + std::string(word) + " ");
    return at != std::string_view::npos;
}

// Whether a statement that begins with these may have a body from BEGIN to END.
bool has_body(const std::array<std::string, 4>& words) {
    if (words[0] == "execute") return words[1] == "block";
    const bool makes = is_one_of(words[0], "create alter recreate");
    const std::string& kind = words[1] == "or" ? words[3] : words[1];
    return makes && is_one_of(kind, "trigger procedure function package");
}

}  // namespace

std::string first_word(std::string_view text) {
    const std::string word = Tokens(text).next();
    return !word.empty() && is_word_byte(word.front()) ? word : "";
}

Input input_of(std::string_view line) {
    Tokens tokens(line);
    const std::string first = tokens.next();
    const bool comment = first.empty() && line.find("/*") != std::string_view::npos &&
                         line.find("*/") == std::string_view::npos;
    if (comment) return Input::statement;  // begun, and to be closed on a later line
    if (first.empty()) return Input::nothing;
    if (first == "." || first == "\\") return Input::dot_command;
    if (is_one_of(first, statement_words)) return Input::statement;
    const std::string second = tokens.next();
    if (second == "(" && is_word_byte(first.front())) return Input::call;
    return is_method(first) && (second.empty() || second == ";") ? Input::call : Input::unknown;
}

void StatementScan::note_beginning(const std::string& token) {
    if (tokens_ == beginning_.size()) return;
    beginning_[tokens_++] = token;
    may_have_body_ = has_body(beginning_);
}

bool StatementScan::ends_with(const std::string& token) {
    note_beginning(token);
    if (token == "(") ++parentheses_;
    if (token == ")") --parentheses_;
    if (may_have_body_ && parentheses_ == 0 && blocks_ == 0 && token == "as") body_expected_ = true;
    if (may_have_body_ && (token == "begin" || token == "case")) {
        ++blocks_;
        body_expected_ = false;
    }
    if (may_have_body_ && token == "end") --blocks_;
    return token == ";" && blocks_ <= 0 && !body_expected_;
}

std::optional<std::size_t> StatementScan::end_in(std::string_view piece) {
    Tokens tokens(piece, open_);
    for (std::string token = tokens.next(); !token.empty(); token = tokens.next()) {
        if (!ends_with(token)) continue;
        *this = {};
        return tokens.position();
    }
    open_ = tokens.open();
    return std::nullopt;
}

std::vector<std::string_view> quoted_names(std::string_view statement) {
    std::vector<std::string_view> names;
    Tokens tokens(statement);
    for (std::string token = tokens.next(); !token.empty(); token = tokens.next()) {
        if (token == "\"") names.push_back(tokens.token());
    }
    return names;
}

namespace {

// Goes along a statement, and knows where the name of a table is to come.
class TablePlaces {
  public:
    [[nodiscard]] bool expected() const { return expected_; }
    void pass(const std::string& token) {
        const bool begins = is_one_of(token, "from join into update table");
        expected_ = begins || (in_list_ && token == ",");
        if (token == "from") in_list_ = true;
        if (is_one_of(token, "where group order having union plan set values select ( )")) in_list_ = false;
    }

  private:
    bool expected_ = false;
    bool in_list_ = false;  // of FROM, where commas part tables
};

}  // namespace

std::vector<std::string_view> tables_in(std::string_view statement) {
    std::vector<std::string_view> tables;
    TablePlaces places;
    Tokens tokens(statement);
    for (std::string token = tokens.next(); !token.empty(); token = tokens.next()) {
        const bool is_name = token == "\"" || is_word_byte(token.front());
        if (places.expected() && is_name) tables.push_back(tokens.token());
        places.pass(token);
    }
    return tables;
}

bool expects_table(std::string_view beginning) {
    TablePlaces places;
    Tokens tokens(beginning);
    for (std::string token = tokens.next(); !token.empty(); token = tokens.next()) places.pass(token);
    return places.expected();
}

bool StatementScan::is_blank() const { return tokens_ == 0 && open_ != "*/"; }

Step step_of(std::string_view statement) {
    Tokens tokens(statement);
    const std::string first = tokens.next();
    std::string next = tokens.next();
    const bool whole = is_one_of(next, "transaction work");
    if (whole) next = tokens.next();
    if (next == ";") next = tokens.next();
    if (!next.empty()) return Step::none;
    if (first == "begin" || (whole && is_one_of(first, "set start"))) return Step::begin;
    if (first == "commit") return Step::commit;
    return first == "rollback" ? Step::roll_back : Step::none;
}

bool is_about_a_savepoint(std::string_view statement) {
    const std::string first = first_word(statement);
    return is_one_of(first, "release savepoint") || (first == "rollback" && step_of(statement) == Step::none);
}

bool is_set_term(std::string_view statement) {
    Tokens tokens(statement);
    return tokens.next() == "set" && tokens.next() == "term";
}

bool is_query(std::string_view statement) { return is_one_of(first_word(statement), "select with"); }

std::string with_area(const std::string& statement, const std::function<std::string()>& area) {
    std::array<std::string, 4> beginning;
    Tokens words(statement);
    for (std::string& word : beginning) word = words.next();
    if (has_body(beginning)) return statement;
    std::string text;
    std::size_t taken = 0;
    Tokens tokens(statement);
    for (std::string token = tokens.next(), before; !token.empty();
         before = std::exchange(token, tokens.next())) {
        const std::size_t colon = tokens.start() - 1;
        if (token != "area" || before != ":" || statement[colon] != ':') continue;
        text += statement.substr(taken, colon - taken) + "'" + area() + "'";
        taken = tokens.position();
    }
    return text + statement.substr(taken);
}

std::string action_of(std::string_view statement) {
    std::string action = first_word(statement);
    if (!is_one_of(action, "alter create drop execute recreate comment")) return action;
    Tokens tokens(statement);
    tokens.next();
    std::string what = tokens.next();
    for (; is_one_of(what, "or alter unique global temporary descending desc asc ascending on");
         what = tokens.next()) {
    }
    return what.empty() ? action : action + " " + what;
}

}  // namespace zmfb::tool
