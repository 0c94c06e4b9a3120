#include "tool/encoding.h"

namespace zmfb::tool {

std::string to_utf8(std::string_view latin1) {
    std::string out;
    out.reserve(latin1.size());
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            out += c;
        } else {
            out += static_cast<char>(0xC0 | (byte >> 6));
            out += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return out;
}

std::optional<std::string> to_latin1(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead < 0x80) {
            out += utf8[i];
            continue;
        }
        // ISO-8859-1 beyond ASCII is exactly what the two leads C2 and C3 encode.
        if ((lead != 0xC2 && lead != 0xC3) || i + 1 == utf8.size()) return std::nullopt;
        const auto next = static_cast<unsigned char>(utf8[++i]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        out += static_cast<char>(((lead & 0x03) << 6) | (next & 0x3F));
    }
    return out;
}

}  // namespace zmfb::tool
