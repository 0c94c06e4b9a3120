/// Where the rows of a query go.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace zmfb::tool {

/// Standard output, or a file that is made when the first text comes: one that is there already is left
/// alone until there is something to write. Its functions throw Failure when it cannot be written.
class Sink {
  public:
    /// Standard output for an empty path.
    explicit Sink(std::string path) : path_(std::move(path)) {}
    ~Sink();
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    void write(std::string_view text);
    /// Everything is out when it returns.
    void close();
    [[nodiscard]] bool is_file() const { return !path_.empty(); }

  private:
    [[noreturn]] void fail() const;

    std::string path_;
    std::FILE* file_ = nullptr;
};

}  // namespace zmfb::tool
