/// A record as a form: a line for each field.
#pragma once

#include "tool/browse/editor.h"

namespace zmfb::tool::browse {

/// The record is locked when the first field is edited; all that was typed is written as one statement.
class Form {
  public:
    /// Of a record by its number; 0 for a new one.
    Form(Editor& editor, std::int64_t number);
    /// Until it is left.
    void run();
    /// The number; of a new one 0 until it is written.
    [[nodiscard]] std::int64_t number() const { return number_; }

  private:
    void draw();
    [[nodiscard]] Grid::Place place() const;
    void read();
    void take(Key typed);
    void move(Key typed);
    void edit();
    void write();
    bool leave();

    Editor& editor_;
    Screen& screen_;
    std::int64_t number_;
    bool is_new_;
    std::vector<Cell> shown_;
    std::size_t field_ = 0, top_ = 0;
    std::optional<Held> held_;
    NewValues typed_;
    bool done_ = false;
};

}  // namespace zmfb::tool::browse
