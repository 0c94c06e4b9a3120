/// Texts of the program in ISO-8859-1.
///
/// Source files are UTF-8; the suffix `_l1` converts a literal when it is compiled, so that "descrição"_l1 is
/// readable here and one byte per letter in the program. A character outside ISO-8859-1 does not compile.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zmfb::host {

/// A UTF-8 literal and its ISO-8859-1 form.
template <std::size_t N>
struct Latin1Literal {
    std::array<char, N> bytes{};  ///< ISO-8859-1, as many as `size` says
    std::size_t size = 0;         ///< number of letters

    /// Converts the literal when it is compiled.
    consteval Latin1Literal(const char (&utf8)[N]) {  // NOLINT(google-explicit-constructor)
        for (std::size_t i = 0; i + 1 < N; ++i) {
            const auto lead = static_cast<unsigned char>(utf8[i]);
            if (lead < 0x80) {
                bytes[size++] = utf8[i];
            } else if (lead == 0xC2 || lead == 0xC3) {
                const auto next = static_cast<unsigned char>(utf8[++i]);
                bytes[size++] = static_cast<char>(((lead & 0x03) << 6) | (next & 0x3F));
            } else {
                throw "a character outside ISO-8859-1";
            }
        }
    }
};

/// What the views of literals point into.
template <Latin1Literal Text>
inline constexpr auto latin1_storage = Text;

/// The ISO-8859-1 form of a UTF-8 literal; the view lives for ever.
template <Latin1Literal Text>
consteval std::string_view operator""_l1() {
    return {latin1_storage<Text>.bytes.data(), latin1_storage<Text>.size};
}

}  // namespace zmfb::host
