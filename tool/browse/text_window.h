/// A text over the whole screen, to be read page by page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/browse/screen.h"

namespace zmfb::tool::browse {

/// How many lines of a text there is room for.
int lines_shown(const Screen& screen);

/// Shows lines from the `top`-th on, counted from 0, between two bars.
void draw_lines(Screen& screen, std::string_view heading, const std::vector<std::string>& lines, int top,
                std::string_view foot);

/// Whether it is a key that ends the looking: Esc, q or Enter.
bool closes(Key typed);

/// Shows a text until Esc, q or Enter; its lines are broken to fit, anew when the screen is resized.
void show_text(Screen& screen, std::string_view title, const std::string& text);

}  // namespace zmfb::tool::browse
