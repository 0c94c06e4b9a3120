#include "tool/browse/grid.h"

#include <algorithm>

#include "tool/browse/cell_text.h"

namespace zmfb::tool::browse {
namespace {

// Behind a column; behind the first one, which does not scroll.
std::string_view edge(std::size_t column) { return column == 0 ? "║" : "│"; }

constexpr std::string_view locked = "*";

Look look_of(const Cell& cell, const ShownColumn& column) {
    if (!cell) return Look::null;
    return column.is_memo() ? Look::memo : Look::plain;
}

}  // namespace

// No column takes more than half of the screen.
int Grid::width_of(std::size_t column, int room) const {
    return std::min(source_.columns()[column].width, room / 2 - 1);
}

// A column that only begins to fit is shown as far as there is room.
std::vector<Grid::Shown> Grid::layout(int width) const {
    std::vector<Shown> shown{{0, 0, width_of(0, width)}};
    int at = shown.front().width + 1;
    for (std::size_t i = left_; i < source_.columns().size() && at < width; ++i) {
        const int wanted = width_of(i, width);
        shown.push_back({i, at, std::min(wanted, width - at)});
        at += wanted + 1;
    }
    return shown;
}

void Grid::scroll_to_column(int width) {
    if (column_ == 0) return;
    left_ = std::min(left_, column_);
    const auto is_whole = [&] {
        const std::vector<Shown> shown = layout(width);
        const auto found = std::ranges::find(shown, column_, &Shown::column);
        return found != shown.end() && found->width == width_of(column_, width);
    };
    while (left_ < column_ && !is_whole()) ++left_;
}

// One that cannot be read is not read again for each key.
void Grid::fit(int height) {
    const auto rows = static_cast<std::size_t>(std::max(height - 1, 1));
    if (rows != height_) window_.resize(height_ = rows);
}

void Grid::draw(Screen& screen, int top, const Watch& watch) {
    scroll_to_column(screen.columns());
    const std::vector<Shown> shown = layout(screen.columns());
    for (const auto& [column, at, width] : shown) {
        const ShownColumn& about = source_.columns()[column];
        screen.put(top, at + width, 1, edge(column), Look::head);
        screen.put(top, at, width, fitted(about.name, width, about.is_number()), Look::head);
    }
    for (std::size_t row = 0; row < window_.rows().size(); ++row)
        draw_row(screen, top + 1 + static_cast<int>(row), shown, row, watch);
}

void Grid::draw_row(Screen& screen, int line, const std::vector<Shown>& shown, std::size_t row,
                    const Watch& watch) {
    const std::int64_t number = window_.rows()[row].number;
    const bool is_current = row == window_.current();
    for (const auto& [column, at, width] : shown) {
        const ShownColumn& about = source_.columns()[column];
        const Cell& cell = window_.rows()[row].cells[column];
        const bool is_cell = is_current && column == column_;
        Look look = look_of(cell, about);
        if (is_current && look == Look::plain) look = Look::row;
        if (watch.is_lit(number, column)) look = Look::changed;
        if (is_cell) {
            look = Look::cell;
            cell_ = {line, at, width};
        }
        screen.put(line, at + width, 1, edge(column), Look::null);
        screen.put(line, at, width, fitted(cell ? *cell : "NULL", width, about.is_number()), look);
    }
    if (watch.lock_of(number) != nullptr) screen.put(line, shown.front().width, 1, locked, Look::problem);
}

bool Grid::move(Key typed) {
    const std::size_t last = source_.columns().size() - 1;
    switch (typed) {
        case Key::up:
            window_.up();
            return true;
        case Key::down:
            window_.down();
            return true;
        case Key::page_up:
            window_.page_up();
            return true;
        case Key::page_down:
            window_.page_down();
            return true;
        case Key::top:
            window_.top();
            return true;
        case Key::bottom:
            window_.bottom();
            return true;
        case Key::left:
            column_ -= column_ > 0 ? 1 : 0;
            return true;
        case Key::right:
            column_ += column_ < last ? 1 : 0;
            return true;
        case Key::home:
            column_ = 0;
            left_ = 1;
            return true;
        case Key::end:
            column_ = last;
            return true;
        default:
            return false;
    }
}

}  // namespace zmfb::tool::browse
