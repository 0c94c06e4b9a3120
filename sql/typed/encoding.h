/// Between the UTF-8 of programs and the bytes in a database.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zmfb::typed {

/// What the texts of a database are kept in: a set of one byte a character, or UTF-8.
class Encoding {
  public:
    /// By its name for iconv; null for one that is not known, or whose characters take more than a byte.
    static std::shared_ptr<const Encoding> named(const std::string& name);
    static const std::shared_ptr<const Encoding>& latin1();

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] bool is_utf8() const { return is_utf8_; }

    /// Appends the UTF-8 of `bytes`. Returns the place of the first byte that is no character, npos when all
    /// are; such a byte becomes `replacement`.
    std::size_t decode(std::string_view bytes, std::string& utf8, std::string_view replacement) const;
    /// Appends the bytes of `utf8`. Returns "", or the first character, or byte of what is not UTF-8, that
    /// there is none for.
    std::string_view encode(std::string_view utf8, std::string& bytes) const;

  private:
    explicit Encoding(std::string name) : name_(std::move(name)) {}
    void fill(const std::function<std::string(char byte)>& utf8_of_byte);
    struct Character {
        char32_t code;
        char byte;
    };

    std::string name_;
    bool is_utf8_ = false;
    std::array<std::string, 256> characters_;  // "" for a byte that is no character
    std::vector<Character> bytes_;             // ordered by code
};

/// Whether every byte is below 128, where all encodings agree.
bool is_ascii(std::string_view text);
/// The length of the character that a text begins with, in bytes; 0 when it does not begin with UTF-8.
std::size_t character_length(std::string_view utf8);
bool holds_utf8(std::string_view text);

}  // namespace zmfb::typed
