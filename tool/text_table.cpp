#include "tool/text_table.h"

#include <algorithm>

#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

std::size_t characters(const std::string& utf8) {
    const auto starts = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::ranges::count_if(utf8, starts));
}

}  // namespace

void TextTable::add(std::vector<std::string> cells) {
    for (std::string& cell : cells) cell = without_controls(cell);
    rows_.push_back(std::move(cells));
}

std::string TextTable::text() const {
    std::vector<std::size_t> widths;
    for (const Column& column : columns_) widths.push_back(characters(column.head));
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], characters(row[i]));
    }
    std::string out;
    const auto add_line = [&](const auto& cell) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (i > 0) out += "  ";
            const std::string text = cell(i);
            const std::string fill(widths[i] - characters(text), ' ');
            out += columns_[i].right_aligned ? fill + text : text + fill;
        }
        out.erase(out.find_last_not_of(' ') + 1);
        out += '\n';
    };
    add_line([&](std::size_t i) { return columns_[i].head; });
    add_line([&](std::size_t i) { return std::string(widths[i], '-'); });
    for (const auto& row : rows_) add_line([&](std::size_t i) { return row[i]; });
    return out;
}

}  // namespace zmfb::tool
