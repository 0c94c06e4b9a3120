/// A line that is typed at the bottom of the screen.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tool/browse/cell_input.h"
#include "tool/browse/screen.h"

namespace zmfb::tool::browse {

/// Gives a key to what is typed; .F. when it edits nothing.
bool edit(CellInput& input, Key typed);

/// Asks for a text (UTF-8), which begins with `text`; nothing for Esc. `draw` puts what stands above it, anew
/// whenever the size of the screen changes.
std::optional<std::string> ask(Screen& screen, const std::function<void()>& draw, std::string_view question,
                               const std::string& text = {});

}  // namespace zmfb::tool::browse
