#include "tool/name.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text.h"
#include "tool/encoding.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

std::string_view between_blanks(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// What stands between double quotes, of which two are one of the name.
std::string unquoted(std::string_view text) {
    std::string name;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (text[i] == '"' && text[i + 1] == '"' && i + 2 < text.size()) ++i;
        name += text[i];
    }
    return name;
}

}  // namespace

Name::Name(std::string_view bytes) : bytes_(bytes.substr(0, bytes.find_last_not_of(' ') + 1)) {}

bool Name::is_plain() const {
    return !bytes_.empty() && begins_plain(bytes_[0]) && std::ranges::all_of(bytes_, tool::is_plain);
}

std::string Name::quoted() const { return in_quotes(bytes_); }

std::string Name::text() const { return is_utf8(bytes_) ? bytes_ : to_utf8(bytes_); }

std::string Name::shown() const { return is_plain() ? bytes_ : in_quotes(text()); }

bool begins_plain(char c) { return c >= 'A' && c <= 'Z'; }

bool is_plain(char c) { return begins_plain(c) || (c >= '0' && c <= '9') || c == '_' || c == '$'; }

Name typed_name(std::string_view typed) {
    const std::string_view text = between_blanks(typed);
    if (text.size() > 2 && text.front() == '"' && text.back() == '"') return Name(unquoted(text));
    std::string name(text);
    std::ranges::transform(name, name.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return Name(name);
}

bool all_plain(const std::vector<Name>& names) { return std::ranges::all_of(names, &Name::is_plain); }

std::string joined(const std::vector<Name>& names) {
    std::string all;
    for (const Name& name : names) all += (all.empty() ? "" : ", ") + name.shown();
    return all;
}

std::string shell_word(std::string_view text) {
    if (without_controls(text) != text) {
        std::string word = "$'";
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            const bool as_it_is = byte >= 0x20 && byte < 0x7F && c != '\'' && c != '\\';
            word += as_it_is ? std::string(1, c) : fmt::format("\\{:03o}", byte);
        }
        return word + "'";
    }
    if (text.find_first_of("\"$`\\!") == std::string_view::npos) return fmt::format("\"{}\"", text);
    return "'" + host::strtran(text, "'", "'\\''").string() + "'";
}

std::string exec_command_line(std::string_view statement) { return "zmfb exec " + shell_word(statement); }

}  // namespace zmfb::tool
