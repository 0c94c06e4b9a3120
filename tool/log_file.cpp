#include "tool/log_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace zmfb::tool {
namespace {

constexpr std::size_t date_size = 24;  // "Sat Nov 21 06:45:33 2026"

// Reads the first line of an entry; nothing when the line is none.
std::optional<LogEntry> head_of(std::string_view line) {
    if (!line.starts_with("\t[")) return std::nullopt;
    const std::size_t end = line.find("] ");
    if (end == std::string_view::npos || line.size() < end + 2 + date_size) return std::nullopt;
    LogEntry entry;
    const auto read = std::from_chars(line.data() + 2, line.data() + end, entry.level);
    if (read.ec != std::errc() || read.ptr != line.data() + end) return std::nullopt;
    const std::string_view rest = line.substr(end + 2);
    entry.date = rest.substr(rest.size() - date_size);
    entry.user = rest.substr(0, rest.size() - date_size);
    if (entry.user.ends_with(' ')) entry.user.pop_back();
    return entry;
}

char capital(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

std::vector<LogEntry> LogReader::take(std::string_view bytes) {
    std::vector<LogEntry> entries;
    pending_ += bytes;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = pending_.find('\n', start)) != std::string::npos; start = end + 1) {
        take_line(std::string_view(pending_).substr(start, end - start), entries);
    }
    pending_.erase(0, start);
    return entries;
}

// A line that looks like the first of an entry is one only when a text follows it.
void LogReader::take_line(std::string_view line, std::vector<LogEntry>& entries) {
    if (!head_.empty() && line.starts_with(' ')) {
        begin_entry(line, entries);
    } else {
        if (!head_.empty()) add_to_text(head_);
        head_.clear();
        if (head_of(line)) {
            head_ = line;
        } else if (position_ == 0) {
            texts_.begin_unseen();
        } else {
            add_to_text(line);
        }
    }
    position_ += line.size() + 1;
}

void LogReader::begin_entry(std::string_view line, std::vector<LogEntry>& entries) {
    if (entry_) entries.push_back(std::move(*entry_));
    entry_ = head_of(head_);
    entry_->text = line.substr(1);
    entry_->doubtful = texts_.may_hold(position_ - head_.size() - 1, head_.size());
    texts_.go_on(head_);
    texts_.go_on(line);
    texts_.begin(position_ + 1, entry_->text);
    head_.clear();
}

void LogReader::add_to_text(std::string_view line) {
    texts_.go_on(line);
    if (!entry_) return;
    entry_->text += '\n';
    entry_->text += line;
}

std::optional<LogEntry> LogReader::last() {
    if (!pending_.empty()) return std::nullopt;
    return std::exchange(entry_, std::nullopt);
}

std::vector<LogEntry> LogReader::take_unfinished() {
    return pending_.empty() ? std::vector<LogEntry>{} : take("\n");
}

std::string_view tag_of(std::string_view text) {
    if (!text.starts_with('[')) return {};
    const std::size_t end = text.find(']');
    return end == std::string_view::npos ? std::string_view{} : text.substr(1, end - 1);
}

bool LogFilter::admits(const LogEntry& entry) const {
    if (level && entry.level > *level) return false;
    if (tag.empty()) return true;
    std::string_view wanted = tag;
    if (wanted.starts_with('[') && wanted.ends_with(']')) wanted = wanted.substr(1, wanted.size() - 2);
    return std::ranges::equal(wanted, tag_of(entry.text), {}, capital, capital);
}

}  // namespace zmfb::tool
