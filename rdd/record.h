/// One record: where its fields lie, and which were assigned.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "host/value.h"
#include "rdd/block.h"
#include "rdd/columns.h"

namespace zmfb::rdd {

/// A row of a block that ends in the fields of a table.
class Record {
  public:
    Record(std::shared_ptr<const Columns> columns, Block block, std::size_t row = 0)
        : columns_(std::move(columns)),
          block_(std::move(block)),
          row_(row),
          first_(block_.kinds().size() - columns_->fields().size()),
          assigned_(columns_->fields().size()) {}

    [[nodiscard]] const Columns& columns() const { return *columns_; }
    [[nodiscard]] const Column& column(std::size_t field) const { return columns_->fields()[field]; }
    [[nodiscard]] CellKind kind(std::size_t field) const { return columns_->kind(field); }
    /// Itself alone, with nothing assigned.
    [[nodiscard]] Record only() const { return {columns_, block_.only(row_)}; }

    [[nodiscard]] const Block& block() const { return block_; }
    [[nodiscard]] std::size_t row() const { return row_; }
    /// To another row of it.
    void stand_on(std::size_t row) { row_ = row; }
    /// To a row of another one.
    void take(Block&& block, std::size_t row) {
        block_ = std::move(block);
        row_ = row;
        first_ = block_.kinds().size() - columns_->fields().size();
    }

    [[nodiscard]] bool is_null(std::size_t field) const { return block_.is_null(row_, first_ + field); }
    [[nodiscard]] std::int64_t whole(std::size_t field) const { return block_.whole(row_, first_ + field); }
    [[nodiscard]] double real(std::size_t field) const { return block_.real(row_, first_ + field); }
    [[nodiscard]] std::string_view text(std::size_t field) const { return block_.text(row_, first_ + field); }

    /// NULL.
    void assign_null(std::size_t field) {
        block_.put_null(row_, first_ + field);
        assigned_[field] = true;
    }
    template <class Stored>
    void assign(std::size_t field, Stored value) {
        block_.put(row_, first_ + field, value);
        assigned_[field] = true;
    }
    [[nodiscard]] const std::vector<bool>& assigned() const { return assigned_; }
    [[nodiscard]] bool is_assigned() const { return std::ranges::find(assigned_, true) != assigned_.end(); }
    void forget_assigned() { assigned_.assign(assigned_.size(), false); }

  private:
    std::shared_ptr<const Columns> columns_;
    Block block_;
    std::size_t row_;
    std::size_t first_;  // column of the first field
    std::vector<bool> assigned_;
};

/// The bytes of a text.
inline std::span<const std::byte> bytes_of(std::string_view text) { return std::as_bytes(std::span(text)); }
/// Throws AreaError when a column is not read as that.
void check_kind(const Column& column, typed::Kind kind);
/// A field as a value for a "?"; of a text a view into the block.
Parameter parameter_of(const Record& record, std::size_t field);
/// A value of the runtime likewise; the empty date is NULL. None for NIL, an array, an object and a block.
std::optional<Parameter> parameter_of(const host::Value& value);

}  // namespace zmfb::rdd
