#include "host/colour.h"

namespace zmfb::host {
namespace {

constexpr std::uint8_t bright = 8;

char capital(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// One half of a pair while it is read.
struct Half {
    int colour = -1;
    bool number = false;

    void add_bits(int bits) {
        colour = number || colour < 0 ? bits : colour | bits;
        number = false;
    }
    void add_digit(int digit) {
        colour = number ? colour * 10 + digit : digit;
        if (colour > 15) colour = digit;
        number = true;
    }
};

}  // namespace

Colour parse_colour(std::string_view notation) {
    Half halves[2];
    Half* half = halves;
    Colour result;
    bool plus = false;
    for (const char c : notation.substr(0, notation.find(','))) {
        switch (capital(c)) {
            case '/':
                half = halves + 1;
                break;
            case 'N':
                half->add_bits(0);
                break;
            case 'B':
                half->add_bits(1);
                break;
            case 'G':
                half->add_bits(2);
                break;
            case 'R':
                half->add_bits(4);
                break;
            case 'W':
                half->add_bits(7);
                break;
            case 'U':
                result.underline = true;
                break;
            case 'I':
                result.inverse = true;
                break;
            case 'X':
                result.hidden = true;
                break;
            case '+':
                plus = true;
                break;
            case '*':
                result.blink = true;
                break;
            default:
                if (c >= '0' && c <= '9') half->add_digit(c - '0');
        }
    }
    if (halves[0].colour >= 0) result.foreground = static_cast<std::uint8_t>(halves[0].colour);
    if (halves[1].colour >= 0) result.background = static_cast<std::uint8_t>(halves[1].colour);
    if (plus) result.foreground |= bright;
    return result;
}

}  // namespace zmfb::host
