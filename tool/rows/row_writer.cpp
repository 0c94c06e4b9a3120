#include "tool/rows/row_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/name.h"

namespace zmfb::tool {

std::optional<Mode> mode_of(std::string_view name) {
    const auto* const found = std::ranges::find(mode_names, name);
    if (found == std::end(mode_names)) return std::nullopt;
    return static_cast<Mode>(found - std::begin(mode_names));
}

void RowWriter::header(const host::Value& columns) {
    for (const host::Value& column : columns.items()) {
        columns_.push_back({Name(column[1].text()).text(), column[2].text().front(), column[5].logical()});
    }
    cells_.resize(columns_.size());
    begun_ = true;
    write_head();
}

bool RowWriter::row(const host::Value& values) {
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        const host::Value& value = values[i + 1];
        if (value.is(host::Kind::nil)) {
            cells_[i].reset();
        } else {
            cells_[i] = columns_[i].is_utf8 ? std::string(value.text()) : to_utf8(value.text());
        }
    }
    ++rows_;
    write_row(cells_);
    return !interrupted();
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
            break;
    }
    return make_table_writer(sink, look);
}

}  // namespace zmfb::tool
