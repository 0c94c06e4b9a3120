#include <algorithm>

#include "tool/rows/row_writer.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

class LineWriter : public RowWriter {
  public:
    LineWriter(Sink& sink, const Look& look) : RowWriter(sink), look_(look) {}

  private:
    void write_head() override {
        for (const ResultColumn& column : columns()) {
            widest_ = std::max(widest_, count_characters(column.name));
        }
    }
    void write_row(const std::vector<Cell>& cells) override {
        std::string out = rows() == 1 ? "" : "\n";
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string& name = columns()[i].name;
            out.append(widest_ - count_characters(name), ' ').append(name).append(" = ");
            if (cells[i]) {
                add_lines(out, *cells[i]);
            } else {
                out += shown_null(look_.colours);
            }
            out += '\n';
        }
        put(out);
    }
    void write_tail(bool complete) override {
        if (complete) put((rows() == 0 ? "" : "\n") + count_line());
    }

    // The lines of a text stand under one another.
    void add_lines(std::string& out, std::string_view text) const {
        constexpr std::size_t sign = 3;
        for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
            out.append(without_controls(text.substr(0, end))).append("\n").append(widest_ + sign, ' ');
            text.remove_prefix(end + 1);
        }
        out += without_controls(text);
    }

    Look look_;
    std::size_t widest_ = 0;
};

}  // namespace

std::unique_ptr<RowWriter> make_line_writer(Sink& sink, const Look& look) {
    return std::make_unique<LineWriter>(sink, look);
}

}  // namespace zmfb::tool
