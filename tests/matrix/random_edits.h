/// Random structures, and random edits of a matrix that a database can follow without losing a value.
#pragma once

#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/matrix/editor.h"
#include "tests/matrix/values.h"

namespace zmfb::test {

class RandomEdits {
  public:
    /// Names of new fields and tables count on from `names`.
    explicit RandomEdits(unsigned seed, int names = 0) : random_(seed), names_(names) {}

    /// Between `least` and `most`.
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(random_); }
    bool chance(int percent) { return number(1, 100) <= percent; }

    Value structure();
    /// A value that fits a field and survives every change that edit() makes to it, as an SQL literal.
    std::string literal(const Field& field);
    /// Changes the blocks of a file: fields resized, retyped, renamed, dropped, added, moved and left out,
    /// tables dropped and added.
    void edit(Editor& editor);

    /// What edit() did to one field that stays.
    struct Kept {
        std::string table;
        std::string type;  ///< its type before
        std::string before;
        std::string after;
    };
    [[nodiscard]] const std::vector<Kept>& kept() const { return kept_; }
    /// The tables that edit() dropped, and the fields ("TABLE.FIELD") whose lines it took out.
    [[nodiscard]] const std::set<std::string>& dropped_tables() const { return dropped_tables_; }
    [[nodiscard]] const std::set<std::string>& left_out() const { return left_out_; }

  private:
    Field fresh_field();
    std::string fresh_name() { return "F" + std::to_string(++names_); }
    Field changed(const Field& field);
    void edit(Editor::Block& block);
    void edit_lines(Editor::Block& block);

    std::mt19937 random_;
    int names_;
    std::vector<Kept> kept_;
    std::set<std::string> dropped_tables_;
    std::set<std::string> left_out_;
};

/// Expects the fields of a table, as "NOME C 40 0", to be those of the right-hand side of its block after
/// `edits`. A field left without a line may stand anywhere, if its limbo twin is there too; limbo fields
/// themselves too.
void expect_wanted(const RandomEdits& edits, const Editor::Block& block,
                   const std::vector<std::string>& fields);

}  // namespace zmfb::test
