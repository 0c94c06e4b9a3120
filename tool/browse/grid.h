/// Rows and columns on the screen, with the first column always at the left.
#pragma once

#include "tool/browse/screen.h"
#include "tool/browse/watch.h"
#include "tool/browse/window.h"

namespace zmfb::tool::browse {

class Grid {
  public:
    explicit Grid(Source& source) : source_(source), window_(source) {}

    [[nodiscard]] Window& window() { return window_; }
    [[nodiscard]] const Window& window() const { return window_; }
    /// The current one.
    [[nodiscard]] std::size_t column() const { return column_; }

    /// Reads what is missing for that many lines, that of the heads among them.
    void fit(int height);
    /// Draws heads and rows into the lines from `top` on, and what others do to them.
    void draw(Screen& screen, int top, const Watch& watch);
    /// Moves when it is a key for that, and says whether it is one.
    bool move(Key typed);
    /// Where the current cell was drawn last: its line, its first column, its width.
    struct Place {
        int row = 0, column = 0, width = 0;
    };
    [[nodiscard]] const Place& current_cell() const { return cell_; }

  private:
    struct Shown {
        std::size_t column;
        int at, width;
    };
    [[nodiscard]] std::vector<Shown> layout(int width) const;
    [[nodiscard]] int width_of(std::size_t column, int room) const;
    void scroll_to_column(int width);
    void draw_row(Screen& screen, int line, const std::vector<Shown>& shown, std::size_t row,
                  const Watch& watch);

    Source& source_;
    Window window_;
    std::size_t column_ = 0;
    std::size_t left_ = 1;  // the first one behind the frozen one
    std::size_t height_ = 0;
    Place cell_;
};

}  // namespace zmfb::tool::browse
