/// Where the client puts a fetched row: the descriptor area of the columns and the bytes behind it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "sql/client.h"

namespace zmfb::sql {

/// A descriptor area for some number of columns.
class DescriptorArea {
  public:
    explicit DescriptorArea(short columns);

    XSQLDA* get() { return area_.get(); }
    /// The columns that were described.
    [[nodiscard]] std::span<XSQLVAR> columns() const;
    /// Whether the statement has more columns than the area has room for.
    [[nodiscard]] bool too_small() const { return area_->sqld > area_->sqln; }

  private:
    struct Free {
        void operator()(XSQLDA* area) const { ::operator delete(area); }
    };
    std::unique_ptr<XSQLDA, Free> area_;
};

/// A column's type without the flag that it may be NULL.
inline int type_of(const XSQLVAR& column) { return column.sqltype & ~1; }
/// The declared length in bytes; 0 for a negative one.
inline std::size_t length_of(const XSQLVAR& column) {
    return static_cast<std::size_t>(std::max<short>(column.sqllen, 0));
}
/// Whether the row that was fetched last has NULL in a column.
inline bool is_null(const XSQLVAR& column) { return (column.sqltype & 1) != 0 && *column.sqlind < 0; }
/// The names as described: of the field, "" for an expression, and of the column of the result.
std::string_view field_name(const XSQLVAR& column);
std::string_view alias_name(const XSQLVAR& column);

/// The T whose bytes begin at `data`, which need not be aligned.
template <class T>
T read_as(const char* data) {
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

/// The bytes of one row. Every column has its data and then a NULL indicator of 16 bits, each at an even
/// offset; a VARCHAR is its length in 16 bits, its characters and one byte more. As large as the row needs.
class RowBuffer {
  public:
    /// Lays the columns out and points them at their places.
    explicit RowBuffer(std::span<XSQLVAR> columns);

  private:
    std::vector<char> bytes_;
};

}  // namespace zmfb::sql
