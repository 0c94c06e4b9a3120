/// The rows of a query: as tuples of types, or with fields by name.
#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "blob.h"
#include "sql_value.h"

/// What is behind the public classes; their members are the library's own.
namespace zmfb::typed {
class Cursor;
class Prepared;
}  // namespace zmfb::typed

#pragma GCC visibility push(default)

namespace zmfb {

namespace typed {

/// What values are read as.
enum class Kind { none, boolean, integer, decimal, real, text, view, bytes, date, time, timestamp, blob };

template <class T>
inline constexpr bool is_optional = false;
template <class T>
inline constexpr bool is_optional<std::optional<T>> = true;

/// The kind of a type, or of what a std::optional holds; none for a type that no value can be read as.
template <class T>
consteval Kind kind_of() {
    if constexpr (is_optional<T>) return kind_of<typename T::value_type>();
    if constexpr (std::same_as<T, bool>) return Kind::boolean;
    if constexpr (WholeNumber<T>) return Kind::integer;
    if constexpr (std::same_as<T, Decimal>) return Kind::decimal;
    if constexpr (std::same_as<T, double>) return Kind::real;
    if constexpr (std::same_as<T, std::string>) return Kind::text;
    if constexpr (std::same_as<T, std::string_view>) return Kind::view;
    if constexpr (std::same_as<T, Bytes>) return Kind::bytes;
    if constexpr (std::same_as<T, std::chrono::year_month_day>) return Kind::date;
    if constexpr (std::same_as<T, TimeOfDay>) return Kind::time;
    if constexpr (std::same_as<T, Timestamp>) return Kind::timestamp;
    if constexpr (std::same_as<T, BlobReader>) return Kind::blob;
    return Kind::none;
}

/// A type that values can be read as: see Field::as().
template <class T>
concept Readable = kind_of<T>()
!= Kind::none;

/// Reads the value of a column of the current row into an object of a kind's type (std::int64_t for whole
/// numbers). .F. for NULL, which leaves the object alone.
using Read = bool (*)(Cursor& cursor, std::size_t column, void* value);
/// Throws when the type of the column cannot be read as that.
Read reader_of(const Prepared& statement, std::size_t column, Kind kind);
void check_column_count(const Prepared& statement, std::size_t wanted);
const std::vector<Column>& columns_of(const Prepared& statement);

std::shared_ptr<Cursor> open(const std::shared_ptr<Prepared>& statement, std::span<const Parameter> values);
const Prepared& statement_of(const Cursor& cursor);
/// Whether there is one more row, which is the current one then.
bool next_row(Cursor& cursor);

[[noreturn]] void throw_null(const Cursor& cursor, std::size_t column);
[[noreturn]] void throw_range(const Cursor& cursor, std::size_t column, std::int64_t value);
[[noreturn]] void throw_row_count(const Cursor& cursor, bool none);
[[noreturn]] void throw_begun(const Cursor& cursor);

template <class T>
bool read_present(Cursor& cursor, std::size_t column, Read read, T& value) {
    if constexpr (WholeNumber<T> && !std::same_as<T, std::int64_t>) {
        std::int64_t number = 0;
        if (!read(cursor, column, &number)) return false;
        if (!std::in_range<T>(number)) throw_range(cursor, column, number);
        value = static_cast<T>(number);
        return true;
    } else {
        return read(cursor, column, &value);
    }
}

template <class T>
void read_value(Cursor& cursor, std::size_t column, Read read, T& value) {
    if constexpr (is_optional<T>) {
        if (!value) value.emplace();
        if (!read_present(cursor, column, read, *value)) value.reset();
    } else {
        if (!read_present(cursor, column, read, value)) throw_null(cursor, column);
    }
}

}  // namespace typed

/// The value of one column of a row. It can be read until the next row is, and throws (24000) from then on.
class Field {
  public:
    /// Whether the value is NULL.
    [[nodiscard]] bool is_null() const;
    /// The column that the value is of.
    [[nodiscard]] const Column& column() const;
    /// The value as a type that the column's type has the same values as:
    ///
    /// - text: std::string, std::string_view (lives until the next row); CHAR without the blanks at its end.
    ///   One character 'T' or 'F' also bool, as the driver keeps logicals.
    /// - bytes: Bytes
    /// - integer: every type of whole numbers, checked to fit; Decimal. decimal: Decimal. real: double.
    /// - boolean: bool
    /// - date: std::chrono::year_month_day. time: TimeOfDay. timestamp: Timestamp; when it is midnight also
    ///   year_month_day, as the driver keeps days.
    /// - text_blob: std::string, std::string_view, BlobReader. blob: Bytes, BlobReader.
    ///
    /// Each also as std::optional, which is empty for NULL. Any other type is thrown (07006), NULL for a type
    /// that is not optional as well (22002).
    template <typed::Readable T>
    [[nodiscard]] T as() const {
        T value{};
        typed::read_value(current(), index_, typed::reader_of(statement(), index_, typed::kind_of<T>()),
                          value);
        return value;
    }
    /// The value as people write it, in UTF-8: all digits of a number with decimals, the fewest of a real one
    /// that read back as the same, "true", "2007-03-01 14:05:09.1234", bytes in hexadecimal, a text blob of
    /// up to 64 MiB whole, any other as "<blob 123 bytes>", a type that is not read here as "<INT128>"; a
    /// byte that is no character as U+FFFD. Nothing for NULL.
    [[nodiscard]] std::optional<std::string> text() const;

