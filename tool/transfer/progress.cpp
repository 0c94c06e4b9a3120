#include "tool/transfer/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "tool/interrupt.h"
#include "tool/rows/shown_text.h"
#include "tool/terminal.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t bar_width = 20;
constexpr auto between_two = std::chrono::milliseconds(100);

std::function<void(const std::string&)> told_to;

}  // namespace

void tell_progress_to(std::function<void(const std::string&)> whom) { told_to = std::move(whom); }

Progress::Progress(std::string doing, std::uint64_t total) : doing_(std::move(doing)), total_(total) {}

Progress::~Progress() {
    if (!output_is_terminal()) return;
    fmt::print("\033[K");
    std::fflush(stdout);
}

std::string Progress::text(std::uint64_t done) const {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
    const double rate = passed.count() > 0 ? static_cast<double>(done) / passed.count() : 0;
    if (total_ == 0) return fmt::format("{:<10} {} records, {:.0f}/s", doing_, done, rate);
    const std::uint64_t at = std::min(done, total_);
    const auto filled = static_cast<std::size_t>(bar_width * at / total_);
    std::string line = fmt::format("{:<10} [{:-<{}}] {} of {} records", doing_, std::string(filled, '#'),
                                   bar_width, at, total_);
    if (rate > 0) {
        line += fmt::format(", {:.0f}/s, {:.0f} s left", rate, static_cast<double>(total_ - at) / rate);
    }
    return line;
}

void Progress::at(std::uint64_t done) {
    require_uninterrupted();
    const auto now = std::chrono::steady_clock::now();
    if (now - shown_ < between_two || (!told_to && !output_is_terminal())) return;
    shown_ = now;
    if (told_to) return told_to(text(done));
    fmt::print("{}\033[K\r", without_controls(text(done)).substr(0, terminal_width() - 1));
    std::fflush(stdout);
}

}  // namespace zmfb::tool
