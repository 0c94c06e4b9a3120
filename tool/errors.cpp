#include "tool/errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "tool/encoding.h"
#include "tool/hints.h"
#include "tool/in_english.h"
#include "tool/json.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"
#include "tool/shell/names.h"
#include "tool/suggest.h"

namespace zmfb::tool {
namespace {

bool as_json = false;

// Of a statement that ends too early the engine says where in numbers that mean nothing.
std::string without_wild_numbers(std::string_view detail) {
    constexpr std::string_view words = "Unexpected end of command";
    const std::size_t at = detail.find(words);
    if (at == std::string_view::npos) return std::string(detail);
    const std::string_view behind = detail.substr(at + words.size());
    return fmt::format("{}{}", detail.substr(0, at + words.size()),
                       behind.substr(std::min(behind.find('\n'), behind.size())));
}

void print_indented(std::string_view detail) {
    while (!detail.empty()) {
        const std::string_view line = detail.substr(0, detail.find('\n'));
        const std::size_t blanks = std::min(line.find_first_not_of(' '), line.size());
        say("  {}\n", without_controls(line.substr(blanks)));
        detail.remove_prefix(std::min(detail.size(), line.size() + 1));
    }
}

void say_as_json(const Json& object) {
    std::fflush(stdout);
    say("{}\n", json_line(object));
}

void add_text(Json& object, const char* name, std::string_view text) {
    if (!text.empty()) object[name] = text;
}

std::string in_words(const Place& place) {
    if (place.line == 0) return "";
    return fmt::format("{}{}line {}: ", place.file, place.file.empty() ? "" : " ", place.line);
}

void print_raised_lines(std::string text) {
    const std::size_t first = std::min(text.find(';'), text.size());
    say("raised: {}\n", without_controls(std::string_view(text).substr(0, first)));
    std::ranges::replace(text, ';', '\n');
    print_indented(std::string_view(text).substr(std::min(first + 1, text.size())));
}

// Which method may have been meant, when there is none of that name.
std::string hint_on_method(std::string_view description) {
    constexpr std::string_view words = "has no Method named: ";
    const std::size_t found = description.find(words);
    if (found == std::string_view::npos) return "";
    const std::string nearest = nearest_name(description.substr(found + words.size()), method_names());
    return nearest.empty() ? "" : fmt::format("did you mean {}?", nearest);
}

}  // namespace

void show_errors_as_json() { as_json = true; }

bool errors_are_json() { return as_json; }

void print_error(std::string_view message, std::string_view said, std::string_view hint, const Place& place) {
    const std::string detail = without_wild_numbers(said);
    const std::string what_helps = hint.empty() ? hint_for(detail) : std::string(hint);
    if (as_json) {
        Json object{{"error", message}};
        add_text(object, "detail", detail);
        add_text(object, "hint", what_helps);
        add_text(object, "file", place.file);
        if (place.line != 0) object["line"] = place.line;
        return say_as_json(object);
    }
    say("error: {}{}\n", in_words(place), lines_without_controls(message));
    print_indented(detail);
    if (!what_helps.empty()) say("hint: {}\n", what_helps);
}

void print_failure(const Failure& failure) {
    if (!failure.message.empty()) print_error(failure.message, failure.detail, failure.hint);
}

void print_out_of_memory() noexcept {
    std::fflush(stdout);
    std::fputs(as_json ? "{\"error\":\"out of memory\"}\n" : "error: out of memory\n", stderr);
}

void print_raised(std::string_view description, Raised how) {
    if (how == Raised::silent) return;
    const std::string text = to_utf8(description), english = in_english(description);
    const std::string hint = hint_on_method(description);
    if (as_json) {
        Json object{{"error", text}, {"raised", true}};
        add_text(object, "english", english);
        add_text(object, "hint", hint);
        return say_as_json(object);
    }
    std::fflush(stdout);
    if (how == Raised::one_line) {
        say("raised: {}\n", without_controls(text));
    } else {
        print_raised_lines(text);
    }
    if (!english.empty()) say("in English: {}\n", without_controls(english));
    if (!hint.empty()) say("hint: {}\n", hint);
}

}  // namespace zmfb::tool
