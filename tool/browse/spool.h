/// Rows that are kept in a temporary file, which nobody else sees and which goes with the process.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tool/rows/row_writer.h"

namespace zmfb::tool::browse {

class Spool {
  public:
    /// The functions throw Failure when there is no room for the file.
    Spool();

    /// How many rows there are; memory is taken for 8 bytes of each.
    [[nodiscard]] std::size_t rows() const { return begins_.size(); }
    void add(const std::vector<Cell>& row);
    /// A row, counted from 0, with at most so many bytes of each value.
    std::vector<Cell> row(std::size_t number, std::size_t columns, std::size_t most);
    /// One value of it.
    Cell value(std::size_t number, std::size_t column);

  private:
    Cell read(std::size_t most);
    void seek(std::uint64_t place);
    [[noreturn]] static void fail();

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_;
    std::vector<std::uint64_t> begins_;
    std::uint64_t end_ = 0;
};

}  // namespace zmfb::tool::browse
