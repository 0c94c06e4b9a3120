#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <optional>

#include "tool/rows/line_shape.h"
#include "tool/rows/row_spool.h"
#include "tool/rows/row_writer.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t gap = 2;
// Texts may be cut to this many characters before whole columns are left out.
constexpr std::size_t narrowest_cut = 12;
// The widths are measured on that many rows before the first is written on a terminal, and that many are kept
// in memory elsewhere.
constexpr std::size_t measured_rows = 1000;

class TableWriter : public RowWriter {
  public:
    TableWriter(Sink& sink, const Look& look, bool lines_when_too_wide)
        : RowWriter(sink), look_(look), lines_when_too_wide_(lines_when_too_wide), lines_(look.colours) {}

  private:
    void write_head() override {
        for (const ResultColumn& column : columns()) natural_.push_back(count_characters(column.name));
    }
    void write_row(const std::vector<Cell>& row) override {
        std::vector<Cell> cells = for_people(columns(), row);
        if (laid_out_) return write_late(cells);
        measure(cells);
        waiting_.push_back(std::move(cells));
        if (waiting_.size() < measured_rows) return;
        if (look_.width != 0) return begin();
        if (!aside_)
            aside_.emplace("cannot set rows aside in a temporary file",
                           "--mode csv and --mode json need none");
        for (const auto& one : waiting_) aside_->add(one);
        waiting_.clear();
    }
    void write_tail(bool complete) override {
        if (!laid_out_) begin();
        if (complete) put((as_lines_ && rows() > 0 ? "\n" : "") + count_line(cut_note()));
    }

    void measure(const std::vector<Cell>& cells) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            natural_[i] = std::max(natural_[i], width_of(cells[i]));
    }

    [[nodiscard]] static std::size_t width_of(const Cell& cell) {
        return count_characters(cell ? without_controls(*cell) : shown_null(false));
    }

    // Writes what waits, and the head before it.
    void begin() {
        laid_out_ = true;
        lay_out();
        as_lines_ =
            lines_when_too_wide_ && look_.width != 0 && total_of(natural_, natural_.size()) > look_.width;
        if (as_lines_) {
            lines_.begin(columns());
        } else {
            write_names();
        }
        if (aside_) write_aside();
        for (const auto& cells : waiting_) write_one(cells);
        waiting_.clear();
    }

    void write_aside() {
        std::vector<Cell> cells(columns().size());
        aside_->go_to(0);
        for (std::size_t row = 0; row < aside_->rows(); ++row) {
            for (Cell& cell : cells) cell = aside_->read();
            write_one(cells);
        }
    }

    // A row behind those that were measured: a number, or a time, that is wider than all before has the
    // columns laid out anew.
    void write_late(const std::vector<Cell>& cells) {
        bool wider = false;
        for (std::size_t i = 0; i < visible_ && !as_lines_; ++i) {
            const bool is_text = is_cut(i) && columns()[i].type != SqlType::timestamp;
            const std::size_t width = width_of(cells[i]);
            if ((is_text && cells[i]) || width <= natural_[i]) continue;
            natural_[i] = width;
            wider = true;
        }
        if (wider) {
            lay_out();
            put("\n");
            write_names();
        }
        write_one(cells);
    }

    void write_names() {
        std::vector<Cell> names, rules;
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            names.emplace_back(without_controls(columns()[i].name));
            rules.emplace_back(std::string(widths_[i], '-'));
        }
        write_line(names);
        write_line(rules);
    }

    void write_one(const std::vector<Cell>& cells) {
        if (as_lines_) return put(lines_.row(cells));
        std::vector<Cell> shown(cells.size());
        for (std::size_t i = 0; i < visible_; ++i) {
            if (cells[i]) shown[i] = without_controls(*cells[i]);
        }
        write_line(shown);
    }

    [[nodiscard]] static std::size_t total_of(const std::vector<std::size_t>& widths, std::size_t count) {
        const std::size_t gaps = count == 0 ? 0 : (count - 1) * gap;
        return std::accumulate(widths.begin(), widths.begin() + static_cast<std::ptrdiff_t>(count), gaps);
    }
    [[nodiscard]] bool fits() const { return look_.width == 0 || total_of(widths_, visible_) <= look_.width; }
    // Texts are cut where lines are; a number is whole or not there at all.
    [[nodiscard]] bool is_cut(std::size_t column) const { return !columns()[column].is_number(); }

    // Narrows the widest texts first, all to one width; then leaves columns out at the right.
    void lay_out() {
        widths_ = natural_;
        visible_ = widths_.size();
        for (std::size_t cap = look_.width; cap >= narrowest_cut && !fits(); --cap) {
            for (std::size_t i = 0; i < widths_.size(); ++i) {
                if (is_cut(i)) widths_[i] = std::min(natural_[i], cap);
            }
        }
        while (visible_ > 1 && !fits()) --visible_;
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
        std::string text(cell ? *cell : shown_null(look_.colours));
        std::size_t width = count_characters(cell ? *cell : shown_null(false));
        if (cell && is_cut(column) && width > widths_[column]) {
            text = cut_to(text, widths_[column]);
            width = widths_[column];
            ++cut_values_;
        }
        const std::string fill(widths_[column] - std::min(width, widths_[column]), ' ');
        line += columns()[column].is_number() ? fill + text : text + fill;
    }

    [[nodiscard]] std::string cut_note() const {
        if (as_lines_) return {};
        const std::size_t left_out = widths_.size() - visible_;
        if (left_out == 0 && cut_values_ == 0) return {};
        const std::string columns_note =
            left_out == 0 ? "" : fmt::format(", {} of {} columns left out", left_out, widths_.size());
        return fmt::format("cut to the width of the terminal{}: {} shows all", columns_note, look_.see_all);
    }

    Look look_;
    bool lines_when_too_wide_;
    LineShape lines_;
    std::vector<std::size_t> natural_;  // the widths that show everything
    std::vector<std::size_t> widths_;
    std::optional<RowSpool> aside_;
    std::vector<std::vector<Cell>> waiting_;
    std::size_t visible_ = 0;
    std::size_t cut_values_ = 0;
    bool laid_out_ = false;
    bool as_lines_ = false;
};

}  // namespace

std::unique_ptr<RowWriter> make_table_writer(Sink& sink, const Look& look, bool lines_when_too_wide) {
    return std::make_unique<TableWriter>(sink, look, lines_when_too_wide);
}

}  // namespace zmfb::tool
