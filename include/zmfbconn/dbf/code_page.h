/// The code pages of the texts of DBF files.
#pragma once

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
/// The character set that the words of a .cpg file mean: "UTF-8", "1252", "ANSI 1252", "ISO 88591". "" when
/// they mean none that is known.
std::string code_page_named(std::string_view words);

/// The character set of the file at `path`, by its .cpg file or else its language byte; "" when neither says
/// it. What one of them says and nobody knows becomes a note of the header. Throws std::system_error when the
/// .cpg file cannot be read.
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
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace zmfb::dbf

#pragma GCC visibility pop
