/// A row of a result as lines.
#pragma once

#include <string>
#include <vector>

#include "tool/rows/row_writer.h"

namespace zmfb::tool {

/// A value a line, the names of the columns before it; the lines of a text stand under one another.
class LineShape {
  public:
    explicit LineShape(bool colours) : colours_(colours) {}
    void begin(const std::vector<ResultColumn>& columns);
    /// The row, behind an empty line unless it is the first.
    [[nodiscard]] std::string row(const std::vector<Cell>& cells);

  private:
    void add_lines(std::string& out, std::string_view text) const;

    bool colours_;
    bool first_ = true;
    std::vector<std::string> heads_;
};

}  // namespace zmfb::tool
