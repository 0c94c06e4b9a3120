#include "rdd/block.h"

#include <stdexcept>

namespace zmfb::rdd {

void Block::clear() {
    cells_.clear();
    present_.clear();
    texts_.clear();
}

std::size_t Block::add_row() {
    const std::size_t row = rows();
    cells_.resize(cells_.size() + columns_);
    present_.resize(cells_.size());
    return row;
}

Block Block::only(std::size_t row) const {
    Block block(kinds_);
    block.add_row();
    for (std::size_t column = 0; column < columns_; ++column) {
        if (is_null(row, column)) continue;
        if (kinds_[column] == CellKind::text || kinds_[column] == CellKind::bytes) {
            block.put(0, column, text(row, column));
        } else {
            block.put_cell(0, column, cells_[at(row, column)]);
        }
    }
    return block;
}

void Block::put(std::size_t row, std::size_t column, std::string_view text) {
    if (texts_.size() + text.size() > longest) throw std::length_error("the texts of a record are too long");
    put_cell(row, column, static_cast<std::uint64_t>(texts_.size()) << length_bits | text.size());
    texts_ += text;
}

}  // namespace zmfb::rdd
