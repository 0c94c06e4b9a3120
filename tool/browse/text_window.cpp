#include "tool/browse/text_window.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "tool/browse/cell_text.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::milliseconds a_while(1000);

void draw(Screen& screen, std::string_view title, const std::vector<std::string>& lines, int top,
          int height) {
    screen.clear();
    screen.put(0, 0, screen.columns(), fmt::format(" {}", title), Look::bar);
    for (int i = 0; i < height && top + i < static_cast<int>(lines.size()); ++i)
        screen.put(1 + i, 0, screen.columns(), lines[static_cast<std::size_t>(top + i)]);
    const int last = std::min(top + height, static_cast<int>(lines.size()));
    screen.put(height + 1, 0, screen.columns(),
               fmt::format(" lines {} to {} of {}   PgUp PgDn   Esc back", top + 1, last, lines.size()),
               Look::bar);
    screen.show();
}

int moved(Key typed, int top, int height, int last) {
    if (typed == key(U' ')) return top + height;
    switch (typed) {
        case Key::up:
            return top - 1;
        case Key::down:
            return top + 1;
        case Key::page_up:
            return top - height;
        case Key::page_down:
            return top + height;
        case Key::home:
        case Key::top:
            return 0;
        case Key::end:
        case Key::bottom:
            return last;
        default:
            return top;
    }
}

}  // namespace

void show_text(Screen& screen, std::string_view title, const std::string& text) {
    std::vector<std::string> lines;
    int width = 0, top = 0;
    for (;;) {
        const bool fits = screen.is_large_enough();
        const int height = std::max(screen.rows() - 2, 1);
        if (width != screen.columns()) lines = lines_of(text, std::max(width = screen.columns(), 2));
        const int last = std::max(static_cast<int>(lines.size()) - height, 0);
        top = std::clamp(top, 0, last);
        if (fits) {
            draw(screen, title, lines, top, height);
        } else {
            screen.show();
        }
        const Key typed = screen.read(a_while);
        if (typed == Key::escape || typed == Key::enter || typed == key(U'q')) return;
        top = std::clamp(moved(typed, top, height, last), 0, last);
    }
}

}  // namespace zmfb::tool::browse
