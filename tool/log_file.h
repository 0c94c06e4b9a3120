/// The log as its entries.
///
/// An entry is two lines: a tab, the level in brackets, the user and the date; then a blank and the text,
/// which may go on over further lines.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zmfb::tool {

struct LogEntry {
    int level = 0;
    std::string user;
    std::string date;
    std::string text;  ///< the bytes, without the blank before and the line end behind
};

/// Takes entries out of the bytes of a log as they come in.
class LogReader {
  public:
    /// Takes in further bytes; returns the entries that another one follows.
    std::vector<LogEntry> take(std::string_view bytes);
    /// At the end of the file: the last entry, when its text is there. Lines that follow it later are lost.
    std::optional<LogEntry> last();

  private:
    void take_line(std::string_view line, std::vector<LogEntry>& entries);

    std::string pending_;  ///< a line without its end
    std::optional<LogEntry> entry_;
    bool has_text_ = false;
};

/// The tag that a text starts with, without its brackets: "ERROR"; "" when there is none.
std::string_view tag_of(std::string_view text);

/// Which entries are asked for.
struct LogFilter {
    std::optional<int> level;  ///< that level and those below it
    std::string tag;           ///< any without one; with or without brackets, in any case
    [[nodiscard]] bool admits(const LogEntry& entry) const;
};

}  // namespace zmfb::tool
