#include "tests/support/terminal.h"

#include <algorithm>
#include <charconv>

namespace zmfb::test {
namespace {

constexpr char escape = 0x1B;

std::vector<int> numbers_in(std::string_view parameters) {
    std::vector<int> numbers(1, 0);
    for (const char c : parameters) {
        if (c == ';') {
            numbers.push_back(0);
        } else if (c >= '0' && c <= '9') {
            numbers.back() = numbers.back() * 10 + (c - '0');
        }
    }
    return numbers;
}

// The size of the sequence that `bytes` begins with; 0 when its end has not come yet.
std::size_t sequence_size(std::string_view bytes) {
    if (bytes.size() < 2) return 0;
    if (bytes[1] == '(' || bytes[1] == ')') return bytes.size() < 3 ? 0 : 3;
    if (bytes[1] == ']') {
        const std::size_t end = bytes.find_first_of("\x07\x1B", 2);
        return end == std::string_view::npos ? 0 : end + 1;
    }
    if (bytes[1] != '[') return 2;
    const auto end =
        std::find_if(bytes.begin() + 2, bytes.end(), [](char c) { return c >= '@' && c <= '~'; });
    return end == bytes.end() ? 0 : static_cast<std::size_t>(end - bytes.begin()) + 1;
}

}  // namespace

bool Cell::operator==(const Cell& other) const {
    const bool same_paper = byte == other.byte && background == other.background &&
                            reverse == other.reverse && underline == other.underline;
    if (byte == ' ' && same_paper && !reverse && !underline) return true;
    return same_paper && foreground == other.foreground && bold == other.bold && blink == other.blink;
}

TerminalScreen::TerminalScreen(int rows, int columns)
    : rows_(rows), columns_(columns), bottom_(rows - 1), cells_(place(rows, 0)) {}

void TerminalScreen::feed(std::string_view bytes) {
    pending_ += bytes;
    std::size_t at = 0;
    while (at < pending_.size()) {
        const std::string_view rest = std::string_view(pending_).substr(at);
        if (rest[0] != escape) {
            put(rest[0]);
            ++at;
            continue;
        }
        const std::size_t size = sequence_size(rest);
        if (size == 0) break;
        if (rest[1] == '[') {
            control(rest.substr(2, size - 3), rest[size - 1]);
        } else if (rest[1] == 'M') {
            if (row_ == top_) {
                scroll(top_, -1);
            } else {
                --row_;
            }
        } else if (std::string_view("()=>78]").find(rest[1]) == std::string_view::npos) {
            unknown_.append(rest.substr(1, size - 1)).append(" ");
        }
        at += size;
    }
    pending_.erase(0, at);
}

std::string TerminalScreen::line(int row) const {
    std::string text;
    for (int column = 0; column < columns_; ++column) text += at(row, column).byte;
    return text;
}

std::string TerminalScreen::text() const {
    std::string all;
    std::size_t used = 0;
    for (int row = 0; row < rows_; ++row) {
        std::string text = line(row);
        text.erase(text.find_last_not_of(' ') + 1);
        all += text + '\n';
        if (!text.empty()) used = all.size();
    }
    all.resize(used);
    return all;
}

void TerminalScreen::put(char byte) {
    switch (byte) {
        case '\r':
            column_ = 0;
            return;
        case '\n':
            line_feed();
            return;
        case '\b':
            column_ = std::max(column_ - 1, 0);
            return;
        case '\t':
            column_ = std::min((column_ / 8 + 1) * 8, columns_ - 1);
            return;
        case '\a':
        case '\x0E':
        case '\x0F':
            return;
        default:
            break;
    }
    if (column_ == columns_) {
        column_ = 0;
        line_feed();
    }
    Cell& cell = cells_[place(row_, column_++)];
    cell = pen_;
    cell.byte = byte;
}

void TerminalScreen::line_feed() {
    if (row_ == bottom_) {
        scroll(top_, 1);
    } else if (row_ < rows_ - 1) {
        ++row_;
    }
}

// Moves the rows from `top` to the end of the scrolling region up, or down when `count` is negative.
void TerminalScreen::scroll(int top, int count) {
    const int height = bottom_ - top + 1;
    const int by = std::clamp(count, -height, height);
    const std::vector<Cell> before = cells_;
    for (int row = top; row <= bottom_; ++row) {
        const int from = row + by;
        for (int column = 0; column < columns_; ++column) {
            const bool inside = from >= top && from <= bottom_;
            cells_[place(row, column)] = inside ? before[place(from, column)] : Cell{};
        }
    }
}

void TerminalScreen::erase(int row, int from, int to) {
    Cell blank;
    blank.background = pen_.background;
    std::fill(cells_.begin() + static_cast<std::ptrdiff_t>(place(row, from)),
              cells_.begin() + static_cast<std::ptrdiff_t>(place(row, to)), blank);
}

// Moves the rest of a row right, or left when `count` is negative.
void TerminalScreen::shift(int row, int column, int count) {
    const std::vector<Cell> before = cells_;
    for (int to = column; to < columns_; ++to) {
        const int from = to - count;
        cells_[place(row, to)] = from >= column && from < columns_ ? before[place(row, from)] : Cell{};
    }
}

void TerminalScreen::erase_display(int which) {
    const int first = which == 0 ? row_ + 1 : 0;
    const int behind = which == 1 ? row_ : rows_;
    if (which == 0) erase(row_, column_, columns_);
    if (which == 1) erase(row_, 0, column_ + 1);
    for (int row = first; row < behind; ++row) erase(row, 0, columns_);
}

void TerminalScreen::control(std::string_view parameters, char final) {
    const std::vector<int> numbers = numbers_in(parameters);
    const int first = std::max(numbers[0], 1);
    const int second = numbers.size() > 1 ? std::max(numbers[1], 1) : 1;
    column_ = std::min(column_, columns_ - 1);
    switch (final) {
        case 'H':
            row_ = std::min(first, rows_) - 1;
            column_ = std::min(second, columns_) - 1;
            break;
        case 'A':
            row_ = std::max(row_ - first, 0);
            break;
        case 'B':
            row_ = std::min(row_ + first, rows_ - 1);
            break;
        case 'C':
            column_ = std::min(column_ + first, columns_ - 1);
            break;
        case 'D':
            column_ = std::max(column_ - first, 0);
            break;
        case 'G':
            column_ = std::min(first, columns_) - 1;
            break;
        case 'd':
            row_ = std::min(first, rows_) - 1;
            break;
        case 'J':
            erase_display(numbers[0]);
            break;
        case 'K':
            erase(row_, numbers[0] == 0 ? column_ : 0, numbers[0] == 1 ? column_ + 1 : columns_);
            break;
        case 'X':
            erase(row_, column_, std::min(column_ + first, columns_));
            break;
        case '@':
            shift(row_, column_, first);
            break;
        case 'P':
            shift(row_, column_, -first);
            break;
        case 'L':
            scroll(row_, -first);
            break;
        case 'M':
            scroll(row_, first);
            break;
        case 'b': {
            const char last = column_ > 0 ? cells_[place(row_, column_ - 1)].byte : ' ';
            for (int i = 0; i < first && column_ < columns_; ++i) put(last);
            break;
        }
        case 'r':
            top_ = first - 1;
            bottom_ = numbers.size() > 1 ? second - 1 : rows_ - 1;
            row_ = column_ = 0;
            break;
        case 'm':
            colours(numbers);
            break;
        case 'h':
        case 'l':
        case 't':
        case 'c':
            break;
        default:
            unknown_.append("[").append(parameters).append(1, final).append(" ");
    }
}

void TerminalScreen::colours(const std::vector<int>& numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const int number = numbers[i];
        if (number == 0) pen_ = Cell{};
        if (number == 1) pen_.bold = true;
        if (number == 4) pen_.underline = true;
        if (number == 5) pen_.blink = true;
        if (number == 7) pen_.reverse = true;
        if (number >= 30 && number <= 37) pen_.foreground = number - 30;
        if (number >= 40 && number <= 47) pen_.background = number - 40;
        if (number >= 90 && number <= 97) pen_.foreground = number - 90 + 8;
        if (number >= 100 && number <= 107) pen_.background = number - 100 + 8;
        if (number == 39) pen_.foreground = -1;
        if (number == 49) pen_.background = -1;
        if ((number == 38 || number == 48) && i + 2 < numbers.size()) {
            (number == 38 ? pen_.foreground : pen_.background) = numbers[i + 2];
            i += 2;
        }
    }
}

}  // namespace zmfb::test
