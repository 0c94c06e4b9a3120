#include "tool/browse/cell_text.h"

#include <algorithm>
#include <cwchar>
#include <tuple>

#include "tool/rows/shown_text.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::string_view replacement = "\uFFFD", more = "…";
constexpr int most_accents = 3;  // on one letter

struct Character {
    std::string_view bytes;
    int width;
};

// The code of a character of `size` bytes; -1 when they are none.
long code_of(std::string_view bytes, std::size_t size) {
    if (size == 1) return static_cast<unsigned char>(bytes[0]);
    constexpr int lead_bits[] = {0, 7, 5, 4, 3};
    constexpr long least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (bytes.size() < size) return -1;
    long code = static_cast<unsigned char>(bytes[0]) & ((1 << lead_bits[size]) - 1);
    for (std::size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80) return -1;
        code = code << 6 | (byte & 0x3F);
    }
    const bool is_surrogate = code >= 0xD800 && code < 0xE000;
    return code < least[size] || code > 0x10FFFF || is_surrogate ? -1 : code;
}

// The first character of a text that is not empty; one byte that is none of a character has a width of -1.
Character first_of(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const long code = size == 0 ? -1 : code_of(text, size);
    if (code < 0) return {text.substr(0, 1), -1};
    return {text.substr(0, size), ::wcwidth(static_cast<wchar_t>(code))};
}

// As much of a line as fits, and its width.
std::pair<std::string_view, int> beginning(std::string_view line, int width) {
    std::size_t size = 0;
    int used = 0;
    while (size < line.size()) {
        const Character next = first_of(line.substr(size));
        if (used + next.width > width) break;
        used += next.width;
        size += next.bytes.size();
    }
    return {line.substr(0, size), used};
}

}  // namespace

std::string one_line(std::string_view text) {
    const std::string plain = without_controls(text);
    std::string line;
    int accents = most_accents;  // as many as a letter before the first one would have
    for (std::string_view rest = plain; !rest.empty();) {
        const Character next = first_of(rest);
        rest.remove_prefix(next.bytes.size());
        if (next.width > 0) {
            line += next.bytes;
            accents = 0;
        } else if (next.width < 0 || line.empty()) {
            line += replacement;
            accents = 0;
        } else if (accents++ < most_accents) {
            line += next.bytes;
        }
    }
    return line;
}

int width_of(std::string_view text) {
    const std::string line = one_line(text);
    return beginning(line, static_cast<int>(line.size())).second;
}

std::string fitted(std::string_view text, int width, bool to_the_right) {
    if (width <= 0) return "";
    const std::string line = one_line(text);
    auto [kept, used] = beginning(line, width);
    const bool is_cut = kept.size() < line.size();
    if (is_cut) std::tie(kept, used) = beginning(line, width - 1);
    std::string cell(kept);
    if (is_cut) cell += more;
    const std::string blanks(static_cast<std::size_t>(width - used - (is_cut ? 1 : 0)), ' ');
    return to_the_right ? blanks + cell : cell + blanks;
}

std::string_view end_within(std::string_view text, int width) {
    while (!text.empty() && width_of(text) >= width) text.remove_prefix(first_of(text).bytes.size());
    return text;
}

std::vector<std::string> lines_of(std::string_view text, int width) {
    std::vector<std::string> lines;
    for (;;) {
        const std::size_t end = text.find('\n');
        std::string_view raw = text.substr(0, end);
        if (raw.ends_with('\r')) raw.remove_suffix(1);
        const std::string line = one_line(raw);
        std::string_view rest = line;
        do {
            std::string_view part = beginning(rest, width).first;
            const std::size_t blank = part.size() < rest.size() && rest[part.size()] != ' '
                                          ? part.rfind(' ')
                                          : std::string_view::npos;
            if (blank != std::string_view::npos && blank > 0) part = part.substr(0, blank);
            lines.emplace_back(part);
            rest.remove_prefix(part.size());
            if (rest.starts_with(' ')) rest.remove_prefix(1);
        } while (!rest.empty());
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

}  // namespace zmfb::tool::browse
