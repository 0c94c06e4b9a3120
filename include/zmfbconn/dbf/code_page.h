/// The code pages of the texts of DBF files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "header.h"

#pragma GCC visibility push(default)

namespace zmfb::dbf {

/// The character set that a language byte means, by its name for iconv: "CP850". "" for 0 and unknown ones.
std::string code_page_of(std::uint8_t language);
/// The language byte that means the character set of that name, in any spelling; 0 when none does.
std::uint8_t language_of(const std::string& character_set);
/// The character set that the words of a .cpg file mean: "UTF-8", "1252", "ANSI 1252", "ISO 88591". "" when
/// they mean none that is known.
std::string code_page_named(std::string_view words);

/// The character set of the file at `path`, by its .cpg file or else its language byte; "" when neither says
/// it. What one of them says and nobody knows becomes a note of the header. Throws std::system_error when the
/// .cpg file cannot be read, Refused when it is no file.
std::string code_page(const std::string& path, Header& header);

/// From a character set into UTF-8.
class ToUtf8 {
  public:
    /// By its name for iconv.
    explicit ToUtf8(const std::string& character_set);
    ~ToUtf8();
    ToUtf8(const ToUtf8&) = delete;
    ToUtf8& operator=(const ToUtf8&) = delete;

    /// Whether there is such a set.
    [[nodiscard]] bool known() const;
    /// The text in UTF-8; none when the bytes are no text of a set that is known.
    [[nodiscard]] std::optional<std::string> convert(std::string_view text);

  private:
    struct [[gnu::visibility("hidden")]] State;
    std::unique_ptr<State> state_;
};

/// From UTF-8 into a character set.
class FromUtf8 {
  public:
    /// By its name for iconv.
    explicit FromUtf8(const std::string& character_set);
    ~FromUtf8();
    FromUtf8(const FromUtf8&) = delete;
    FromUtf8& operator=(const FromUtf8&) = delete;

    /// Whether there is such a set, and ASCII is a part of it.
    [[nodiscard]] bool known() const { return known_; }

    /// A text in the set.
    struct Text {
        std::string_view bytes;  ///< lives as long as what was given, and until the next one is converted
        bool replaced = false;   ///< whether "?" stands for what the set does not have, or is no UTF-8
        bool cut = false;        ///< whether some characters had no room
        bool is_ascii = true;    ///< whether what was given is
    };
    /// The text in a set that is known, as many whole characters of it as fit into `most` bytes.
    Text convert(std::string_view utf8, std::size_t most = std::string_view::npos);

  private:
    Text convert_others(std::string_view utf8, std::size_t most);

    struct [[gnu::visibility("hidden")]] State;
    std::unique_ptr<State> state_;
    bool known_ = false;
};

}  // namespace zmfb::dbf

#pragma GCC visibility pop
