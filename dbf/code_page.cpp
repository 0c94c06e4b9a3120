#include "dbf/code_page.h"

#include <fmt/format.h>
#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "dbf/companion.h"
#include "dbf/source.h"

namespace zmfb::dbf {
namespace {

struct LanguageByte {
    std::uint8_t language;
    const char* code_page;
};

// Of several for a set the first is the one that FoxPro writes, which most programs know.
constexpr LanguageByte languages[] = {
    {0x01, "CP437"},  {0x02, "CP850"},  {0x03, "CP1252"}, {0x57, "CP1252"}, {0x58, "CP1252"},
    {0x59, "CP1252"}, {0x64, "CP852"},  {0x87, "CP852"},  {0x65, "CP866"},  {0x26, "CP866"},
    {0x66, "CP865"},  {0x08, "CP865"},  {0x67, "CP861"},  {0x6A, "CP737"},  {0x86, "CP737"},
    {0x6B, "CP857"},  {0x88, "CP857"},  {0x6C, "CP863"},  {0x78, "CP950"},  {0x4F, "CP950"},
    {0x79, "CP949"},  {0x4E, "CP949"},  {0x7A, "CP936"},  {0x4D, "CP936"},  {0x7B, "CP932"},
    {0x13, "CP932"},  {0x7C, "CP874"},  {0x50, "CP874"},  {0x7D, "CP1255"}, {0x7E, "CP1256"},
    {0xC8, "CP1250"}, {0xC9, "CP1251"}, {0xCA, "CP1254"}, {0xCB, "CP1253"}, {0xCC, "CP1257"},
};

bool is_letter_or_digit(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

// "ANSI 1252" as "ansi1252": words with what is neither a letter nor a digit left out.
std::string bare(std::string_view words) {
    std::string made = lower(words);
    made.erase(std::remove_if(made.begin(), made.end(), [](char c) { return !is_letter_or_digit(c); }),
               made.end());
    return made;
}

bool is_known(const std::string& name) { return !name.empty() && ToUtf8(name).known(); }

// The number behind one of the words that a code page is written with.
std::string number_behind(std::string_view text, std::initializer_list<std::string_view> words) {
    for (const std::string_view word : words) {
        if (!text.starts_with(word)) continue;
        const std::string_view rest = text.substr(word.size());
        const bool digits = !rest.empty() && rest.find_first_not_of("0123456789") == std::string_view::npos;
        if (digits) return std::string(rest);
    }
    return {};
}

constexpr std::size_t longest_name = 256;
// Some sets have letters that are two characters in Unicode.
constexpr std::size_t longest_character = 8;

// iconv_open() answers with the address -1 for a set that it does not know.
bool is_open(iconv_t handle) { return reinterpret_cast<std::intptr_t>(handle) != -1; }

// Eight bytes at a time: most texts of most tables are ASCII, and asked this.
bool is_ascii(std::string_view text) {
    constexpr std::uint64_t high_bits = 0x8080808080808080;
    const char* at = text.data();
    std::size_t left = text.size();
    std::uint64_t seen = 0;
    for (std::uint64_t eight = 0; left >= sizeof eight; at += sizeof eight, left -= sizeof eight) {
        std::memcpy(&eight, at, sizeof eight);
        seen |= eight;
    }
    for (; left > 0; ++at, --left) seen |= static_cast<unsigned char>(*at);
    return (seen & high_bits) == 0;
}

// The bytes of the first character of a text in UTF-8, or of what is none.
std::size_t character_size(std::string_view utf8) {
    std::size_t size = 1;
    while (size < utf8.size() && (static_cast<unsigned char>(utf8[size]) & 0xC0) == 0x80) ++size;
    return size;
}

}  // namespace

std::string code_page_of(std::uint8_t language) {
    const auto* const found = std::find_if(std::begin(languages), std::end(languages),
                                           [&](const LanguageByte& one) { return one.language == language; });
    return found == std::end(languages) ? "" : found->code_page;
}

std::uint8_t language_of(const std::string& character_set) {
    const std::string name = code_page_named(character_set);
    const auto* const found = std::find_if(std::begin(languages), std::end(languages),
                                           [&](const LanguageByte& one) { return one.code_page == name; });
    return found == std::end(languages) ? 0 : found->language;
}

std::string code_page_named(std::string_view words) {
    const std::string text = bare(words);
    if (text == "utf8" || text == "65001") return "UTF-8";
    if (const std::string part = number_behind(text, {"iso8859", "8859"}); !part.empty()) {
        if (std::string name = "ISO-8859-" + part; is_known(name)) return name;
    }
    if (const std::string number = number_behind(text, {"", "cp", "ansi", "oem", "windows", "ibm"});
        !number.empty()) {
        if (std::string name = "CP" + number; is_known(name)) return name;
    }
    return is_known(text) ? text : "";
}

std::string code_page(const std::string& path, Header& header) {
    if (const std::string file = find_companion(path, ".cpg"); !file.empty()) {
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(file, ignored))
            throw Refused({"has a .cpg file that is no file"});
        const std::string words = read_bytes(*open_file(file), 0, longest_name);
        if (std::string name = code_page_named(words); !name.empty()) return name;
        header.notes.push_back(
            fmt::format("its .cpg file names no code page that is known: {}", bare(words)));
    }
    std::string name = code_page_of(header.language);
    if (name.empty() && header.language != 0)
        header.notes.push_back(
            fmt::format("its language byte {:02X} means no code page that is known", header.language));
    return name;
}

struct ToUtf8::State {
    iconv_t handle;
};

ToUtf8::ToUtf8(const std::string& character_set)
    : state_(std::make_unique<State>(State{iconv_open("UTF-8", character_set.c_str())})) {}

ToUtf8::~ToUtf8() {
    if (known()) iconv_close(state_->handle);
}

bool ToUtf8::known() const { return is_open(state_->handle); }

std::optional<std::string> ToUtf8::convert(std::string_view text) {
    if (!known()) return std::nullopt;
    std::string source(text);
    std::string utf8(source.size() * longest_character, '\0');
    char* from = source.data();
    char* to = utf8.data();
    std::size_t from_left = source.size();
    std::size_t to_left = utf8.size();
    iconv(state_->handle, nullptr, nullptr, nullptr, nullptr);
    if (iconv(state_->handle, &from, &from_left, &to, &to_left) != 0) return std::nullopt;
    if (iconv(state_->handle, nullptr, nullptr, &to, &to_left) != 0) return std::nullopt;
    utf8.resize(utf8.size() - to_left);
    return utf8;
}

struct FromUtf8::State {
    iconv_t handle;
    std::string room;
};

FromUtf8::FromUtf8(const std::string& character_set)
    : state_(std::make_unique<State>(State{iconv_open(character_set.c_str(), "UTF-8"), {}})) {
    std::string ascii;
    for (char letter = ' '; letter <= '~'; ++letter) ascii += letter;
    known_ = is_open(state_->handle) && convert_others(ascii, 2 * ascii.size()).bytes == ascii;
}

FromUtf8::~FromUtf8() {
    if (is_open(state_->handle)) iconv_close(state_->handle);
}

FromUtf8::Text FromUtf8::convert(std::string_view utf8, std::size_t most) {
    if (is_ascii(utf8)) return {utf8.substr(0, most), false, utf8.size() > most};
    return convert_others(utf8, std::min(most, utf8.size() * longest_character));
}

FromUtf8::Text FromUtf8::convert_others(std::string_view utf8, std::size_t most) {
    Text made;
    made.is_ascii = false;
    std::string& room = state_->room;
    room.resize(most);
    // iconv() does not write to the text.
    char* from = const_cast<char*>(utf8.data());
    std::size_t from_left = utf8.size();
    char* to = room.data();
    std::size_t to_left = most;
    iconv(state_->handle, nullptr, nullptr, nullptr, nullptr);
    while (from_left > 0 && !made.cut) {
        const std::size_t irreversible = iconv(state_->handle, &from, &from_left, &to, &to_left);
        if (irreversible != static_cast<std::size_t>(-1)) {
            made.replaced = made.replaced || irreversible > 0;
        } else if (errno == E2BIG || to_left == 0) {
            made.cut = true;
        } else {
            const std::size_t size = character_size({from, from_left});
            from += size;
            from_left -= size;
            *to++ = '?';
            --to_left;
            made.replaced = true;
        }
    }
    made.bytes = std::string_view(room).substr(0, most - to_left);
    return made;
}

}  // namespace zmfb::dbf
