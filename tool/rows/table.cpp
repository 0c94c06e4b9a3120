#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "tool/rows/row_writer.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t gap = 2;
// Texts may be cut to this many characters before whole columns are left out.
constexpr std::size_t narrowest_cut = 12;
// The widths are measured on that many rows; from then on rows are written as they come.
constexpr std::size_t measured_rows = 1000;

class TableWriter : public RowWriter {
  public:
    TableWriter(Sink& sink, const Look& look) : RowWriter(sink), look_(look) {}

  private:
    void write_head() override {
        for (const ResultColumn& column : columns()) widths_.push_back(count_characters(column.name));
    }
    void write_row(const std::vector<Cell>& cells) override {
        if (measured_) return write_line(shown(cells));
        waiting_.push_back(shown(cells));
        if (waiting_.size() == measured_rows) write_waiting();
    }
    void write_tail(bool complete) override {
        if (!measured_) write_waiting();
        if (complete) put(count_line(cut_note()));
    }

    // Widths grow for later rows too, where nothing has to be cut.
    std::vector<Cell> shown(const std::vector<Cell>& cells) {
        std::vector<Cell> out(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (cells[i]) out[i] = without_controls(*cells[i]);
            const std::size_t width = count_characters(cells[i] ? *out[i] : shown_null(false));
            if (!measured_ || look_.width == 0) widths_[i] = std::max(widths_[i], width);
        }
        return out;
    }

    void write_waiting() {
        measured_ = true;
        visible_ = widths_.size();
        if (look_.width != 0 && total_width() > look_.width) fit();
        std::vector<Cell> names, rules;
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            names.emplace_back(without_controls(columns()[i].name));
            rules.emplace_back(std::string(widths_[i], '-'));
        }
        write_line(names);
        write_line(rules);
        for (const auto& row : waiting_) write_line(row);
        waiting_.clear();
    }

    [[nodiscard]] std::size_t total_width() const {
        const std::size_t gaps = visible_ == 0 ? 0 : (visible_ - 1) * gap;
        return std::accumulate(widths_.begin(), widths_.begin() + static_cast<std::ptrdiff_t>(visible_),
                               gaps);
    }

    // Narrows the widest texts first, all to one width; then leaves columns out at the right. A number is
    // whole or not there at all.
    void fit() {
        const std::vector<std::size_t> natural = widths_;
        for (std::size_t cap = look_.width; cap >= narrowest_cut; --cap) {
            for (std::size_t i = 0; i < widths_.size(); ++i) {
                if (!columns()[i].is_number()) widths_[i] = std::min(natural[i], cap);
            }
            if (total_width() <= look_.width) break;
        }
        while (visible_ > 1 && total_width() > look_.width) --visible_;
    }

    void write_line(const std::vector<Cell>& cells) {
        std::string line;
        for (std::size_t i = 0; i < visible_; ++i) {
            if (i > 0) line.append(gap, ' ');
            add_cell(line, i, cells[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        put(line + '\n');
    }

    void add_cell(std::string& line, std::size_t column, const Cell& cell) {
        const bool number = columns()[column].is_number();
        std::string text(cell ? *cell : shown_null(look_.colours));
        std::size_t width = count_characters(cell ? *cell : shown_null(false));
        if (cell && !number && width > widths_[column]) {
            text = cut_to(text, widths_[column]);
            width = widths_[column];
            ++cut_values_;
        }
        const std::string fill(widths_[column] - std::min(width, widths_[column]), ' ');
        line += number ? fill + text : text + fill;
    }

    [[nodiscard]] std::string cut_note() const {
        const std::size_t left_out = widths_.size() - visible_;
        if (left_out == 0 && cut_values_ == 0) return {};
        const std::string columns_note =
            left_out == 0 ? "" : fmt::format(", {} of {} columns left out", left_out, widths_.size());
        return fmt::format("cut to the width of the terminal{}: {} shows all", columns_note, look_.see_all);
    }

    Look look_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<Cell>> waiting_;
    std::size_t visible_ = 0;
    std::size_t cut_values_ = 0;
    bool measured_ = false;
};

}  // namespace

std::unique_ptr<RowWriter> make_table_writer(Sink& sink, const Look& look) {
    return std::make_unique<TableWriter>(sink, look);
}

}  // namespace zmfb::tool
