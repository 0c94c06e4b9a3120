/// What methods take and answer, as types: names and numbers that are not to be mixed up, field descriptors,
/// arrays.
///
/// Texts are bytes in ISO-8859-1, as everywhere in methods.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/value.h"

#pragma GCC visibility push(default)

namespace zmfb {

using host::Value;

/// What a text can be made of.
template <class T>
concept TextLike = std::convertible_to<const T&, std::string_view> && !std::same_as<T, std::nullptr_t>;

/// The name of a table or view: made of any text, of no number.
class TableName {
  public:
    /// That name, as it is: most methods look it up in any case of letters.
    template <TextLike T>
    TableName(const T& name) : text_(std::string_view(name)) {}  // NOLINT(google-explicit-constructor)
    /// The name.
    [[nodiscard]] const std::string& text() const { return text_; }
    /// Whether the names are the same, byte for byte.
    bool operator==(const TableName&) const = default;

  private:
    std::string text_;
};

/// The id of a work area, as the method getuniqueareaid gives it. No text becomes one by itself.
class AreaId {
  public:
    /// An id that is known from elsewhere.
    explicit AreaId(std::string id) : text_(std::move(id)) {}
    /// The id; "" where nobody is meant.
    [[nodiscard]] const std::string& text() const { return text_; }
    /// Whether the ids are the same, byte for byte.
    bool operator==(const AreaId&) const = default;

  private:
    std::string text_;
};

/// The number of a record (RECNO). Methods get it as the text of its digits; no number becomes one by itself.
class RecordNumber {
  public:
    /// That number.
    template <std::integral T>
    requires host::Number<T>
    explicit RecordNumber(T number) : number_(static_cast<std::int64_t>(number)) {}
    /// The number; 0 where there is no record.
    [[nodiscard]] std::int64_t number() const { return number_; }
    /// In the order of the numbers.
    auto operator<=>(const RecordNumber&) const = default;

  private:
    std::int64_t number_;
};

/// One field of a structure: the array {name, type, len, dec}.
struct FieldDescriptor {
    std::string name;           ///< in capitals where it comes from the database
    std::string type;           ///< "C", "N", "D" or "L"; "U" for a column that the driver does not map
    std::int64_t length = 0;    ///< characters or digits
    std::int64_t decimals = 0;  ///< of the digits, those behind the point
    /// Whether all four are the same.
    bool operator==(const FieldDescriptor&) const = default;
};

/// The fields of a table, in the order of its columns.
using Structure = std::vector<FieldDescriptor>;
/// Several texts.
using Texts = std::vector<std::string>;
/// Rows of texts, without a header.
using TextRows = std::vector<Texts>;
/// Several tables.
using TableNames = std::vector<TableName>;
/// Several records.
using RecordNumbers = std::vector<RecordNumber>;

/// An array of the runtime with whatever is in it, such as {header, row, ...} of a query or a matrix.
class Array {
  public:
    /// Names the array once more. std::invalid_argument for a value that is none.
    explicit Array(Value array);
    /// The array.
    [[nodiscard]] const Value& value() const { return value_; }

  private:
    Value value_;
};

/// A matrix to apply: the name of its file, or what the method extractmatrix answered.
class Matrix {
  public:
    // NOLINTBEGIN(google-explicit-constructor)
    /// The file of that name.
    template <TextLike T>
    Matrix(const T& file) : value_(std::string_view(file)) {}
    /// The matrix itself.
    Matrix(const Array& matrix) : value_(matrix.value()) {}
    // NOLINTEND(google-explicit-constructor)
    /// Either of them.
    [[nodiscard]] const Value& value() const { return value_; }

  private:
    Value value_;
};

/// What applying a matrix did, or would do.
struct MatrixLog {
    bool ok = false;  ///< .F. after a damaged group, a foreign table or a change that failed
    Texts lines;      ///< a heading for each table, and a line for each change
};

/// A method answered another kind of value than it is declared with, such as one that was stored through a
/// call by name.
class UnexpectedAnswer : public std::runtime_error {
  public:
    /// Of `method`, which is declared to answer `declared`.
    UnexpectedAnswer(std::string_view method, std::string_view declared, Value answer);
    /// @{
    /// A copy names the same answer.
    UnexpectedAnswer(const UnexpectedAnswer&) = default;
    UnexpectedAnswer& operator=(const UnexpectedAnswer&) = default;
    /// @}
    ~UnexpectedAnswer() override;

    /// What it answered.
    [[nodiscard]] const Value& answer() const noexcept { return answer_; }

  private:
    Value answer_;
};

}  // namespace zmfb

#pragma GCC visibility pop
