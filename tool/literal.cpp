#include "tool/literal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "host/date.h"
#include "tool/encoding.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

using Kind = Expression::Kind;

constexpr int deepest = 200;  // arrays and calls within one another

bool is_name_byte(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

class Reader {
  public:
    explicit Reader(std::string_view source) : rest_(source) {}

    Expression whole_call() {
        const std::string method = name();
        if (method.empty() || std::isdigit(static_cast<unsigned char>(method[0])) != 0) {
            throw SyntaxError("expected the name of a method at the beginning");
        }
        Expression made{.kind = Kind::call, .method = method};
        if (take('(')) made.parts = list(')', 0);
        skip_blanks();
        if (!rest_.empty()) fail("did not expect");
        return made;
    }

  private:
    // Up to the closing mark.
    std::vector<Expression> list(char end, int depth) {
        if (depth == deepest) fail("arrays and calls nested too deep");
        std::vector<Expression> parts;
        if (take(end)) return parts;
        do parts.push_back(expression(depth + 1));
        while (take(','));
        expect(end);
        return parts;
    }

    Expression expression(int depth) {
        Expression made = term(depth);
        while (take('+')) made = joined(std::move(made), term(depth));
        return made;
    }

    Expression joined(Expression one, Expression other) {
        for (const Expression& part : {one, other}) {
            const bool is_text = part.kind == Kind::value && part.value.is(host::Kind::character);
            if (!is_text && (part.kind == Kind::value || part.kind == Kind::array))
                fail("only texts can be joined with +; at");
        }
        if (one.kind == Kind::value && other.kind == Kind::value) {
            one.value.append(other.value.text());
            return one;
        }
        Expression made{.kind = Kind::join};
        made.parts.push_back(std::move(one));
        made.parts.push_back(std::move(other));
        return made;
    }

    Expression term(int depth) {
        skip_blanks();
        if (rest_.empty()) fail("expected a value");
        const char c = rest_.front();
        if (c == '{' && !rest_.starts_with("{^")) return array(depth);
        if (c != '_' && std::isalpha(static_cast<unsigned char>(c)) == 0 && c != ':')
            return {.value = literal(c)};
        if (c == ':') return area();
        const std::string word = name();
        if (word == "nil") return {};
        if (!take('(')) fail(fmt::format("\"{}\" is no value (texts need quotes); at", word));
        if (word != "chr") return {.kind = Kind::call, .method = word, .parts = list(')', depth)};
        const host::Value code = number();
        expect(')');
        if (code.number() < 0 || code.number() > 255) fail("CHR() takes a number from 0 to 255; at");
        return {.value = std::string(1, static_cast<char>(code.integer()))};
    }

    host::Value literal(char c) {
        if (c == '"' || c == '\'') return text();
        if (c == '{') return date();
        if (c == '.' && rest_.size() > 2 && rest_[2] == '.') return logical();
        if (c == '-' || c == '+' || c == '.' || std::isdigit(static_cast<unsigned char>(c)) != 0)
            return number();
        fail("expected a value");
    }

    Expression area() {
        rest_.remove_prefix(1);
        if (name() != "area") fail("expected :area before");
        return area_call();
    }

    host::Value text() {
        const char quote = rest_.front();
        const std::size_t end = rest_.find(quote, 1);
        if (end == std::string_view::npos) fail("a text without its closing quote");
        const auto latin1 = to_latin1(rest_.substr(1, end - 1));
        if (!latin1) fail("a text with a character outside " + encoding_name());
        rest_.remove_prefix(end + 1);
        return *latin1;
    }

    host::Value number() {
        skip_blanks();
        std::string_view digits = rest_;
        if (digits.starts_with('+')) digits.remove_prefix(1);
        double value = 0;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
        if (error != std::errc() || !std::isfinite(value)) fail("expected a number");
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        if (!rest_.empty() && is_name_byte(rest_.front())) fail("a number that goes on with");
        return value;
    }

    host::Value logical() {
        const int letter = std::toupper(static_cast<unsigned char>(rest_[1]));
        if (letter != 'T' && letter != 'F' && letter != 'Y' && letter != 'N') fail("expected .T. or .F.");
        rest_.remove_prefix(3);
        return letter == 'T' || letter == 'Y';
    }

    host::Value date() {
        const std::size_t end = rest_.find('}');
        if (end == std::string_view::npos) fail("a date without its closing brace");
        const std::string_view body = rest_.substr(2, end - 2);
        std::string digits;
        for (const char c : body) {
            if (std::isdigit(static_cast<unsigned char>(c)) != 0) digits += c;
        }
        const bool blank = body.find_first_not_of(" -/") == std::string_view::npos;
        host::Value made = host::stod(digits);
        const bool shaped = body.size() == 10 && digits.size() == 8;
        if (!blank && (!shaped || made.date() == host::Date{})) fail("expected a date such as {^2007-03-01}");
        rest_.remove_prefix(end + 1);
        return made;
    }

    Expression array(int depth) {
        rest_.remove_prefix(1);
        Expression made{.kind = Kind::array, .parts = list('}', depth)};
        if (!std::ranges::all_of(made.parts, [](const Expression& one) { return one.kind == Kind::value; }))
            return made;
        host::Value value = host::Value::array_of_size(0);
        for (Expression& one : made.parts) value.push(std::move(one.value));
        return {.value = value};
    }

    std::string name() {
        skip_blanks();
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), is_name_byte);
        std::string word(rest_.begin(), end);
        rest_.remove_prefix(word.size());
        std::ranges::transform(word, word.begin(),
                               [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return word;
    }

    void skip_blanks() {
        const std::size_t first = rest_.find_first_not_of(" \t\r\n");
        rest_.remove_prefix(first == std::string_view::npos ? rest_.size() : first);
    }

    bool take(char c) {
        skip_blanks();
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    void expect(char c) {
        if (!take(c)) fail(fmt::format("expected \"{}\" before", c));
    }

    [[noreturn]] void fail(std::string_view problem) const {
        if (rest_.empty()) throw SyntaxError(fmt::format("{} at the end", problem));
        throw SyntaxError(fmt::format("{}: {}", problem, rest_.substr(0, 40)));
    }

    std::string_view rest_;
};

// Whether a terminal would take the byte for a command: those from 128 on only where the character set has no
// letter for them.
bool is_control(char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) return byte < 0x20 || byte == 0x7F;
    const std::string shown = to_utf8(std::string_view(&c, 1));
    return without_controls(shown) != shown;
}

// The pieces of a text that no pair of quotes can hold together: line ends and other control bytes as CHR(n).
std::string text_literal(std::string_view text) {
    std::string out;
    const auto piece = [&out](std::string_view more) {
        if (!out.empty()) out += " + ";
        out += more;
    };
    for (std::size_t i = 0; i < text.size();) {
        if (is_control(text[i])) {
            piece(fmt::format("CHR({})", static_cast<unsigned char>(text[i])));
            ++i;
            continue;
        }
        const auto stop = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(i), text.end(), is_control);
        std::string_view run = text.substr(i, static_cast<std::size_t>(stop - text.begin()) - i);
        const std::size_t quote = run.find('"');
        const bool both = quote != std::string_view::npos && run.find('\'') != std::string_view::npos;
        if (both) run = run.substr(0, quote == 0 ? run.find('\'') : quote);
        const char mark = run.find('"') == std::string_view::npos ? '"' : '\'';
        piece(fmt::format("{}{}{}", mark, to_utf8(run), mark));
        i += run.size();
    }
    return out.empty() ? "\"\"" : out;
}

