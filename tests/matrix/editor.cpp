#include "tests/matrix/editor.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace zmfb::test {
namespace {

std::vector<std::string> pieces_of(std::string_view descriptor) {
    std::vector<std::string> pieces;
    for (std::size_t start = 0; start <= descriptor.size();) {
        const std::size_t end = std::min(descriptor.find("::", start), descriptor.size());
        pieces.emplace_back(descriptor.substr(start, end - start));
        start = end + 2;
    }
    return pieces;
}

Field field_of(std::string_view descriptor) {
    const auto pieces = pieces_of(descriptor);
    return {pieces.at(1), pieces.at(2), std::stod(pieces.at(3)), std::stod(pieces.at(4))};
}

}  // namespace

Editor::Editor(std::string_view text) {
    std::istringstream in{std::string(text)};
    blocks_.emplace_back();
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find("Created by ZMRDDFIRE") != line.npos) blocks_.emplace_back();
        const std::size_t sign = line.find(">>"), arrow = line.find("=>");
        if (arrow == line.npos) {
            blocks_.back().head.push_back(line);
            continue;
        }
        blocks_.back().table = line.substr(1, sign - 1);
        std::string left = line.substr(sign + 2, arrow - sign - 2);
        left.resize(left.find_last_not_of(' ') + 1);
        blocks_.back().lines.push_back({left, line.substr(arrow + 3)});
    }
}

Editor::Block& Editor::block(std::string_view table) {
    for (Block& block : blocks_) {
        if (!block.table.empty() && (table.empty() || block.table == table)) return block;
    }
    throw std::logic_error("no such block");
}

Editor::Block& Editor::new_block(std::string_view table) {
    Block& made = blocks_.emplace_back();
    made.head.emplace_back("Created by ZMRDDFIRE");
    made.table = table;
    return made;
}

std::string Editor::text(std::string_view line_end) const {
    std::string all;
    for (const Block& block : blocks_) {
        for (const std::string& line : block.head) all.append(line).append(line_end);
        for (const Line& line : block.lines) {
            all += fmt::format(" {}>>{}   => {}{}", block.table, line.left, line.right, line_end);
        }
    }
    return all;
}

std::size_t Editor::Block::find(std::string_view name) const {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (field(i).name == name) return i;
    }
    throw std::logic_error("no line of that field");
}

Editor::Block& Editor::Block::change(std::string_view name, const Field& wanted) {
    const std::size_t found = find(name);
    lines[found].right = descriptor(found + 1, wanted);
    return *this;
}

Editor::Block& Editor::Block::drop(std::string_view name) {
    lines[find(name)].right = "DROP FIELD";
    return *this;
}

Editor::Block& Editor::Block::add(const Field& wanted) {
    const std::string text = descriptor(lines.size() + 1, wanted);
    lines.push_back({text, text});
    return *this;
}

Editor::Block& Editor::Block::remove(std::string_view name) {
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(find(name)));
    return *this;
}

Editor::Block& Editor::Block::move(std::string_view name, std::size_t position) {
    const std::size_t found = find(name);
    const Line line = lines[found];
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(found));
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(position - 1), line);
    return *this;
}

Editor::Block& Editor::Block::drop_table() {
    lines.insert(lines.begin(), {"DROP TABLE", ""});
    return *this;
}

Field Editor::Block::field(std::size_t i) const { return field_of(lines[i].left); }

std::vector<std::string> Editor::Block::wanted() const {
    std::vector<std::string> fields;
    for (const Line& line : lines) {
        if (line.right != "DROP FIELD") fields.push_back(field_text(test::field(field_of(line.right))));
    }
    return fields;
}

}  // namespace zmfb::test
