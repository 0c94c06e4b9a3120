#include "tool/encoding.h"

#include <fmt/format.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>

#include "host/utf8.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view no_character = "\xEF\xBF\xBD";  // U+FFFD

// One character of UTF-8 for each byte.
using Characters = std::array<std::string, 256>;

struct Encoding {
    Characters characters;
    std::map<std::string, char, std::less<>> bytes;
};

std::unique_ptr<Encoding> chosen;  // null for ISO-8859-1
std::string chosen_name = "ISO-8859-1";
constexpr std::string_view utf8_name = "UTF-8";

// The UTF-8 of one byte; "" when the set has no character for it, or the byte only begins one.
std::string utf8_of(iconv_t converter, char byte) {
    std::array<char, 16> out{};
    char* from = &byte;
    char* to = out.data();
    std::size_t left = 1;
    std::size_t room = out.size();
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &from, &left, &to, &room) == static_cast<std::size_t>(-1)) return "";
    // A letter is held back while a sign that belongs to it could follow.
    iconv(converter, nullptr, nullptr, &to, &room);
    return {out.data(), out.size() - room};
}

std::size_t character_size(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    if (byte < 0x80) return 1;
    if (byte >= 0xF0) return 4;
    return byte >= 0xE0 ? 3 : 2;
}

std::optional<char> byte_of(std::string_view character) {
    if (chosen) {
        const auto found = chosen->bytes.find(character);
        if (found == chosen->bytes.end()) return std::nullopt;
        return found->second;
    }
    if (character.size() == 1 && static_cast<unsigned char>(character[0]) < 0x80) return character[0];
    // ISO-8859-1 beyond ASCII is exactly what the two leads C2 and C3 encode.
    const auto lead = static_cast<unsigned char>(character[0]);
    if (character.size() != 2 || (lead != 0xC2 && lead != 0xC3)) return std::nullopt;
    const auto next = static_cast<unsigned char>(character[1]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    return static_cast<char>(((lead & 0x03) << 6) | (next & 0x3F));
}

// The characters of a single-byte set; null for a name that is not known, or is that of another set.
std::unique_ptr<Encoding> encoding_named(const std::string& name) {
    // iconv takes options behind a slash.
    const bool is_word = std::ranges::all_of(name, [](char c) { return c > ' ' && c != '/' && c != '\''; });
    if (!is_word) return nullptr;
    const iconv_t converter = iconv_open("UTF-8", name.c_str());
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says no.
    if (converter == reinterpret_cast<iconv_t>(-1)) return nullptr;
    auto made = std::make_unique<Encoding>();
    bool letters_stay = true;
    std::size_t known = 0;
    for (int code = 0; code < 256; ++code) {
        const char byte = static_cast<char>(code);
        const std::string character = utf8_of(converter, byte);
        // Every statement is made of ASCII, which must mean itself.
        if (code < 0x80) letters_stay = letters_stay && character == std::string(1, byte);
        if (code >= 0x80 && !character.empty()) ++known;
        made->characters[static_cast<std::size_t>(code)] =
            character.empty() ? std::string(no_character) : character;
        if (!character.empty()) made->bytes.emplace(character, byte);
    }
    iconv_close(converter);
    constexpr std::size_t fewest = 64;  // the upper halves of sets with longer characters have hardly any
    return letters_stay && known >= fewest ? std::move(made) : nullptr;
}

}  // namespace

bool set_encoding(const std::string& name) {
    std::unique_ptr<Encoding> made = encoding_named(name);
    if (made == nullptr) return false;
    chosen = std::move(made);
    chosen_name = name;
    return true;
}

void set_utf8() {
    chosen = nullptr;
    chosen_name = utf8_name;
}

bool bytes_are_utf8() { return chosen_name == utf8_name; }

bool is_single_byte(const std::string& name) { return encoding_named(name) != nullptr; }

const std::string& encoding_name() { return chosen_name; }

namespace {

// With a sign for each byte that belongs to no character.
std::string checked(std::string_view text) {
    if (is_utf8(text)) return std::string(text);
    std::string out;
    while (!text.empty()) {
        const std::string_view character = text.substr(0, character_size(text[0]));
        const bool is_one = is_utf8(character);
        out += is_one ? character : no_character;
        text.remove_prefix(is_one ? character.size() : 1);
    }
    return out;
}

}  // namespace

std::string to_utf8(std::string_view latin1) {
    if (bytes_are_utf8()) return checked(latin1);
    if (!chosen) return host::to_utf8(latin1);
    std::string out;
    out.reserve(latin1.size());
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            out += c;
        } else {
            out += chosen->characters.at(byte);
        }
    }
    return out;
}

bool is_utf8(std::string_view bytes) {
    const iconv_t converter = iconv_open("UTF-32", "UTF-8");
    std::string source(bytes);
    std::string unused((bytes.size() + 1) * sizeof(char32_t), '\0');
    char* from = source.data();
    char* to = unused.data();
    std::size_t left = source.size();
    std::size_t room = unused.size();
    const bool whole = iconv(converter, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    return whole;
}

std::optional<std::string> to_latin1(std::string_view utf8) {
    if (bytes_are_utf8()) return is_utf8(utf8) ? std::optional<std::string>(utf8) : std::nullopt;
    std::string out;
    out.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::string_view character = utf8.substr(0, character_size(utf8[0]));
        const auto byte = byte_of(character);
        if (!byte) return std::nullopt;
        out += *byte;
        utf8.remove_prefix(character.size());
    }
    return out;
}

std::string shown_bytes(std::string_view bytes) {
    const bool is_text = bytes_are_utf8() && is_utf8(bytes);
    std::string shown;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool printable = byte >= 0x20 && byte != 0x7F && (byte < 0x80 || byte >= 0xA0) && c != '\\';
        if (is_text && byte >= 0x80) {
            shown += c;
        } else if (printable && (byte < 0x80 || !bytes_are_utf8())) {
            shown += to_utf8(std::string_view(&c, 1));
        } else {
            shown += fmt::format("\\x{:02X}", byte);
        }
    }
    return shown;
}

}  // namespace zmfb::tool
