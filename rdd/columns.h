/// The columns of a table that an area reads and writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zmfbconn/transaction.h"

namespace zmfb::rdd {

/// What a cell of a block holds.
enum class CellKind : std::uint8_t { none, whole, decimal, real, boolean, text, bytes, day, time, moment };

/// That of the values of a column; none when they are not read here.
CellKind cell_kind(const Column& column);

/// A name in SQL, as it is.
std::string quoted(std::string_view name);

class Columns {
  public:
    /// Asks for those of a table. Throws AreaError when it is not one of the driver's layout.
    Columns(Transaction& work, std::string table);

    [[nodiscard]] const std::string& table() const { return table_; }
    /// Without the columns of the driver.
    [[nodiscard]] const std::vector<Column>& fields() const { return fields_; }
    [[nodiscard]] CellKind kind(std::size_t field) const { return kinds_[field]; }
    /// In any case of letters. Throws AreaError when there is none.
    [[nodiscard]] std::size_t find(std::string_view name) const;
    /// All fields for a select, each behind a comma.
    [[nodiscard]] const std::string& list() const { return list_; }

  private:
    std::string table_;
    std::vector<Column> fields_;
    std::vector<CellKind> kinds_;
    std::string list_;
};

}  // namespace zmfb::rdd
