/// How far an import or an export is, on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace zmfb::tool {

/// From now on lines of this process are told to `whom` instead, who shows them.
void tell_progress_to(std::function<void(const std::string& line)> whom);

/// One line at the foot of the terminal; nothing where standard output is none. The line is written with the
/// cursor left at its beginning, so that whatever is printed takes its place.
class Progress {
  public:
    /// `doing` is what is done: "checking". A `total` of 0 is not known.
    Progress(std::string doing, std::uint64_t total);
    /// Clears what is left of the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// How many of them are done. Writes the line anew, several times a second at most. Throws Failure when
    /// the tool is to end.
    void at(std::uint64_t done);

  private:
    [[nodiscard]] std::string text(std::uint64_t done) const;

    std::string doing_;
    std::uint64_t total_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point shown_ = start_;
};

}  // namespace zmfb::tool