  private:
    friend class Row;
    Field(std::shared_ptr<typed::Cursor> cursor, std::uint64_t row, std::size_t index)
        : cursor_(std::move(cursor)), row_(row), index_(index) {}
    /// Throws when the row is no longer the current one.
    [[nodiscard]] typed::Cursor& current() const;
    [[nodiscard]] const typed::Prepared& statement() const { return typed::statement_of(*cursor_); }

    std::shared_ptr<typed::Cursor> cursor_;
    std::uint64_t row_;
    std::size_t index_;
};

/// The current row of Rows, which it belongs to.
class Row {
  public:
    /// A field by the name of its column, in any case when no other differs from it in case only. Throws
    /// (42S22) when there is no such column, or more than one.
    [[nodiscard]] Field operator[](std::string_view name) const;
    /// A field by its place, counted from 0. Throws when there is none.
    [[nodiscard]] Field operator[](std::size_t index) const;
    /// How many fields there are.
    [[nodiscard]] std::size_t size() const;

  private:
    friend class Rows;
    explicit Row(std::shared_ptr<typed::Cursor> cursor) : cursor_(std::move(cursor)) {}
    std::shared_ptr<typed::Cursor> cursor_;
};

namespace typed {

/// Goes through rows that are read one after another.
template <class Range, class Value>
class RowIterator {
  public:
    using value_type = Value;
    using difference_type = std::ptrdiff_t;

    explicit RowIterator(Range* rows) : rows_(rows) {}
    Value& operator*() const { return rows_->row_; }
    RowIterator& operator++() {
        if (!rows_->next()) rows_ = nullptr;
        return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const { return rows_ == nullptr; }

  private:
    Range* rows_;
};

}  // namespace typed

/// The rows of a query, read one after another while they are gone through, once. See Statement::rows().
///
/// They may outlive the statement. Iterators are of the object that they were taken from: when it has gone,
/// or was moved elsewhere, they are of no more use.
class Rows {
  public:
    /// @{
    /// Rows are gone through once, and so not copied.
    Rows(Rows&&) noexcept = default;
    Rows& operator=(Rows&&) noexcept = default;
    /// @}
    ~Rows() = default;

    /// Reads the first row; the next one is read when the iterator is moved on. Throws when it was called
    /// before.
    auto begin() {
        if (std::exchange(begun_, true)) typed::throw_begun(*row_.cursor_);
        return ++Iterator(this);
    }
    /// Where there is no more row.
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }
    /// The columns, from left to right.
    [[nodiscard]] const std::vector<Column>& columns() const {
        return typed::columns_of(typed::statement_of(*row_.cursor_));
    }

  private:
    using Iterator = typed::RowIterator<Rows, const Row>;
    friend Iterator;
    friend class Statement;
    Rows(const std::shared_ptr<typed::Prepared>& statement, std::span<const Parameter> values)
        : row_(typed::open(statement, values)) {}
    bool next() { return typed::next_row(*row_.cursor_); }

    Row row_;
    bool begun_ = false;
};

/// The same as tuples of types. The tuple is one object, filled anew for each row: `auto [name, credit]`
/// copies its values, `auto& [name, credit]` does not. A std::string_view in it lives until the next row is
/// read. See Statement::query().
template <typed::Readable... T>
class TypedRows {
  public:
    /// @{
    /// Rows are gone through once, and so not copied.
    TypedRows(TypedRows&&) noexcept = default;
    TypedRows& operator=(TypedRows&&) noexcept = default;
    /// @}
    ~TypedRows() = default;

    /// Reads the first row; the next one is read when the iterator is moved on. Throws when it was called
    /// before.
    auto begin() {
        if (std::exchange(begun_, true)) typed::throw_begun(*cursor_);
        return ++Iterator(this);
    }
    /// Where there is no more row.
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }

  private:
    using Iterator = typed::RowIterator<TypedRows, std::tuple<T...>>;
    friend Iterator;
    friend class Statement;
    using Reads = std::array<typed::Read, sizeof...(T)>;

    // The types are checked before the statement runs.
    TypedRows(const std::shared_ptr<typed::Prepared>& statement, std::span<const Parameter> values)
        : reads_(readers(*statement)), cursor_(typed::open(statement, values)) {}

    static Reads readers(const typed::Prepared& statement) {
        typed::check_column_count(statement, sizeof...(T));
        std::size_t column = 0;
        return {typed::reader_of(statement, column++, typed::kind_of<T>())...};
    }
    bool next() {
        if (!typed::next_row(*cursor_)) return false;
        [this]<std::size_t... I>(std::index_sequence<I...>) {
            (typed::read_value(*cursor_, I, reads_[I], std::get<I>(row_)), ...);
        }
        (std::index_sequence_for<T...>());
        return true;
    }
    // The only row, if there is one.
    std::optional<std::tuple<T...>> single() {
        if (!next()) return std::nullopt;
        std::optional<std::tuple<T...>> row(std::move(row_));
        if (typed::next_row(*cursor_)) typed::throw_row_count(*cursor_, false);
        return row;
    }
    [[noreturn]] void throw_no_row() const { typed::throw_row_count(*cursor_, true); }

    Reads reads_;
    std::shared_ptr<typed::Cursor> cursor_;
    std::tuple<T...> row_;
    bool begun_ = false;
};

}  // namespace zmfb

#pragma GCC visibility pop
