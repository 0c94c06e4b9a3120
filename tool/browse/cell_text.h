/// Texts in the cells of a screen.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool::browse {

/// The cells that a text (UTF-8) takes: two for a wide character, none for an accent that is put on one.
int width_of(std::string_view text);

/// A text as it can be put into one line: no control characters, no accents without a letter, and U+FFFD for
/// what is no character.
std::string one_line(std::string_view text);

/// What of a text fits into `width` cells, with "…" at the end when there is more, and blanks up to the
/// width: behind it, or before it when it goes to the right.
std::string fitted(std::string_view text, int width, bool to_the_right = false);

/// The longest end of a text that takes less than `width` cells.
std::string_view end_within(std::string_view text, int width);

/// A text in lines of at most `width` cells, parted at its line ends and, where it can be, between words.
std::vector<std::string> lines_of(std::string_view text, int width);

}  // namespace zmfb::tool::browse
