/// The colour notation "foreground/background" such as "BG/N" or "GR+/B".
#pragma once

#include <cstdint>
#include <string_view>

namespace zmfb::host {

/// A colour pair as the notation names it: 0 black, 1 blue, 2 green, 3 cyan, 4 red, 5 magenta, 6 brown, 7
/// white; 8 more for a bright one.
struct Colour {
    std::uint8_t foreground = 7;
    std::uint8_t background = 0;
    bool blink = false;
    bool underline = false;
    bool inverse = false;
    bool hidden = false;
    bool operator==(const Colour&) const = default;
};

/// Reads the first pair of `notation`; what it leaves out is white on black. Letters combine in any order (B
/// blue, G green, R red, W white, N black, U underline, I inverse, X hidden), numbers go from 0 to 15, "+"
/// (bright) and "*" (blink) belong to the foreground wherever they stand, small letters count as capitals,
/// all else is ignored.
Colour parse_colour(std::string_view notation);

}  // namespace zmfb::host
