/// A terminal of a test's own: a screen that follows the control sequences a program sends, and programs run
/// on it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::test {

/// One place of a screen. Colours count as on the terminal (1 red, 4 blue, 6 cyan); -1 is the terminal's own.
/// Two blanks are equal when they look alike, whatever colour a letter would have there.
struct Cell {
    char byte = ' ';
    int foreground = -1;
    int background = -1;
    bool bold = false;
    bool underline = false;
    bool blink = false;
    bool reverse = false;
    bool operator==(const Cell& other) const;
};

/// What a terminal shows. Understands what ncurses sends to an xterm, a linux console and a vt100.
class TerminalScreen {
  public:
    TerminalScreen(int rows, int columns);
    /// Takes in the bytes that a program wrote; what belongs to no control sequence is shown.
    void feed(std::string_view bytes);

    [[nodiscard]] const Cell& at(int row, int column) const { return cells_[place(row, column)]; }
    /// The bytes of a row, all of them.
    [[nodiscard]] std::string line(int row) const;
    /// All rows with their trailing blanks cut off, a line end behind each; empty rows at the end left out.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] bool operator==(const TerminalScreen& other) const { return cells_ == other.cells_; }
    /// The control sequences that were not understood.
    [[nodiscard]] const std::string& unknown() const { return unknown_; }

  private:
    [[nodiscard]] std::size_t place(int row, int column) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
               static_cast<std::size_t>(column);
    }
    void put(char byte);
    void line_feed();
    void scroll(int top, int count);
    void control(std::string_view parameters, char final);
    void colours(const std::vector<int>& numbers);
    void erase(int row, int from, int to);
    void shift(int row, int column, int count);
    void erase_display(int which);

    int rows_;
    int columns_;
    int row_ = 0;
    int column_ = 0;
    int top_ = 0;
    int bottom_;
    Cell pen_;
    std::vector<Cell> cells_;
    std::string pending_;
    std::string unknown_;
};

/// What the program on the terminal may ask of the test.
class Stage {
  public:
    explicit Stage(int channel) : channel_(channel) {}
    /// Has what the terminal shows now kept under a name.
    void snapshot(std::string_view name) const { ask('s', name); }
    /// Has keys typed.
    void type(std::string_view keys) const { ask('k', keys); }
    /// Has a line added to the report.
    void report(std::string_view line) const { ask('r', line); }

  private:
    void ask(char what, std::string_view text) const;
    int channel_;
};

struct Performance {
    int status = -1;  ///< of the process, 128 + the signal when one ended it
    std::string bytes;
    /// Whether the terminal echoes at the end, and gives whole lines to who reads from it.
    bool given_back = false;
    std::map<std::string, TerminalScreen, std::less<>> snapshots;
    std::string report;
    [[nodiscard]] const TerminalScreen& snapshot(std::string_view name) const;
};

/// Runs `body` in a child process on a terminal of that size and kind (TERM), as its standard input and
/// output.
Performance perform(int rows, int columns, const std::string& kind,
                    const std::function<void(const Stage&)>& body);

}  // namespace zmfb::test
