/// How far an import is, on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tool/session.h"

namespace zmfb::tool {

/// One line at the foot of the terminal; nothing where standard output is none.
///
/// The line is written with the cursor left at its beginning, so that whatever the working process prints
/// takes its place.
class Progress {
  public:
    /// Options for an attachment of its own, which counts the rows that a copy has made so far: generators
    /// are outside transactions. It is made when the copy begins.
    explicit Progress(const Options& options) : options_(options) {}
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Takes in what an import reports.
    void report(std::string_view line);
    /// Writes the line anew.
    void tick();

    /// Clears what is left of the line; for the working process, before it prints.
    static void clear();

  private:
    enum class Phase { none, check, write, copy };

    void begin(Phase phase);
    void look();
    [[nodiscard]] std::string text() const;

    const Options& options_;
    std::optional<Session> session_;
    std::string table_;
    std::string data_file_;
    Phase phase_ = Phase::none;
    std::uint64_t total_ = 0;
    std::uint64_t at_ = 0;
    std::uint64_t record_size_ = 0;
    std::chrono::steady_clock::time_point start_;
};

}  // namespace zmfb::tool
