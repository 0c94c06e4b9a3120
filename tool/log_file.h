/// The log as its entries.
///
/// An entry is two lines: a tab, the level in brackets, the user and the date; then a blank and the text,
/// which may go on over further lines. So what a text has in it may look like further entries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/log_texts.h"

namespace zmfb::tool {

struct LogEntry {
    int level = 0;
    std::string user;
    std::string date;
    std::string text;       ///< the bytes, without the blank before and the line end behind
    bool doubtful = false;  ///< whether it may be a piece of the text of an entry before it
};

/// Takes entries out of the bytes of a log as they come in.
class LogReader {
  public:
    /// Takes in further bytes; returns the entries that another one follows.
    std::vector<LogEntry> take(std::string_view bytes);
    /// At the end of the file: the last entry, when its text is there. Lines that follow it later are lost.
    std::optional<LogEntry> last();
    /// At the end of the file, where nobody waits for more: takes in the last line though it has no end, and
    /// returns what take() does.
    std::vector<LogEntry> take_unfinished();

  private:
    void take_line(std::string_view line, std::vector<LogEntry>& entries);
    void begin_entry(std::string_view line, std::vector<LogEntry>& entries);
    void add_to_text(std::string_view line);

    std::string pending_;         ///< a line without its end
    std::uint64_t position_ = 0;  ///< of the next line in the file
    std::optional<LogEntry> entry_;
    std::string head_;  ///< the line before, when it may be the first of an entry
    LogTexts texts_;
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
