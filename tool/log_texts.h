/// Which texts of a log may go on over further lines, and so have lines in them that look like entries.
///
/// The text of a statement may go on where a quote or a comment is open in it, since values, names and
/// comments may have line ends; another text that the system writes is one line; of what nobody knows every
/// line may be a piece. No text has more than 9999 bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zmfb::tool {

class LogTexts {
  public:
    /// Whether a text that began before may have in it the line of `size` bytes at `position` of the file,
    /// which looks like the first of an entry. Texts that cannot have ended there.
    bool may_hold(std::uint64_t position, std::size_t size);
    /// A line follows, of any text that has not ended.
    void go_on(std::string_view line);
    /// A text begins at `position`, with that line.
    void begin(std::uint64_t position, std::string_view line);
    /// The text whose beginning is not in the file.
    void begin_unseen() { begin(0, {}); }

  private:
    // Where such a text stands at the end of a line.
    enum class Inside { one_line, statement, literal, name, comment, anything };

    static Inside behind(Inside before, std::string_view line);
    void note(Inside inside, std::uint64_t begin);

    // Of all texts that stand alike, where the last begins: it reaches farthest.
    std::array<std::optional<std::uint64_t>, 6> begins_;
};

}  // namespace zmfb::tool
