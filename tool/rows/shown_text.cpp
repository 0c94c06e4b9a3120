#include "tool/rows/shown_text.h"

#include <fmt/format.h>

#include <algorithm>

namespace zmfb::tool {
namespace {

constexpr unsigned char lead_of_controls = 0xC2;  // of U+0080 to U+009F

bool starts_character(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

void add_control(std::string& out, unsigned char code) {
    switch (code) {
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            out += fmt::format("\\x{:02x}", code);
    }
}

}  // namespace

std::string without_controls(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const auto next = static_cast<unsigned char>(i + 1 < utf8.size() ? utf8[i + 1] : 0);
        if (byte < 0x20 || byte == 0x7F) {
            add_control(out, byte);
        } else if (byte == lead_of_controls && next >= 0x80 && next < 0xA0) {
            add_control(out, next);
            ++i;
        } else {
            out += utf8[i];
        }
    }
    return out;
}

std::string lines_without_controls(std::string_view utf8) {
    std::string out;
    for (;;) {
        const std::size_t end = utf8.find('\n');
        out += without_controls(utf8.substr(0, end));
        if (end == std::string_view::npos) return out;
        out += '\n';
        utf8.remove_prefix(end + 1);
    }
}

std::string in_quotes(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

std::size_t count_characters(std::string_view utf8) {
    return static_cast<std::size_t>(std::ranges::count_if(utf8, starts_character));
}

std::string cut_to(std::string_view utf8, std::size_t width) {
    if (width == 0 || count_characters(utf8) <= width) return std::string(utf8);
    std::size_t end = 0;
    for (std::size_t begun = 0; end < utf8.size(); ++end) {
        if (starts_character(utf8[end]) && ++begun == width) break;
    }
    return std::string(utf8.substr(0, end)) + "…";
}

std::string_view shown_null(bool colours) { return colours ? "\x1b[2mNULL\x1b[0m" : "NULL"; }

}  // namespace zmfb::tool
