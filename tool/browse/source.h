/// What a browser shows rows of.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tool/name.h"
#include "tool/rows/row_writer.h"
#include "zmfbconn/area.h"
#include "zmfbconn/method_types.h"

namespace zmfb::tool::browse {

struct ShownColumn {
    std::string name;
    SqlType type = SqlType::other;
    std::string type_name;  ///< for people
    int width = 1;          ///< in cells of the screen
    /// Whether values stand at the right.
    [[nodiscard]] bool is_number() const {
        return type == SqlType::integer || type == SqlType::decimal || type == SqlType::real;
    }
    /// Whether its values may be longer than any column.
    [[nodiscard]] bool is_memo() const { return type == SqlType::text_blob || type == SqlType::blob; }
};

/// What the driver knows a column of a table as; nullptr when it does not.
const FieldDescriptor* field_of(const Structure& structure, const Column& column);

/// A column as wide as its type needs, its name, and no wider than one can look over. `field` is what the
/// driver knows it as, where it knows more than the type, else nullptr.
ShownColumn shown_column(const Column& column, const FieldDescriptor* field = nullptr);

/// A value as a cell shows it: parts of a second, and the time of a day, where there are any.
Cell shortened(Cell value, SqlType type);

/// @{
/// How many characters a text or a number of the column's type has at most, sign and point among them.
int length_of_text(const Column& column);
int length_of_number(const Column& column);
/// @}

/// How many bytes of a value a cell shows at most.
inline constexpr std::size_t most_shown = 200;

struct ShownRow {
    /// Of a table the record number, else the place of the row, counted from 1.
    std::int64_t number = 0;
    /// Of long values the beginning.
    std::vector<Cell> cells;
};

using ShownRows = std::vector<ShownRow>;

/// Rows in an order, of which some are read at a time. All functions that read throw SqlError, those of areas
/// AreaError, too.
class Source {
  public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source() = default;

    [[nodiscard]] virtual const std::vector<ShownColumn>& columns() const = 0;
    /// How many rows are wanted at a time from now on.
    virtual void rows_at_a_time(std::size_t) {}

    /// @{
    /// Up to `count` rows, in their order: the first, the last, those that follow what is known, those before
    /// it. Rows that are known and have gone since are passed over.
    virtual ShownRows first(std::size_t count) = 0;
    virtual ShownRows last(std::size_t count) = 0;
    virtual ShownRows behind(std::span<const ShownRow> known, std::size_t count) = 0;
    virtual ShownRows before(std::span<const ShownRow> known, std::size_t count) = 0;
    /// @}
    /// Up to so many rows from a known one on, as they are now, or from the next one when it has gone and
    /// that can be told: what is looked at again and again of rows that can be changed.
    virtual ShownRows again(std::int64_t, std::size_t) { return {}; }
    /// Whether the filter leaves in a row that is there.
    virtual bool leaves_in(std::int64_t) { return true; }
    /// A row as it is now, whether or not the filter leaves it in.
    virtual std::optional<ShownRow> row(std::int64_t number) = 0;
    /// A value to its end.
    virtual Cell whole(std::int64_t number, std::size_t column) = 0;

    /// How many rows there are, where that can be said; the same as far as it is known without counting.
    virtual std::optional<std::int64_t> count() = 0;
    [[nodiscard]] virtual std::optional<std::int64_t> known_count() const { return std::nullopt; }
    /// The place of a row in the order, counted from 1.
    virtual std::int64_t place(std::int64_t number) = 0;
    /// Leaves in what a condition in SQL says; everything when it is "". When it throws, nothing is changed.
    virtual void filter(const std::string&) {}
    /// What was kept of rows that were read is given up.
    virtual void read_anew() {}
    /// The table that the rows are of; nothing for those of another query.
    [[nodiscard]] virtual std::optional<Name> table() const { return std::nullopt; }
    /// The query that the rows are of; "" for those of an area.
    [[nodiscard]] virtual std::string query() const { return ""; }
    /// What the driver knows its columns as; nothing for rows that are only read.
    [[nodiscard]] virtual Structure structure() const { return {}; }
    /// The rows are ordered and changed through it; nullptr for rows that are only read.
    virtual Area* area() { return nullptr; }
};

}  // namespace zmfb::tool::browse
