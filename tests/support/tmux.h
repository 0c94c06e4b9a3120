/// A program on the screen of a terminal emulator.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmfb::test {

/// Runs a command in a tmux server of its own, in a window of that size, which is ended with this object.
/// When the command has ended the screen says so: "ended", its status, and how the terminal was left.
class Tmux {
  public:
    /// `command` are words; the environment is that of this process, and these settings.
    Tmux(const std::vector<std::string>& command, int columns, int rows,
         const std::vector<std::string>& environment = {});
    ~Tmux();
    Tmux(const Tmux&) = delete;
    Tmux& operator=(const Tmux&) = delete;

    /// Presses keys by the names that tmux has for them: "Down", "C-End", "F1", "q".
    void press(const std::vector<std::string>& keys) const;
    /// Types a text.
    void type(const std::string& text) const;
    void resize(int columns, int rows) const;
    /// Takes the terminal away from the program.
    void close() const;

    /// What is on the screen, without blanks at the ends of lines. `how` are further options of tmux's.
    [[nodiscard]] std::string screen(const std::vector<std::string>& how = {}) const;
    /// Waits until a text is on the screen; throws what is on it when that does not come within a minute.
    std::string expect(std::string_view text) const;
    /// Waits until that is on the screen and nothing else. Returns "", or what is there after a minute.
    [[nodiscard]] std::string instead_of(const std::string& expected) const;

    /// What is on the screen behind a program that has ended with that status and left the terminal in order.
    static std::string ended(int status);

  private:
    std::string call(std::vector<std::string> words) const;

    std::string socket_;
};

}  // namespace zmfb::test
