/// Values on their way into statements and out of rows.
#pragma once

#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "decimal.h"

#pragma GCC visibility push(default)

namespace zmfb {

class BlobWriter;

/// The engine's unit of time, a ten-thousandth of a second.
using Tick = std::ratio<1, 10000>;
/// TIME: since midnight.
using TimeOfDay = std::chrono::duration<std::int32_t, Tick>;
/// TIMESTAMP: of no particular time zone. DATE is std::chrono::year_month_day.
using Timestamp = std::chrono::local_time<std::chrono::duration<std::int64_t, Tick>>;
/// What is no text.
using Bytes = std::vector<std::byte>;

/// What a column or a parameter holds.
enum class SqlType {
    text,       ///< CHAR, VARCHAR
    bytes,      ///< the same of the character set OCTETS
    integer,    ///< SMALLINT, INTEGER, BIGINT
    decimal,    ///< NUMERIC, DECIMAL with decimals; all numbers of more than 18 digits
    real,       ///< FLOAT, DOUBLE PRECISION, DECFLOAT
    boolean,    ///< BOOLEAN
    date,       ///< DATE
    time,       ///< TIME
    timestamp,  ///< TIMESTAMP
    text_blob,  ///< BLOB SUB_TYPE TEXT
    blob,       ///< any other BLOB
    other,      ///< a time with a zone, read as a text; an array, which is not read here
};

/// A column of the rows of a statement.
struct Column {
    std::string name;       ///< its alias, or its own name
    SqlType type;           ///< what it holds
    int decimals;           ///< of SqlType::decimal
    std::size_t length;     ///< in bytes, as declared
    bool nullable;          ///< whether it may be NULL
    std::string type_name;  ///< for people: "VARCHAR(30)", "NUMERIC with 2 decimals"
};

namespace typed {

/// Whole numbers: neither logicals nor letters.
template <class T>
concept WholeNumber =
    std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
    !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// What a parameter would refer into.
template <class T>
concept Owner = std::same_as<T, std::string> || std::same_as<T, Bytes> ||
    std::same_as<T, std::optional<std::string>> || std::same_as<T, std::optional<Bytes>>;

/// A blob that was written, as a parameter.
struct WrittenBlob {
    std::uint64_t id;
    const void* transaction;
};

}  // namespace typed

/// A value for a "?" of a statement. Texts and bytes are not copied: they have to live until the statement
/// has run. One of a std::string or Bytes that would be gone before that does not compile.
///
/// The value has to be of the parameter's kind, and reach it whole; else it is thrown (07006, 22001, 22003)
/// before anything is sent. Whole numbers go into every column of numbers that can hold them, Decimal where
/// no digit is lost, double into FLOAT and DOUBLE PRECISION only, a day into TIMESTAMP too, bool into BOOLEAN
/// and, as 'T' or 'F', into CHAR(1): so the driver keeps logicals. Texts are UTF-8, also for text blobs.
class Parameter {
  public:
    /// What it can hold; std::monostate for NULL.
    using Content = std::variant<std::monostate, bool, std::int64_t, Decimal, double, std::string_view,
                                 std::span<const std::byte>, std::chrono::year_month_day, TimeOfDay,
                                 Timestamp, typed::WrittenBlob>;

    // NOLINTBEGIN(google-explicit-constructor): a parameter is whatever is handed over.
    /// @{
    /// A value of each kind; NULL for std::nullopt, an empty std::optional and a null pointer; of a blob what
    /// was written so far, and nothing more can be written then.
    Parameter(std::nullopt_t) {}
    template <std::same_as<bool> Logical>
    Parameter(Logical value) : content_(value) {}
    template <typed::WholeNumber Whole>
    Parameter(Whole value) : content_(whole(value)) {}
    Parameter(double value) : content_(value) {}
    Parameter(const Decimal& value) : content_(value) {}
    Parameter(const char* value) {
        if (value != nullptr) content_ = std::string_view(value);
    }
    Parameter(std::string_view value) : content_(value) {}
    Parameter(const std::string& value) : content_(std::string_view(value)) {}
    Parameter(std::span<const std::byte> value) : content_(value) {}
    Parameter(const Bytes& value) : content_(std::span<const std::byte>(value)) {}
    Parameter(std::chrono::year_month_day value) : content_(value) {}
    Parameter(TimeOfDay value) : content_(value) {}
    Parameter(Timestamp value) : content_(value) {}
    Parameter(const BlobWriter& value);
    template <typed::Owner Temporary>
    Parameter(Temporary&& gone_too_soon) = delete;
    template <class Value>
    Parameter(const std::optional<Value>& value) {
        if (value) content_ = Parameter(*value).content_;
    }
    /// @}
    // NOLINTEND(google-explicit-constructor)

    /// What it holds.
    [[nodiscard]] const Content& content() const { return content_; }

  private:
    template <typed::WholeNumber Whole>
    static Content whole(Whole value) {
        if (std::in_range<std::int64_t>(value)) return static_cast<std::int64_t>(value);
        return too_large();
    }
    [[noreturn]] static Content too_large();

    Content content_;
};

}  // namespace zmfb

#pragma GCC visibility pop
