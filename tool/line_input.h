/// Lines of text from standard input or a file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace zmfb::tool {

/// Hands out one line after another. Waiting for more ends when the tool is to end.
class LineInput {
  public:
    /// No line may be longer, and no statement: it is what the engine takes.
    static constexpr std::size_t longest = std::size_t{10} * 1024 * 1024;

    /// That of standard input, which all share: what was read ahead for one is there for the next.
    static LineInput& standard();
    /// Opens a file. Throws Failure.
    explicit LineInput(const std::string& path);
    ~LineInput();
    LineInput(const LineInput&) = delete;
    LineInput& operator=(const LineInput&) = delete;

    /// The next line without its end, the first one without a byte order mark; nothing at the end. Throws
    /// Failure when it cannot be read or is too long.
    std::optional<std::string> next();
    /// Whether it is a file, whose end is reached without waiting for anybody.
    [[nodiscard]] bool is_file() const;
    /// From now on no byte is read ahead: what is left is there for other processes.
    void read_only_lines() { block_ = 1; }

  private:
    LineInput(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}
    std::optional<std::string> next_of_any();
    bool read_more();

    int descriptor_;
    std::string name_;
    std::size_t block_ = 65536;
    std::string read_;  // but not handed out yet, from taken_ on
    std::size_t taken_ = 0;
    bool is_begun_ = false;
};

}  // namespace zmfb::tool
