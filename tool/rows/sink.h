/// Where the rows of a query go.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tool/output_file.h"
#include "tool/pager.h"

namespace zmfb::tool {

/// Standard output, or a file that is begun when the first text comes and has its name when all is there.
/// Its functions throw Failure when it cannot be written.
class Sink {
  public:
    /// Standard output for an empty path; on a terminal, with `pages`, through a pager when the text does not
    /// fit on it.
    Sink(std::string path, bool pages);

    void write(std::string_view text);
    /// Everything is out when it returns, and the pager left; but what is not `complete` replaces no file.
    void close(bool complete);
    [[nodiscard]] bool is_file() const { return !path_.empty(); }
    /// Whether a pager has shown it: who leaves that ends what runs, and need not be told.
    [[nodiscard]] bool was_paged() const { return was_paged_; }

  private:
    [[nodiscard]] bool still_fits(std::string_view text);

    std::string path_;
    std::optional<OutputFile> file_;
    std::string pager_command_;
    std::optional<std::string> held_;  // back, as long as it may fit on the terminal
    std::size_t lines_ = 0;            // of the terminal that it takes
    std::size_t in_line_ = 0;          // the characters in the last of them
    std::unique_ptr<Pager> pager_;
    bool was_paged_ = false;
};

}  // namespace zmfb::tool
