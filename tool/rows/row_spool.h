/// Rows set aside.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tool/rows/row_writer.h"

namespace zmfb::tool {

/// Keeps rows in a temporary file, which nobody else sees and which goes with it.
class RowSpool {
  public:
    /// All functions throw Failure with `words`, the reason and `hint` when there is no room for the file.
    explicit RowSpool(std::string words, std::string hint = "");

    /// Adds a row behind the others. Returns its place.
    std::uint64_t add(const std::vector<Cell>& row);
    /// From where values are read next: the place of a row, 0 for the first one.
    void go_to(std::uint64_t place);
    /// The next value; at most so many bytes of it, the rest is passed over.
    Cell read(std::size_t most = std::string::npos);
    /// How many rows there are.
    [[nodiscard]] std::size_t rows() const { return rows_; }

  private:
    [[noreturn]] void fail() const;
    void seek(std::uint64_t place);
    void write(const void* bytes, std::size_t size);

    std::string words_, hint_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::uint64_t end_ = 0;
    std::size_t rows_ = 0;
    bool is_read_ = false;  // and stands elsewhere than at its end
};

}  // namespace zmfb::tool
