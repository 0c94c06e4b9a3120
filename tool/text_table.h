/// Rows under column heads, for a terminal.
#pragma once

#include <string>
#include <vector>

namespace zmfb::tool {

/// A table of UTF-8 texts. Widths count characters, not bytes.
class TextTable {
  public:
    struct Column {
        std::string head;
        bool right_aligned = false;
    };

    explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

    /// A row with one cell per column. Control characters are shown as \n, \t, \r or \xHH.
    void add(std::vector<std::string> cells);
    /// The heads, a rule, and the rows, each line ended; without blanks at the end of a line.
    [[nodiscard]] std::string text() const;

  private:
    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace zmfb::tool
