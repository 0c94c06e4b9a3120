/// The rows of a source that are on the screen, and the one among them that is the current one.
#pragma once

#include <cstdint>
#include <optional>

#include "tool/browse/source.h"

namespace zmfb::tool::browse {

class Window {
  public:
    explicit Window(Source& source) : source_(source) {}

    /// How many rows there is room for, one at least.
    void resize(std::size_t height);
    [[nodiscard]] const ShownRows& rows() const { return rows_; }
    /// Which of the rows; 0 when there are none.
    [[nodiscard]] std::size_t current() const { return current_; }
    [[nodiscard]] bool empty() const { return rows_.empty(); }
    /// The number of the current row; 0 when there is none.
    [[nodiscard]] std::int64_t number() const { return empty() ? 0 : rows_[current_].number; }

    /// @{
    /// Moves. The last four stay in the column of rows where they can.
    void top();
    void bottom();
    void up();
    void down();
    void page_up();
    void page_down();
    /// @}
    /// To a row by its number; .F. when there is none, or the filter leaves it out, and nothing is changed.
    bool go(std::int64_t number);
    /// Reads the rows anew, around the current one, or around what is nearest to it when it has gone.
    void reload();
    /// The same, quickly: reads from the first row on, as long as the current one is among them.
    void refresh();
    [[nodiscard]] std::size_t height() const { return height_; }

    /// @{
    /// The place of the current row in the order and how many there are, as far as they are known: counting
    /// them takes the longer the more there are.
    [[nodiscard]] std::optional<std::int64_t> place() const;
    [[nodiscard]] std::optional<std::int64_t> total() const {
        return total_ ? total_ : source_.known_count();
    }
    [[nodiscard]] bool is_counted() const { return counted_ && (empty() || first_place_); }
    void count();
    void forget_count();
    /// @}

  private:
    std::size_t add_behind(std::size_t count);
    std::size_t add_before(std::size_t count);

    Source& source_;
    std::size_t height_ = 1;
    ShownRows rows_;
    std::size_t current_ = 0;
    std::optional<std::int64_t> first_place_;  // of the first row
    std::optional<std::int64_t> total_;
    bool counted_ = false;
};

}  // namespace zmfb::tool::browse
