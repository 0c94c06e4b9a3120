#include "tool/browse/window.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zmfb::tool::browse {

void Window::resize(std::size_t height) {
    height_ = std::max<std::size_t>(height, 1);
    source_.rows_at_a_time(height_);
    if (rows_.empty()) return top();
    if (rows_.size() > height_) {
        const std::size_t above = current_ < height_ ? 0 : current_ - height_ + 1;
        rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(above));
        rows_.resize(height_);
        current_ -= above;
        if (first_place_) *first_place_ += static_cast<std::int64_t>(above);
    }
    add_behind(height_ - rows_.size());
    add_before(height_ - rows_.size());
}

// The current row stays the current one.
std::size_t Window::add_behind(std::size_t count) {
    if (count == 0) return 0;
    ShownRows more = source_.behind(rows_, count);
    rows_.insert(rows_.end(), std::move_iterator(more.begin()), std::move_iterator(more.end()));
    return more.size();
}

std::size_t Window::add_before(std::size_t count) {
    if (count == 0) return 0;
    ShownRows more = source_.before(rows_, count);
    current_ += more.size();
    if (first_place_) *first_place_ -= static_cast<std::int64_t>(more.size());
    if (more.size() < count) first_place_ = 1;
    rows_.insert(rows_.begin(), std::move_iterator(more.begin()), std::move_iterator(more.end()));
    return more.size();
}

void Window::top() {
    rows_ = source_.first(height_);
    current_ = 0;
    first_place_ = 1;
}

void Window::bottom() {
    rows_ = source_.last(height_);
    current_ = rows_.empty() ? 0 : rows_.size() - 1;
    first_place_.reset();
    if (rows_.size() < height_) first_place_ = 1;
    if (total_) first_place_ = *total_ - static_cast<std::int64_t>(rows_.size()) + 1;
}

void Window::up() {
    if (empty()) return top();
    if (current_ > 0) {
        --current_;
    } else if (add_before(1) > 0) {
        current_ = 0;
        if (rows_.size() > height_) rows_.pop_back();
    }
}

void Window::down() {
    if (empty()) return top();
    if (current_ + 1 < rows_.size()) {
        ++current_;
    } else if (add_behind(1) > 0) {
        ++current_;
        if (rows_.size() <= height_) return;
        rows_.erase(rows_.begin());
        --current_;
        if (first_place_) ++*first_place_;
    }
}

void Window::page_up() {
    if (empty()) return top();
    const std::size_t at = current_;
    const std::size_t added = add_before(height_);
    rows_.resize(std::min(rows_.size(), height_));
    current_ = added < height_ ? 0 : std::min(at, rows_.size() - 1);
}

void Window::page_down() {
    if (empty()) return top();
    const std::size_t added = add_behind(height_);
    const std::size_t over = rows_.size() - std::min(rows_.size(), height_);
    rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(over));
    if (first_place_) *first_place_ += static_cast<std::int64_t>(over);
    current_ = added < height_ ? rows_.size() - 1 : std::min(current_, rows_.size() - 1);
}

bool Window::go(std::int64_t number) {
    std::optional<ShownRow> row = source_.row(number);
    if (!row || !source_.leaves_in(number)) return false;
    const std::size_t above = std::min(current_, height_ - 1);
    rows_.clear();
    rows_.push_back(std::move(*row));
    current_ = 0;
    first_place_.reset();
    add_before(above);
    add_behind(height_ - rows_.size());
    add_before(height_ - rows_.size());
    return true;
}

void Window::reload() {
    if (empty()) return top();
    const ShownRows before = rows_;
    const std::size_t at = current_;
    const auto first_place = first_place_;
    std::vector<std::size_t> nearest;  // the row itself, those below it, those above it
    for (std::size_t i = at; i < before.size(); ++i) nearest.push_back(i);
    for (std::size_t i = at; i-- > 0;) nearest.push_back(i);
    for (const std::size_t i : nearest) {
        if (!go(before[i].number)) continue;
        if (first_place && !first_place_)
            first_place_ = std::max<std::int64_t>(
                1, *first_place + static_cast<std::int64_t>(i) - static_cast<std::int64_t>(current_));
        return;
    }
    top();
}

void Window::refresh() {
    if (empty()) return top();
    const bool is_at_top = first_place_ == 1;  // where new rows may have come before it
    ShownRows now = is_at_top ? source_.first(height_) : source_.again(rows_.front().number, height_);
    const auto here = std::ranges::find(now, number(), &ShownRow::number);
    if (here == now.end()) return reload();
    current_ = static_cast<std::size_t>(here - now.begin());
    rows_ = std::move(now);
    if (!is_at_top) add_before(height_ - rows_.size());
}

std::optional<std::int64_t> Window::place() const {
    if (empty() || !first_place_) return std::nullopt;
    return *first_place_ + static_cast<std::int64_t>(current_);
}

void Window::count() {
    total_ = source_.count();
    if (!empty() && !first_place_) first_place_ = source_.place(rows_.front().number);
    counted_ = true;
}

void Window::forget_count() {
    total_.reset();
    counted_ = false;
    first_place_.reset();
}

}  // namespace zmfb::tool::browse
