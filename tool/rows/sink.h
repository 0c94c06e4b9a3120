/// Where the rows of a query go.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tool/output_file.h"

namespace zmfb::tool {

/// Standard output, or a file that is begun when the first text comes and has its name when all is there.
/// Its functions throw Failure when it cannot be written.
class Sink {
  public:
    /// Standard output for an empty path.
    explicit Sink(std::string path) : path_(std::move(path)) {}

    void write(std::string_view text);
    /// Everything is out when it returns; but what is not `complete` replaces no file.
    void close(bool complete);
    [[nodiscard]] bool is_file() const { return !path_.empty(); }

  private:
    std::string path_;
    std::optional<OutputFile> file_;
};

}  // namespace zmfb::tool
