#include <algorithm>
#include <utility>

#include "tool/rows/line_shape.h"
#include "tool/rows/row_writer.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

class LineWriter : public RowWriter {
  public:
    LineWriter(Sink& sink, const Look& look) : RowWriter(sink), shape_(look.colours) {}

  private:
    void write_head() override { shape_.begin(columns()); }
    void write_row(const std::vector<Cell>& cells) override { put(shape_.row(for_people(columns(), cells))); }
    void write_tail(bool complete) override {
        if (complete) put((rows() == 0 ? "" : "\n") + count_line());
    }

    LineShape shape_;
};

}  // namespace

void LineShape::begin(const std::vector<ResultColumn>& columns) {
    std::size_t widest = 0;
    for (const ResultColumn& column : columns) widest = std::max(widest, count_characters(column.name));
    for (const ResultColumn& column : columns)
        heads_.push_back(std::string(widest - count_characters(column.name), ' ') + column.name + " = ");
}

std::string LineShape::row(const std::vector<Cell>& cells) {
    std::string out = std::exchange(first_, false) ? "" : "\n";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        out += heads_[i];
        if (cells[i]) {
            add_lines(out, *cells[i]);
        } else {
            out += shown_null(colours_);
        }
        out += '\n';
    }
    return out;
}

void LineShape::add_lines(std::string& out, std::string_view text) const {
    const std::string under(count_characters(heads_.front()), ' ');
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        out.append(without_controls(text.substr(0, end))).append("\n").append(under);
        text.remove_prefix(end + 1);
    }
    out += without_controls(text);
}

std::unique_ptr<RowWriter> make_line_writer(Sink& sink, const Look& look) {
    return std::make_unique<LineWriter>(sink, look);
}

}  // namespace zmfb::tool
