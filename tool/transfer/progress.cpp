#include "tool/transfer/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>

#include "tool/terminal.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t bar_width = 20;

std::uint64_t number(std::string_view text) {
    std::uint64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

std::string_view behind(std::string_view line, std::string_view head) {
    return line.starts_with(head) ? line.substr(head.size()) : std::string_view();
}

}  // namespace

Progress::~Progress() { clear(); }

void Progress::clear() {
    if (!output_is_terminal()) return;
    fmt::print("\033[K");
    std::fflush(stdout);
}

void Progress::begin(Phase phase) {
    phase_ = phase;
    at_ = 0;
    start_ = std::chrono::steady_clock::now();
}

void Progress::report(std::string_view line) {
    if (const auto value = behind(line, "table "); !value.empty()) table_ = value;
    if (const auto value = behind(line, "data "); !value.empty()) data_file_ = value;
    if (const auto value = behind(line, "at "); !value.empty()) at_ = number(value);
    if (const auto value = behind(line, "size "); !value.empty()) record_size_ = number(value);
    const std::string_view phase = behind(line, "phase ");
    if (phase.empty()) return;
    total_ = number(phase.substr(std::min(phase.size(), phase.find(' ') + 1)));
    begin(phase.starts_with("check") ? Phase::check : phase.starts_with("copy") ? Phase::write : Phase::none);
}

// How far the phases are that report nothing themselves: by the size of the file that is written, then by the
// generator that numbers the rows.
void Progress::look() {
    if (phase_ == Phase::write) {
        std::error_code none_yet;
        const std::uintmax_t size = std::filesystem::file_size(data_file_, none_yet);
        at_ = none_yet || record_size_ == 0 ? 0 : size / record_size_;
        if (at_ >= total_) begin(Phase::copy);
    } else if (phase_ == Phase::copy) {
        if (!session_) {
            session_.emplace(options_);
            session_->show_raised(Raised::silent);
        }
        const Value rows = session_->connection().call("gettablereccount", table_);
        at_ = rows.is(host::Kind::numeric)
                  ? static_cast<std::uint64_t>(std::max<std::int64_t>(0, rows.integer()))
                  : 0;
    }
}

std::string Progress::text() const {
    const std::string_view doing = phase_ == Phase::check   ? "checking"
                                   : phase_ == Phase::write ? "converting"
                                                            : "copying";
    const std::uint64_t at = std::min(at_, total_);
    const std::size_t filled = total_ == 0 ? 0 : static_cast<std::size_t>(bar_width * at / total_);
    std::string line = fmt::format("{:<10} [{:-<{}}] {} of {} records", doing, std::string(filled, '#'),
                                   bar_width, at, total_);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
    const double rate = passed.count() > 0 ? static_cast<double>(at) / passed.count() : 0;
    if (rate > 0) {
        line += fmt::format(", {:.0f}/s, {:.0f} s left", rate, static_cast<double>(total_ - at) / rate);
    }
    return line;
}

void Progress::tick() {
    if (phase_ == Phase::none || total_ == 0 || !output_is_terminal()) return;
    try {
        look();
    } catch (const Failure&) {
        phase_ = Phase::none;  // an import goes on without being watched
        return;
    } catch (const Cancelled&) {
        return;
    }
    fmt::print("{}\033[K\r", text().substr(0, terminal_width() - 1));
    std::fflush(stdout);
}

}  // namespace zmfb::tool
