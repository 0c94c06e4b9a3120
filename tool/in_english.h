/// What methods raise in Portuguese, in English.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// A text that methods raise, as it is raised, and what it says. A star stands for what differs; the stars of
/// `english` are the first ones of `raised`.
struct RaisedText {
    std::string_view raised;
    std::string_view english;
};
/// All that are in Portuguese.
std::span<const RaisedText> raised_texts();

/// What a raised text says, in English, without the engine's words that it may end with. Takes the bytes that
/// were raised, gives UTF-8; "" for a text that is not in Portuguese.
std::string in_english(std::string_view raised);

}  // namespace zmfb::tool
