#include "tests/matrix/random_edits.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace zmfb::test {
namespace {

using Lines = std::vector<std::string>;

bool is_limbo(const std::string& field) { return field.starts_with("RDDLMB_"); }

Lines without_limbo(Lines fields) {
    std::erase_if(fields, is_limbo);
    return fields;
}

// The fields of a table, less those that the edits left without a line; each of these must have its twin.
Lines settled_fields(const RandomEdits& edits, const std::string& table, const Lines& fields) {
    Lines settled;
    for (const std::string& field : fields) {
        const std::string name = field.substr(0, field.find(' '));
        if (!edits.left_out().contains(table + "." + name)) {
            settled.push_back(field);
        } else if (!is_limbo(field)) {
            EXPECT_NE(std::ranges::find(fields, "RDDLMB_" + field), fields.end()) << field;
        }
    }
    return without_limbo(settled);
}

}  // namespace

Field RandomEdits::fresh_field() {
    switch (number(0, 3)) {
        case 0:
            return {fresh_name(), "C", static_cast<double>(number(6, 60)), 0};
        case 1:
            return {fresh_name(), "N", static_cast<double>(number(6, 15)), static_cast<double>(number(0, 3))};
        case 2:
            return {fresh_name(), "D", 8, 0};
        default:
            return {fresh_name(), "L", 1, 0};
    }
}

Value RandomEdits::structure() {
    Value made = Value::array_of_size(0);
    for (int i = number(1, 8); i > 0; --i) made.push(field(fresh_field()));
    return made;
}

std::string RandomEdits::literal(const Field& field) {
    if (field.type == "C") return fmt::format("'{}'", number(0, 999999));
    if (field.type == "N")
        return fmt::format("{}.{}", number(-99, 99), field.decimals > 0 ? number(0, 9) : 0);
    if (field.type == "D")
        return fmt::format("'20{:02}-{:02}-{:02}'", number(0, 29), number(1, 12), number(1, 28));
    return chance(50) ? "'T'" : "'F'";
}

// Wider, or of another type that every literal can become.
Field RandomEdits::changed(const Field& field) {
    Field wanted = field;
    const bool retype = chance(40);
    if (field.type == "C") {
        wanted.length += number(1, 40);
        if (retype && field.length <= 60) wanted = {field.name, "N", 18, static_cast<double>(number(0, 3))};
    } else if (field.type == "N") {
        wanted.length = std::min(18.0, field.length + number(1, 3));
        if (retype || wanted.length == field.length)
            wanted = {field.name, "C", static_cast<double>(number(61, 90)), 0};
    } else {
        wanted = {field.name, "C", static_cast<double>(number(61, 90)), 0};
    }
    return wanted;
}

void RandomEdits::edit_lines(Editor::Block& block) {
    const std::vector<Editor::Line> lines = block.lines;
    std::size_t staying = lines.size();
    for (std::size_t i = 0, at = 0; i < lines.size(); ++i, ++at) {
        const Field field = block.field(at);
        const int what = field.name.starts_with("RDDLMB_") ? 100 : number(1, 100);
        if (what <= 12 && staying > 1) {
            block.drop(field.name);
            --staying;
        } else if (what <= 20 && staying > 1) {
            block.remove(field.name);
            left_out_.insert(block.table + "." + field.name);
            --staying;
            --at;
        } else if (what <= 50) {
            Field wanted = chance(70) ? changed(field) : field;
            if (wanted.type == field.type && (wanted.length == field.length || chance(30)))
                wanted.name = fresh_name();
            block.change(field.name, wanted);
            kept_.push_back({block.table, field.type, field.name, wanted.name});
        } else {
            kept_.push_back({block.table, field.type, field.name, field.name});
        }
    }
}

void RandomEdits::edit(Editor::Block& block) {
    if (chance(8)) {
        block.drop_table();
        dropped_tables_.insert(block.table);
        return;
    }
    edit_lines(block);
    if (chance(40)) {
        for (int i = number(1, 2); i > 0; --i) block.add(fresh_field());
    }
    if (chance(40)) {
        for (int i = number(1, 4); i > 0; --i) {
            const int last = static_cast<int>(block.lines.size());
            block.move(block.field(static_cast<std::size_t>(number(0, last - 1))).name,
                       static_cast<std::size_t>(number(1, last)));
        }
    }
}

void RandomEdits::edit(Editor& editor) {
    for (Editor::Block& block : editor.blocks()) {
        if (!block.lines.empty()) edit(block);
    }
    if (chance(20)) {
        Editor::Block& block = editor.new_block("NEW" + fresh_name());
        for (int i = number(1, 5); i > 0; --i) block.add(fresh_field());
    }
}

void expect_wanted(const RandomEdits& edits, const Editor::Block& block, const Lines& fields) {
    if (block.table.empty() || edits.dropped_tables().contains(block.table)) {
        EXPECT_EQ(fields, Lines{});
    } else {
        EXPECT_EQ(settled_fields(edits, block.table, fields), without_limbo(block.wanted()));
    }
}

}  // namespace zmfb::test
