/// Between the terminal's UTF-8 and the bytes of the object: ISO-8859-1, or what set_encoding() or set_utf8()
/// chose.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// Chooses another single-byte character set for the whole process, by its name for iconv. Returns .F., and
/// changes nothing, when the name is not known, or a character of the set takes more than a byte.
bool set_encoding(const std::string& name);

/// Lets the bytes be UTF-8, for the whole process.
void set_utf8();
/// Whether they are.
bool bytes_are_utf8();

/// Whether set_encoding() takes that name.
bool is_single_byte(const std::string& name);

/// The name of the set in force.
const std::string& encoding_name();

/// Bytes of the object to UTF-8. A byte without a character becomes U+FFFD; ISO-8859-1 has none of them.
std::string to_utf8(std::string_view latin1);

/// The same for people: what is no printable character, and the backslash, as \xHH.
std::string shown_bytes(std::string_view bytes);

/// Whether the bytes are UTF-8.
bool is_utf8(std::string_view bytes);

/// UTF-8 to bytes of the object; nothing when the text is not UTF-8 or has a character that they do not have.
std::optional<std::string> to_latin1(std::string_view utf8);

}  // namespace zmfb::tool
