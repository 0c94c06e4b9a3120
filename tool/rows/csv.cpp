#include "tool/rows/row_writer.h"
#include "tool/rows/shown_text.h"

namespace zmfb::tool {
namespace {

void add_field(std::string& line, std::string_view text) {
    if (!text.empty() && text.find_first_of(",\"\r\n") == std::string_view::npos) {
        line += text;
        return;
    }
    line += in_quotes(text);
}

class CsvWriter : public RowWriter {
  public:
    using RowWriter::RowWriter;

  private:
    void write_head() override {
        line_.clear();
        for (const ResultColumn& column : columns()) {
            if (!line_.empty()) line_ += ',';
            add_field(line_, column.name);
        }
        finish();
    }
    void write_row(const std::vector<Cell>& cells) override {
        line_.clear();
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (i > 0) line_ += ',';
            if (cells[i]) add_field(line_, *cells[i]);
        }
        finish();
    }
    void write_tail(bool) override {}

    void finish() {
        line_ += "\r\n";
        put(line_);
    }

    std::string line_;
};

}  // namespace

std::unique_ptr<RowWriter> make_csv_writer(Sink& sink) { return std::make_unique<CsvWriter>(sink); }

}  // namespace zmfb::tool
