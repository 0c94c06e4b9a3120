/// A value that is being typed for a column, checked as it is typed.
#pragma once

#include "tool/browse/cell_rule.h"
#include "tool/rows/row_writer.h"

namespace zmfb::tool::browse {

class CellInput {
  public:
    /// Begins with a value as it is shown, the cursor behind it.
    CellInput(CellRule rule, const Cell& value);

    /// UTF-8; "" for NULL.
    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] bool is_null() const { return is_null_; }
    /// What stands before the cursor.
    [[nodiscard]] std::string_view before() const { return std::string_view(text_).substr(0, cursor_); }
    [[nodiscard]] bool is_changed() const { return is_changed_; }
    /// Why the last key was not taken; "" when it was.
    [[nodiscard]] const std::string& refusal() const { return refusal_; }

    /// @{
    /// What keys do.
    void insert(char32_t character);
    void backspace();
    void remove();
    void left();
    void right();
    void home();
    void end();
    void make_null();
    /// @}

    /// The value. Throws Failure when it is none yet.
    [[nodiscard]] CellValue value() const;

  private:
    void take(std::string text, std::size_t cursor);
    [[nodiscard]] std::size_t next() const;
    [[nodiscard]] std::size_t previous() const;

    CellRule rule_;
    std::string text_;
    std::size_t cursor_ = 0;  // in bytes
    bool is_null_ = false;
    bool is_changed_ = false;
    std::string refusal_;
};

}  // namespace zmfb::tool::browse
