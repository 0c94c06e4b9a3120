/// The rows of a query on their way out, in one of four shapes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/rows/sink.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

enum class Mode { table, line, csv, json, automatic };

/// The names of the modes, in their order.
inline constexpr std::string_view mode_names[] = {"table", "line", "csv", "json", "auto"};
std::optional<Mode> mode_of(std::string_view name);

/// What the shapes for people need to know.
struct Look {
    std::size_t width = 0;  ///< lines are cut to it; 0 for never
    bool colours = false;
    std::string_view see_all;  ///< how to see what was cut
};

/// A value in UTF-8; nothing for NULL.
using Cell = std::optional<std::string>;

struct ResultColumn {
    std::string name;
    SqlType type = SqlType::other;
    [[nodiscard]] bool is_number() const {
        return type == SqlType::integer || type == SqlType::decimal || type == SqlType::real;
    }
};

/// The cells of a row for people: a TIMESTAMP without a time of day, as the driver keeps dates, as a date.
std::vector<Cell> for_people(const std::vector<ResultColumn>& columns, std::vector<Cell> cells);

/// Writes the rows of a query as they come; a query that finds none has its head written too. Ctrl-C ends
/// it where somebody watches for that.
class RowWriter {
  public:
    explicit RowWriter(Sink& sink) : sink_(sink) {}
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    virtual ~RowWriter() = default;

    /// Reads the rows and writes them. Throws SqlError.
    void write(Rows rows);
    /// Writes what comes behind the rows, if there was a head. `complete` is .F. when the query failed.
    void end(bool complete);

  protected:
    virtual void write_head() = 0;
    virtual void write_row(const std::vector<Cell>& cells) = 0;
    virtual void write_tail(bool complete) = 0;

    [[nodiscard]] const std::vector<ResultColumn>& columns() const { return columns_; }
    /// The rows so far, the one being written included.
    [[nodiscard]] std::size_t rows() const { return rows_; }
    /// "(2 rows)", or that it was interrupted; `note` goes into the brackets.
    [[nodiscard]] std::string count_line(std::string_view note = {}) const;
    void put(std::string_view text) { sink_.write(text); }

  private:
    Sink& sink_;
    std::vector<ResultColumn> columns_;
    std::vector<Cell> cells_;
    std::size_t rows_ = 0;
    bool begun_ = false;
};

/// Writes to `sink`, which must outlive the writer:
///
/// - table: columns under their names, numbers to the right. Where lines are not cut, all widths are known
///   before the first row is written: from a certain number on rows are set aside in a file. Where they are
///   cut, the head is written again when a number is wider than all before.
/// - auto: the same, but lines when rows are wider than the terminal.
/// - line: one value a line, under one another, rows parted by an empty line.
/// - csv: RFC 4180, with a head; NULL is nothing, the empty text "".
/// - json: an array of objects, one a line; numbers have their digits as they are. A column whose name was
///   there before has _2 and so on added.
std::unique_ptr<RowWriter> make_row_writer(Mode mode, Sink& sink, const Look& look);

std::unique_ptr<RowWriter> make_csv_writer(Sink& sink);
std::unique_ptr<RowWriter> make_json_writer(Sink& sink);
std::unique_ptr<RowWriter> make_line_writer(Sink& sink, const Look& look);
std::unique_ptr<RowWriter> make_table_writer(Sink& sink, const Look& look, bool lines_when_too_wide);

}  // namespace zmfb::tool
