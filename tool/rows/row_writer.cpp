#include "tool/rows/row_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/interrupt.h"
#include "tool/name.h"

namespace zmfb::tool {

std::optional<Mode> mode_of(std::string_view name) {
    const auto* const found = std::ranges::find(mode_names, name);
    if (found == std::end(mode_names)) return std::nullopt;
    return static_cast<Mode>(found - std::begin(mode_names));
}

std::vector<Cell> for_people(const std::vector<ResultColumn>& columns, std::vector<Cell> cells) {
    constexpr std::string_view midnight = " 00:00:00.0000";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (columns[i].type == SqlType::timestamp && cells[i] && cells[i]->ends_with(midnight))
            cells[i]->resize(cells[i]->size() - midnight.size());
    }
    return cells;
}

void RowWriter::write(Rows rows) {
    for (const Column& column : rows.columns()) columns_.push_back({Name(column.name).text(), column.type});
    cells_.resize(columns_.size());
    begun_ = true;
    write_head();
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < cells_.size(); ++i) cells_[i] = row[i].text();
        ++rows_;
        write_row(cells_);
        if (interrupted()) break;
    }
}

void RowWriter::end(bool complete) {
    if (begun_) write_tail(complete);
    sink_.close(complete);
}

std::string RowWriter::count_line(std::string_view note) const {
    return fmt::format("({} row{}{}{}{})\n", rows_, rows_ == 1 ? "" : "s",
                       interrupted() ? ", interrupted" : "", note.empty() ? "" : "; ", note);
}

std::unique_ptr<RowWriter> make_row_writer(Mode mode, Sink& sink, const Look& look) {
    switch (mode) {
        case Mode::csv:
            return make_csv_writer(sink);
        case Mode::json:
            return make_json_writer(sink);
        case Mode::line:
            return make_line_writer(sink, look);
        case Mode::table:
        case Mode::automatic:
            break;
    }
    return make_table_writer(sink, look, mode == Mode::automatic);
}

}  // namespace zmfb::tool
