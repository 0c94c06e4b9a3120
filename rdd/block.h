/// Rows in memory, decoded once: numbers exact, texts one behind the other.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rdd/columns.h"

namespace zmfb::rdd {

class Block {
  public:
    /// For columns of these kinds, one at least.
    explicit Block(std::vector<CellKind> kinds) : kinds_(std::move(kinds)), columns_(kinds_.size()) {}

    [[nodiscard]] const std::vector<CellKind>& kinds() const { return kinds_; }
    [[nodiscard]] std::size_t rows() const { return cells_.size() / columns_; }
    [[nodiscard]] std::size_t bytes() const { return cells_.size() * sizeof(std::uint64_t) + texts_.size(); }
    void clear();
    /// Adds one of nothing but NULL; its number.
    std::size_t add_row();
    /// A row of it, as a block.
    [[nodiscard]] Block only(std::size_t row) const;

    [[nodiscard]] bool is_null(std::size_t row, std::size_t column) const {
        return !present_[at(row, column)];
    }
    [[nodiscard]] std::int64_t whole(std::size_t row, std::size_t column) const {
        return std::bit_cast<std::int64_t>(cells_[at(row, column)]);
    }
    [[nodiscard]] double real(std::size_t row, std::size_t column) const {
        return std::bit_cast<double>(cells_[at(row, column)]);
    }
    /// Lives until a text is put.
    [[nodiscard]] std::string_view text(std::size_t row, std::size_t column) const {
        const std::uint64_t cell = cells_[at(row, column)];
        return std::string_view(texts_).substr(static_cast<std::size_t>(cell >> length_bits),
                                               static_cast<std::size_t>(cell & longest));
    }

    void put_null(std::size_t row, std::size_t column) { present_[at(row, column)] = false; }
    void put(std::size_t row, std::size_t column, std::int64_t whole) {
        put_cell(row, column, std::bit_cast<std::uint64_t>(whole));
    }
    void put(std::size_t row, std::size_t column, double real) {
        put_cell(row, column, std::bit_cast<std::uint64_t>(real));
    }
    void put(std::size_t row, std::size_t column, std::string_view text);

  private:
    // Of a text: where it begins, and how long it is.
    static constexpr unsigned length_bits = 32;
    static constexpr std::uint64_t longest = 0xFFFFFFFF;

    [[nodiscard]] std::size_t at(std::size_t row, std::size_t column) const {
        return row * columns_ + column;
    }
    void put_cell(std::size_t row, std::size_t column, std::uint64_t cell) {
        cells_[at(row, column)] = cell;
        present_[at(row, column)] = true;
    }

    std::vector<CellKind> kinds_;
    std::size_t columns_;
    std::vector<std::uint64_t> cells_;
    std::vector<bool> present_;
    std::string texts_;
};

}  // namespace zmfb::rdd
