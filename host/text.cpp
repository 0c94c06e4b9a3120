#include "host/text.h"

#include <algorithm>
#include <string_view>

#include "host/error.h"

namespace zmfb::host {
namespace {

constexpr bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool is_upper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
constexpr int case_distance = 'a' - 'A';

std::string_view without_leading(std::string_view s) {
    std::size_t first = 0;
    while (first < s.size() && is_space(s[first])) ++first;
    return s.substr(first);
}

// Values of VARCHAR columns come with thousands of blanks: they go by eights.
std::string_view without_trailing(std::string_view s) {
    constexpr std::string_view blanks = "        ";
    std::size_t size = s.size();
    while (size >= blanks.size() && s.substr(size - blanks.size(), blanks.size()) == blanks)
        size -= blanks.size();
    while (size > 0 && s[size - 1] == ' ') --size;
    return s.substr(0, size);
}

// A part of `s`; `s` itself, without a copy, when the part is the whole.
Value part_of(const Value& s, std::string_view part) {
    return part.size() == s.text().size() ? s : Value(part);
}

std::size_t held_within(std::int64_t n, std::size_t size) {
    if (n <= 0) return 0;
    return static_cast<std::uint64_t>(n) < size ? static_cast<std::size_t>(n) : size;
}

std::string_view slice(std::string_view s, std::int64_t start, std::int64_t count) {
    const auto size = static_cast<std::int64_t>(s.size());
    if (start < -size) start = 1;
    if (start < 0) start += size + 1;
    if (start == 0) start = 1;
    if (start > size) return {};
    const std::string_view rest = s.substr(static_cast<std::size_t>(start - 1));
    return rest.substr(0, held_within(count, rest.size()));
}

}  // namespace

Value upper(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::upper, "UPPER", {s});
    const std::string_view text = s.text();
    const auto first = std::find_if(text.begin(), text.end(), is_lower);
    if (first == text.end()) return s;
    Value made = s;
    for (char& c : made.writable_text().subspan(static_cast<std::size_t>(first - text.begin()))) {
        if (is_lower(c)) c = static_cast<char>(c - case_distance);
    }
    return made;
}

Value lower(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::lower, "LOWER", {s});
    const std::string_view text = s.text();
    const auto first = std::find_if(text.begin(), text.end(), is_upper);
    if (first == text.end()) return s;
    Value made = s;
    for (char& c : made.writable_text().subspan(static_cast<std::size_t>(first - text.begin()))) {
        if (is_upper(c)) c = static_cast<char>(c + case_distance);
    }
    return made;
}

Value ltrim(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::ltrim, "LTRIM", {s});
    return part_of(s, without_leading(s.text()));
}

Value trim(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::trim, "TRIM", {s});
    return part_of(s, without_trailing(s.text()));
}

Value alltrim(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::alltrim, "ALLTRIM", {s});
    return part_of(s, without_leading(without_trailing(s.text())));
}

Value substr(const Value& s, const Value& start) { return substr(s, start, {}); }

Value substr(const Value& s, const Value& start, const Value& count) {
    if (!s.is(Kind::character) || !start.is(Kind::numeric) || !(count.is(Kind::numeric) || count.is_nil())) {
        return argument_error(Subcode::substr, "SUBSTR", {s, start, count});
    }
    const std::string_view text = s.text();
    const std::int64_t wanted = count.is_nil() ? static_cast<std::int64_t>(text.size()) : count.integer();
    return part_of(s, slice(text, start.integer(), wanted));
}

Value left(const Value& s, const Value& count) {
    if (!s.is(Kind::character) || !count.is(Kind::numeric)) {
        return argument_error(Subcode::left, "LEFT", {s, count});
    }
    const std::string_view text = s.text();
    return part_of(s, text.substr(0, held_within(count.integer(), text.size())));
}

Value right(const Value& s, const Value& count) {
    if (!s.is(Kind::character) || !count.is(Kind::numeric)) return "";
    const std::string_view text = s.text();
    return part_of(s, text.substr(text.size() - held_within(count.integer(), text.size())));
}

Value chr(const Value& n) {
    if (!n.is(Kind::numeric)) return argument_error(Subcode::chr, "CHR", {n});
    const char byte = static_cast<char>(n.integer() & 0xFF);
    return std::string_view(&byte, 1);
}

Value asc(const Value& s) {
    if (!s.is(Kind::character)) return argument_error(Subcode::asc, "ASC", {s});
    const std::string_view text = s.text();
    return text.empty() ? 0 : static_cast<unsigned char>(text.front());
}

Value strpeek(const Value& s, const Value& n) {
    if (!s.is(Kind::character) || !n.is(Kind::numeric)) {
        return argument_error(Subcode::strpeek, "STRPEEK", {s, n});
    }
    const std::string_view text = s.text();
    const std::int64_t position = n.integer();
    if (position < 1 || static_cast<std::uint64_t>(position) > text.size()) return 0;
    return static_cast<unsigned char>(text[static_cast<std::size_t>(position - 1)]);
}

Value len(const Value& x) {
    if (!x.is(Kind::character) && !x.is(Kind::array)) return argument_error(Subcode::len, "LEN", {x});
    return x.size();
}

Value valtype(const Value& x) {
    switch (x.kind()) {
        case Kind::nil:
            return "U";
        case Kind::character:
            return "C";
        case Kind::numeric:
            return "N";
        case Kind::logical:
            return "L";
        case Kind::date:
            return "D";
        case Kind::array:
            return "A";
        case Kind::object:
            return "O";
        case Kind::block:
            return "B";
    }
    return "U";
}

bool empty(const Value& x) {
    switch (x.kind()) {
        case Kind::nil:
            return true;
        case Kind::character: {
            const std::string_view text = x.text();
            return std::all_of(text.begin(), text.end(), is_space);
        }
        case Kind::numeric:
            return x.number() == 0;
        case Kind::logical:
            return !x.logical();
        case Kind::date:
            return x.date() == Date{};
        case Kind::array:
            return x.size() == 0;
        case Kind::object:
        case Kind::block:
            return false;
    }
    return true;
}

}  // namespace zmfb::host
