#include "tool/browse/prompt.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/cell_text.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::milliseconds a_while(1000);

// The end of a text that is too wide, with a sign that there is more before it.
std::string end_of(std::string_view text, int width) {
    const std::string line = one_line(text);
    if (width_of(line) <= width) return line;
    return fmt::format("…{}", end_within(line, width));
}

void draw_line(Screen& screen, std::string_view question, const CellInput& input) {
    const int row = screen.rows() - 1, width = screen.columns();
    const std::string head = " " + std::string(question) + " ";
    const int at = width_of(head);
    const std::string before = end_of(input.before(), std::max(width - at - 1, 1));
    const std::string behind = one_line(std::string_view(input.text()).substr(input.before().size()));
    screen.put(row, 0, width, head + before + behind);
    screen.cursor_at(row, std::min(at + width_of(before), width - 1));
}

}  // namespace

bool edit(CellInput& input, Key typed) {
    switch (typed) {
        case Key::backspace:
            input.backspace();
            return true;
        case Key::remove:
            input.remove();
            return true;
        case Key::left:
            input.left();
            return true;
        case Key::right:
            input.right();
            return true;
        case Key::home:
            input.home();
            return true;
        case Key::end:
            input.end();
            return true;
        default:
            break;
    }
    if (!is_character(typed)) return false;
    input.insert(static_cast<char32_t>(typed));
    return true;
}

std::optional<std::string> ask(Screen& screen, const std::function<void()>& draw, std::string_view question,
                               const std::string& text) {
    CellInput input({.kind = CellRule::Kind::text}, text);
    for (;;) {
        draw();
        if (screen.is_large_enough()) draw_line(screen, question, input);
        screen.show();
        const Key typed = screen.read(a_while);
        if (typed == Key::escape) return std::nullopt;
        if (typed == Key::enter) return input.text();
        edit(input, typed);
    }
}

}  // namespace zmfb::tool::browse
