/// The terminal as a whole screen: the one place that knows the library for that.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>

namespace zmfb::tool::browse {

/// What was typed: a character by its number in Unicode, or one of these.
enum class Key : std::uint32_t {
    none = 0,  ///< nothing within the time
    tab = '\t',
    enter = '\n',
    escape = 27,
    backspace = 127,
    up = 0x110000,  ///< from here on no characters
    down,
    left,
    right,
    page_up,
    page_down,
    home,
    end,
    top,     ///< Ctrl-Home, Ctrl-PgUp
    bottom,  ///< Ctrl-End, Ctrl-PgDn
    insert,
    remove,  ///< Del
    f1,
    f2,
    f3,
    f4,
    f5,
    f6,
    f7,
    f8,
    f9,
    f10,
    resized,  ///< the screen has another size now, and is to be drawn anew
    other,    ///< a key without a meaning here
};

constexpr Key key(char32_t character) { return static_cast<Key>(character); }
/// Whether it is a character that can stand in a text.
constexpr bool is_character(Key typed) {
    return typed >= key(U' ') && typed != Key::backspace && typed < Key::up;
}

/// How a text looks. Without colours all of them can be told from one another as well, but for `memo`.
enum class Look {
    plain,
    bar,      ///< the first and the last lines
    head,     ///< of a column
    row,      ///< the current one
    cell,     ///< the current one
    null,     ///< in the place of a value
    memo,     ///< a text of which there may be more
    changed,  ///< a cell that is another than a moment ago
    problem,  ///< words on what went wrong
};

/// While it lives, the terminal is a screen; afterwards it is what it was. There is one at a time.
class Screen {
  public:
    /// The smallest one that anything is drawn on.
    static constexpr int least_rows = 15, least_columns = 60;

    /// Throws Failure (usage) when standard input or output is no terminal.
    static void require_terminal();
    /// The same for one of a kind that is not known.
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    [[nodiscard]] int rows() const;
    [[nodiscard]] int columns() const;
    /// Whether it is large enough; says so on it otherwise, in place of all that was put there.
    bool is_large_enough();

    /// Nothing is on it any more.
    void clear();
    /// Puts a text (UTF-8) into `width` cells, cut, or with blanks behind it. Control characters are shown as
    /// the tool shows them everywhere.
    void put(int row, int column, int width, std::string_view text, Look look = Look::plain);
    /// Shows the cursor at a place until the next clear().
    void cursor_at(int row, int column);
    /// Lets what was put be seen.
    void show();
    /// Waits for a key. Throws Failure when the terminal has gone or the tool is to end.
    Key read(std::chrono::milliseconds wait);
    /// Gives the terminal back for what writes to it line by line, and takes it again when somebody has
    /// pressed Enter.
    void without(const std::function<void()>& work);

  private:
    bool wait_for_input(std::chrono::milliseconds wait) const;
};

}  // namespace zmfb::tool::browse
