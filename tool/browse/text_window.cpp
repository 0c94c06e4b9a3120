#include "tool/browse/text_window.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/cell_text.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::milliseconds a_while(1000);

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

int lines_shown(const Screen& screen) { return std::max(screen.rows() - 2, 1); }

void draw_lines(Screen& screen, std::string_view heading, const std::vector<std::string>& lines, int top,
                std::string_view foot) {
    if (!screen.is_large_enough()) return screen.show();
    screen.clear();
    screen.put(0, 0, screen.columns(), heading, Look::bar);
    for (int i = 0; i < lines_shown(screen) && top + i < static_cast<int>(lines.size()); ++i)
        screen.put(1 + i, 0, screen.columns(), lines[static_cast<std::size_t>(top + i)]);
    screen.put(screen.rows() - 1, 0, screen.columns(), foot, Look::bar);
    screen.show();
}

bool closes(Key typed) { return typed == Key::escape || typed == Key::enter || typed == key(U'q'); }

void show_text(Screen& screen, std::string_view title, const std::string& text) {
    std::vector<std::string> lines;
    int width = 0, top = 0;
    for (;;) {
        const int height = lines_shown(screen);
        if (width != screen.columns()) lines = lines_of(text, std::max(width = screen.columns(), 2));
        const int last = std::max(static_cast<int>(lines.size()) - height, 0);
        top = std::clamp(top, 0, last);
        const auto shown = std::min(static_cast<std::size_t>(top + height), lines.size());
        draw_lines(screen, fmt::format(" {}", title), lines, top,
                   fmt::format(" lines {} to {} of {}   PgUp PgDn   Esc back", top + 1, shown, lines.size()));
        const Key typed = screen.read(a_while);
        if (closes(typed)) return;
        top = std::clamp(moved(typed, top, height, last), 0, last);
    }
}

}  // namespace zmfb::tool::browse
