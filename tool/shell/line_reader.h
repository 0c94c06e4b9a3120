/// Lines typed at a terminal: editing, history, completion.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

/// The candidates for completing the word that begins at `start` of `line`.
using Candidates = std::function<std::vector<std::string>(std::string_view line, std::size_t start)>;

/// One at a time. The history is kept in $XDG_STATE_HOME/zmfbconn/history (~/.local/state by default),
/// readable for its owner only; without a home there is none.
class LineReader {
  public:
    explicit LineReader(Candidates candidates);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// The next line, without its end. Nothing at the end of the input, and when Ctrl-C was typed, which
    /// interrupted() tells.
    std::optional<std::string> read(const std::string& prompt);
    [[nodiscard]] bool interrupted() const { return interrupted_; }
    /// Puts an input into the history; one that may hold a password is left out.
    void remember(const std::string& input);

  private:
    std::string history_file_;
    bool interrupted_ = false;
};

}  // namespace zmfb::tool
