#include "sql/typed/encoding.h"

#include <iconv.h>
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "host/utf8.h"

namespace zmfb::typed {

namespace {

constexpr unsigned first_beyond_ascii = 0x80;

unsigned byte_at(std::string_view text, std::size_t i) { return static_cast<unsigned char>(text[i]); }

bool is_continuation(std::string_view text, std::size_t i) {
    return i < text.size() && (byte_at(text, i) & 0xC0) == 0x80;
}

// The code of a character of UTF-8 that character_length() has measured.
char32_t code_of(std::string_view character) {
    constexpr unsigned lead_bits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t code = byte_at(character, 0) & lead_bits[character.size()];
    for (std::size_t i = 1; i < character.size(); ++i) code = code << 6 | (byte_at(character, i) & 0x3F);
    return code;
}

// The UTF-8 of one byte; "" when the set has no character for it, or the byte only begins one.
std::string utf8_of(iconv_t converter, char byte) {
    std::array<char, 16> out{};
    char *from = &byte, *to = out.data();
    std::size_t left = 1, room = out.size();
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &from, &left, &to, &room) == static_cast<std::size_t>(-1)) return "";
    // A letter is held back while a sign that belongs to it could follow.
    iconv(converter, nullptr, nullptr, &to, &room);
    return {out.data(), out.size() - room};
}

}  // namespace

bool is_ascii(std::string_view text) {
    constexpr std::uint64_t high_bits = 0x8080808080808080;
    while (text.size() >= sizeof high_bits) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        if ((word & high_bits) != 0) return false;
        text.remove_prefix(sizeof word);
    }
    unsigned all = 0;
    for (const char c : text) all |= static_cast<unsigned char>(c);
    return all < first_beyond_ascii;
}

std::size_t character_length(std::string_view utf8) {
    if (utf8.empty()) return 0;
    const unsigned lead = byte_at(utf8, 0);
    if (lead < first_beyond_ascii) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (!is_continuation(utf8, i)) return 0;
    }
    const char32_t code = code_of(utf8.substr(0, length));
    const bool is_shortest = length == 2 || code >= (length == 3 ? 0x800U : 0x10000U);
    const bool is_surrogate = code >= 0xD800 && code < 0xE000;
    return is_shortest && !is_surrogate && code <= 0x10FFFF ? length : 0;
}

bool holds_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = character_length(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

void Encoding::fill(const std::function<std::string(char byte)>& utf8_of_byte) {
    for (unsigned code = 0; code < characters_.size(); ++code) {
        const char byte = static_cast<char>(code);
        characters_[code] = utf8_of_byte(byte);
        if (!characters_[code].empty()) bytes_.push_back({code_of(characters_[code]), byte});
    }
    std::ranges::sort(bytes_, {}, &Character::code);
}

const std::shared_ptr<const Encoding>& Encoding::latin1() {
    static const std::shared_ptr<const Encoding> made = [] {
        const std::shared_ptr<Encoding> encoding(new Encoding("ISO-8859-1"));
        encoding->fill([](char byte) { return host::to_utf8({&byte, 1}); });
        return encoding;
    }();
    return made;
}

std::shared_ptr<const Encoding> Encoding::named(const std::string& name) {
    const std::shared_ptr<Encoding> made(new Encoding(name));
    if (strcasecmp(name.c_str(), "UTF-8") == 0 || strcasecmp(name.c_str(), "UTF8") == 0) {
        made->is_utf8_ = true;
        return made;
    }
    const iconv_t converter = iconv_open("UTF-8", name.c_str());
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says no.
    if (converter == reinterpret_cast<iconv_t>(-1)) return nullptr;
    made->fill([converter](char byte) { return utf8_of(converter, byte); });
    iconv_close(converter);
    // Every statement is made of ASCII, which must mean itself.
    for (unsigned code = 0; code < first_beyond_ascii; ++code) {
        if (made->characters_[code] != std::string(1, static_cast<char>(code))) return nullptr;
    }
    constexpr std::size_t fewest = 64;  // the upper halves of sets with longer characters have hardly any
    return made->bytes_.size() >= first_beyond_ascii + fewest ? made : nullptr;
}

std::size_t Encoding::decode(std::string_view bytes, std::string& utf8, std::string_view replacement) const {
    std::size_t bad = std::string_view::npos;
    for (std::size_t i = 0; i < bytes.size();) {
        const std::string_view rest = bytes.substr(i);
        const std::size_t taken = is_utf8_ ? character_length(rest) : 1;
        const std::string_view character =
            is_utf8_ ? rest.substr(0, taken) : std::string_view(characters_[byte_at(rest, 0)]);
        if (character.empty()) bad = std::min(bad, i);
        utf8 += character.empty() ? replacement : character;
        i += std::max<std::size_t>(taken, 1);
    }
    return bad;
}

std::string_view Encoding::encode(std::string_view utf8, std::string& bytes) const {
    while (!utf8.empty()) {
        const std::size_t length = character_length(utf8);
        const std::string_view character = utf8.substr(0, std::max<std::size_t>(length, 1));
        if (length == 0) return character;
        if (is_utf8_) {
            bytes += character;
        } else {
            const char32_t code = code_of(character);
            const auto found = std::ranges::lower_bound(bytes_, code, {}, &Character::code);
            if (found == bytes_.end() || found->code != code) return character;
            bytes += found->byte;
        }
        utf8.remove_prefix(length);
    }
    return {};
}

}  // namespace zmfb::typed
