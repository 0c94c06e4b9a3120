/// A text over the whole screen, to be read page by page.
#pragma once

#include <string>
#include <string_view>

#include "tool/browse/screen.h"

namespace zmfb::tool::browse {

/// Shows a text until Esc, q or Enter; its lines are broken to fit, anew when the screen is resized.
void show_text(Screen& screen, std::string_view title, const std::string& text);

}  // namespace zmfb::tool::browse
