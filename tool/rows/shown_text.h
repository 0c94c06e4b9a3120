/// Texts as they may go to a terminal.
#pragma once

#include <string>
#include <string_view>

namespace zmfb::tool {

/// Replaces control characters, which could do anything to a terminal, with \n, \t, \r or \xHH. UTF-8.
std::string without_controls(std::string_view utf8);
/// The same line by line: line ends stay.
std::string lines_without_controls(std::string_view utf8);
/// A text between double quotes, with those in it doubled: as SQL has names, and CSV texts.
std::string in_quotes(std::string_view text);
/// How many characters there are in a UTF-8 text.
std::size_t count_characters(std::string_view utf8);
/// A text of more than `width` characters cut to that many, the last of them "…".
std::string cut_to(std::string_view utf8, std::size_t width);
/// "NULL", dim on a terminal with colours, where a text "NULL" is not.
std::string_view shown_null(bool colours);

}  // namespace zmfb::tool
