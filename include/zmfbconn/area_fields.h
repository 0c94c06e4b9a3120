/// The fields of a record of a work area, by name and with their types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/value.h"
#include "rows.h"

namespace zmfb::rdd {
class Columns;
class Record;
}  // namespace zmfb::rdd

#pragma GCC visibility push(default)

namespace zmfb {

namespace rdd {

/// Reads a field into an object of a kind's type (std::int64_t for whole numbers). .F. for NULL, which leaves
/// the object alone. Throws AreaError.
bool read_field(const Record& record, std::size_t field, typed::Kind kind, void* value);
/// Assigns a field. Throws AreaError when it does not hold the value.
void assign_field(Record& record, std::size_t field, const Parameter& value);
/// Its number. Throws AreaError when there is none of that name, in any case of letters.
std::size_t find_field(const Record& record, std::string_view name);
/// Throws AreaError when `columns` are not those of the record.
void check_field(const Record& record, const Columns* columns, std::size_t field);
[[noreturn]] void throw_null(const Record& record, std::size_t field);
[[noreturn]] void throw_range(const Record& record, std::size_t field, std::int64_t value);

template <class T>
bool read_present(const Record& record, std::size_t field, T& value) {
    if constexpr (typed::WholeNumber<T> && !std::same_as<T, std::int64_t>) {
        std::int64_t number = 0;
        if (!read_field(record, field, typed::Kind::integer, &number)) return false;
        if (!std::in_range<T>(number)) throw_range(record, field, number);
        value = static_cast<T>(number);
        return true;
    } else {
        return read_field(record, field, typed::kind_of<T>(), &value);
    }
}

template <class T>
T read_as(const Record& record, std::size_t field) {
    T value{};
    if constexpr (typed::is_optional<T>) {
        value.emplace();
        if (!read_present(record, field, *value)) value.reset();
    } else {
        if (!read_present(record, field, value)) throw_null(record, field);
    }
    return value;
}

}  // namespace rdd

/// A field of an area that was looked up once, with the type it is read as: see Area::field().
template <typed::Readable T>
class AreaField {
  public:
    /// Of the library's own.
    AreaField(const rdd::Columns* columns, std::size_t index) : columns_(columns), index_(index) {}
    /// Its place among the fields, counted from 0.
    [[nodiscard]] std::size_t index() const { return index_; }

  private:
    friend class Area;
    friend class Held;
    const rdd::Columns* columns_;
    std::size_t index_;
};

/// The value of a field of a record, which it must not outlive.
class FieldValue {
  public:
    /// Of the library's own.
    FieldValue(const rdd::Record& record, std::size_t index) : record_(record), index_(index) {}

    /// The value as a type that holds it:
    ///
    /// - text: std::string, std::string_view (lives until the area moves, or the guard goes), CHAR without
    ///   the blanks at its end; one character 'T' or 'F' also bool. Bytes of the character set OCTETS: Bytes.
    /// - integer: every type of whole numbers, checked to fit; Decimal; double, the nearest one
    /// - decimal: Decimal; double, the nearest one. real: double. boolean: bool
    /// - date: std::chrono::year_month_day. time: TimeOfDay. timestamp: Timestamp; when it is midnight also
    ///   year_month_day
    ///
    /// Each also as std::optional, which is empty for NULL. Anything else is thrown as AreaError.
    template <typed::Readable T>
    [[nodiscard]] T as() const {
        return rdd::read_as<T>(record_, index_);
    }
    /// Whether it is NULL.
    [[nodiscard]] bool is_null() const;
    /// As people write it, as Field::text() has it; nothing for NULL.
    [[nodiscard]] std::optional<std::string> text() const;
    /// As a value of the runtime: CHAR without the blanks at its end, the nearest double of a number, a date
    /// of a day and of a time stamp, which is the empty one for NULL. A logical is its letter.
    [[nodiscard]] host::Value value() const;

  protected:
    /// What it is of.
    [[nodiscard]] const rdd::Record& record() const { return record_; }
    /// Its place among the fields.
    [[nodiscard]] std::size_t index() const { return index_; }

  private:
    const rdd::Record& record_;
    std::size_t index_;
};

/// A field of a record that may be assigned: held["NOTE"] = "sold".
class FieldPlace : public FieldValue {
  public:
    /// Of the library's own.
    FieldPlace(rdd::Record& record, std::size_t index) : FieldValue(record, index), to_(record) {}
    /// @{
    /// Assigns a value that the field holds; it is written by Held::write(). A number is rounded to the
    /// field's decimals, std::nullopt is NULL.
    template <class V>
    FieldPlace& operator=(const V& value) {
        rdd::assign_field(to_, index(), Parameter(value));
        return *this;
    }
    FieldPlace& operator=(const FieldPlace&) = delete;
    FieldPlace(const FieldPlace&) = default;
    /// @}
    ~FieldPlace() = default;
    /// The same of a value of the runtime; NIL and the empty date are NULL.
    FieldPlace& assign(const host::Value& value);

  private:
    rdd::Record& to_;
};

/// The same of a field whose type is known: held[onhand] = held[onhand] - 3.
template <typed::Readable T>
class TypedPlace {
  public:
    /// Of the library's own.
    TypedPlace(rdd::Record& record, std::size_t index) : record_(record), index_(index) {}
    /// Its value.
    operator T() const {  // NOLINT(google-explicit-constructor): it stands for the value.
        return rdd::read_as<T>(record_, index_);
    }
    /// @{
    /// Assigns it: see FieldPlace.
    TypedPlace& operator=(const T& value) {
        rdd::assign_field(record_, index_, Parameter(value));
        return *this;
    }
    TypedPlace& operator=(const TypedPlace& other) { return *this = static_cast<T>(other); }
    TypedPlace(const TypedPlace&) = default;
    TypedPlace& operator+=(const T& value) { return *this = static_cast<T>(static_cast<T>(*this) + value); }
    TypedPlace& operator-=(const T& value) { return *this = static_cast<T>(static_cast<T>(*this) - value); }
    /// @}
    ~TypedPlace() = default;

  private:
    rdd::Record& record_;
    std::size_t index_;
};

}  // namespace zmfb

#pragma GCC visibility pop
