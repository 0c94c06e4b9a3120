#include "tool/json.h"

#include <fmt/format.h>

#include <set>

#include "tool/rows/row_writer.h"

namespace zmfb::tool {
namespace {

std::string json_text(const std::string& utf8) { return json_line(utf8); }

// What a FLOAT may be and a number of JSON may not: infinite, or no number.
bool is_finite(std::string_view number) {
    const char digit = number[number.front() == '-' ? 1 : 0];
    return digit >= '0' && digit <= '9';
}

class JsonWriter : public RowWriter {
  public:
    using RowWriter::RowWriter;

  private:
    void write_head() override {
        std::set<std::string> taken;
        for (const ResultColumn& column : columns()) {
            std::string name = column.name;
            for (int i = 2; !taken.insert(name).second; ++i) name = fmt::format("{}_{}", column.name, i);
            members_.push_back(json_text(name) + ": ");
        }
        put("[");
    }
    void write_row(const std::vector<Cell>& cells) override {
        line_ = rows() == 1 ? "\n  {" : ",\n  {";
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (i > 0) line_ += ", ";
            line_ += members_[i];
            add_value(columns()[i], cells[i]);
        }
        line_ += '}';
        put(line_);
    }
    void write_tail(bool) override { put(rows() == 0 ? "]\n" : "\n]\n"); }

    void add_value(const ResultColumn& column, const Cell& cell) {
        const bool bare = column.type == SqlType::boolean || (column.is_number() && cell && is_finite(*cell));
        line_ += !cell ? "null" : bare ? *cell : json_text(*cell);
    }

    std::vector<std::string> members_;
    std::string line_;
};

}  // namespace

std::unique_ptr<RowWriter> make_json_writer(Sink& sink) { return std::make_unique<JsonWriter>(sink); }

}  // namespace zmfb::tool
