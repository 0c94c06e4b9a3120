#include "host/colour.h"

#include <gtest/gtest.h>

namespace zmfb::host {
namespace {

struct ColourCase {
    std::string_view notation;
    Colour expected;
};

TEST(ColourNotation, NamesAPair) {
    const ColourCase cases[] = {
        {"", {7, 0}},
        {"BG/N", {3, 0}},
        {"GR/B", {6, 1}},
        {"GR+/B", {14, 1}},
        {"W/N,N/W,N,N,N/W", {7, 0}},
        {"R/G,B/N", {4, 2}},
        {"RB/N", {5, 0}},
        {"BR/N", {5, 0}},
        {"RGB/N", {7, 0}},
        {"BR/W+", {13, 7}},
        {"R*/B", {.foreground = 4, .background = 1, .blink = true}},
        {"R/B*+", {.foreground = 12, .background = 1, .blink = true}},
        {"N+/N", {8, 0}},
        {"/B", {7, 1}},
        {"B", {1, 0}},
        {"12/3", {12, 3}},
        {"7/15", {7, 15}},
        {"1+/0", {9, 0}},
        {"99/16", {9, 6}},
        {"bg/n", {3, 0}},
        {" B Q? G / N ", {3, 0}},
        {"U/N", {.foreground = 7, .background = 0, .underline = true}},
        {"I", {.foreground = 7, .background = 0, .inverse = true}},
        {"X", {.foreground = 7, .background = 0, .hidden = true}},
        {"W/N/B", {7, 1}},
    };
    for (const auto& [notation, expected] : cases) {
        const Colour read = parse_colour(notation);
        EXPECT_EQ(read, expected) << notation << " gave " << int{read.foreground} << '/'
                                  << int{read.background};
    }
}

}  // namespace
}  // namespace zmfb::host
