/// What a person does to a matrix file: changes on the right-hand side, lines moved, added and taken out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/matrix/values.h"

namespace zmfb::test {

class Editor {
  public:
    /// Takes the text of a matrix file apart.
    explicit Editor(std::string_view text);

    struct Line {
        std::string left;
        std::string right;
    };
    struct Block {
        std::vector<std::string> head;  ///< up to the marker, or lines of no table
        std::string table;
        std::vector<Line> lines;

        /// Puts another field on the right of the line of field `name`.
        Block& change(std::string_view name, const Field& wanted);
        Block& drop(std::string_view name);
        /// A new line behind the others.
        Block& add(const Field& wanted);
        /// Takes the line of a field out.
        Block& remove(std::string_view name);
        /// Moves the line of a field to `position`, counted from 1.
        Block& move(std::string_view name, std::size_t position);
        Block& drop_table();
        /// The field on the left of line `i`, counted from 0.
        [[nodiscard]] Field field(std::size_t i) const;
        /// The fields of the right-hand side, drop marks left out, as "NOME C 40 0".
        [[nodiscard]] std::vector<std::string> wanted() const;

      private:
        std::size_t find(std::string_view name) const;
    };
    /// The block of a table; the first there is when no name is given. Throws when there is none.
    Block& block(std::string_view table = {});
    /// A block of a table that the file has not.
    Block& new_block(std::string_view table);
    std::vector<Block>& blocks() { return blocks_; }

    /// The file, each line with `line_end` behind it.
    [[nodiscard]] std::string text(std::string_view line_end = "\r\n") const;

  private:
    std::vector<Block> blocks_;
};

}  // namespace zmfb::test