std::string number_literal(double number) {
    char digits[400];  // the longest double without an exponent has 309 digits before its point
    const auto written = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed);
    return {digits, written.ptr};
}

std::string date_literal(host::Date date) {
    if (date == host::Date{}) return "{^}";
    const host::CalendarDay day = host::calendar_day(date);
    return fmt::format("{{^{:04}-{:02}-{:02}}}", day.year, day.month, day.day);
}

}  // namespace

Expression area_call() {
    return {
        .kind = Kind::call, .method = "getuniqueareaid", .parts = {{.value = "ZMFB"}, {.value = "SHELL"}}};
}

Expression parse_call(std::string_view source) { return Reader(source).whole_call(); }

std::string to_literal(const host::Value& value) {
    switch (value.kind()) {
        case host::Kind::nil:
            return "NIL";
        case host::Kind::character:
            return text_literal(value.text());
        case host::Kind::numeric:
            return number_literal(value.number());
        case host::Kind::logical:
            return value.logical() ? ".T." : ".F.";
        case host::Kind::date:
            return date_literal(value.date());
        case host::Kind::object:
            return fmt::format("<object {}>", value.object()->class_name());
        case host::Kind::block:
            return "<block>";
        case host::Kind::array:
            break;
    }
    std::string out = "{";
    for (const host::Value& element : value.items()) {
        if (out.size() > 1) out += ", ";
        out += to_literal(element);
    }
    return out + "}";
}

}  // namespace zmfb::tool
