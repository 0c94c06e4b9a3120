/// How the types of method_types.h travel as values of the runtime.
#pragma once

#include "method_types.h"
#include "status.h"

#pragma GCC visibility push(default)

/// What is behind declared methods; its members are the library's own.
namespace zmfb::declared {

/// A type that a method takes or answers: the word for its kind, whether a value is one, and the way in and
/// out. `several` is the word for an array of them.
template <class T>
struct Carrier;

template <>
struct Carrier<void> {
    static constexpr std::string_view kind = "NIL";
    static bool fits(const Value& value) { return value.is_nil(); }
    static void read(const Value&) {}
};

template <>
struct Carrier<Value> {
    static constexpr std::string_view kind = "any";
    static bool fits(const Value&) { return true; }
    static Value read(const Value& value) { return value; }
};

template <>
struct Carrier<bool> {
    static constexpr std::string_view kind = "logical";
    static bool fits(const Value& value) { return value.is(host::Kind::logical); }
    static bool read(const Value& value) { return value.logical(); }
};

template <>
struct Carrier<std::int64_t> {
    static constexpr std::string_view kind = "number";
    static bool fits(const Value& value);
    static std::int64_t read(const Value& value) { return value.integer(); }
};

template <>
struct Carrier<std::string> {
    static constexpr std::string_view kind = "text", several = "texts";
    static bool fits(const Value& value) { return value.is(host::Kind::character); }
    static std::string read(const Value& value) { return value.string(); }
    static Value value(std::string_view text) { return text; }
};

template <>
struct Carrier<TableName> {
    static constexpr std::string_view kind = "table", several = "tables";
    static bool fits(const Value& value) { return value.is(host::Kind::character); }
    static TableName read(const Value& value) { return value.string(); }
    static Value value(const TableName& table) { return table.text(); }
};

template <>
struct Carrier<AreaId> {
    static constexpr std::string_view kind = "area";
    static bool fits(const Value& value) { return value.is(host::Kind::character); }
    static AreaId read(const Value& value) { return AreaId(value.string()); }
    static Value value(const AreaId& area) { return area.text(); }
};

/// A text of digits when a method takes it, a number when one answers it.
template <>
struct Carrier<RecordNumber> {
    static constexpr std::string_view kind = "record", several = "records";
    static bool fits(const Value& value) { return Carrier<std::int64_t>::fits(value); }
    static RecordNumber read(const Value& value) { return RecordNumber(value.integer()); }
    static Value value(const RecordNumber& record) { return std::to_string(record.number()); }
};

template <>
struct Carrier<FieldDescriptor> {
    static constexpr std::string_view kind = "field", several = "structure";
    static bool fits(const Value& value);
    static FieldDescriptor read(const Value& value);
    static Value value(const FieldDescriptor& field);
};

template <>
struct Carrier<Array> {
    static constexpr std::string_view kind = "array";
    static bool fits(const Value& value) { return value.is(host::Kind::array); }
    static Array read(const Value& value) { return Array(value); }
    static Value value(const Array& array) { return array.value(); }
};

template <>
struct Carrier<Matrix> {
    static constexpr std::string_view kind = "matrix";
    static Value value(const Matrix& matrix) { return matrix.value(); }
};

template <>
struct Carrier<MatrixLog> {
    static constexpr std::string_view kind = "{ok, log}";
    static bool fits(const Value& value);
    static MatrixLog read(const Value& value);
};

/// The text "" is success, any other what was wrong.
template <>
struct Carrier<Status> {
    static constexpr std::string_view kind = "status";
    static bool fits(const Value& value) { return value.is(host::Kind::character); }
    static Status read(const Value& value) { return value.size() == 0 ? Status() : Status(value.string()); }
};

template <class T>
struct Carrier<std::vector<T>> {
    static constexpr std::string_view kind = Carrier<T>::several;
    static constexpr std::string_view several = "rows";
    static bool fits(const Value& value) {
        if (!value.is(host::Kind::array)) return false;
        for (const Value& item : value.items()) {
            if (!Carrier<T>::fits(item)) return false;
        }
        return true;
    }
    static std::vector<T> read(const Value& value) {
        std::vector<T> all;
        all.reserve(value.size());
        for (const Value& item : value.items()) all.push_back(Carrier<T>::read(item));
        return all;
    }
    static Value value(const std::vector<T>& all) {
        Value array = Value::array_of_size(all.size());
        for (std::size_t at = 0; at < all.size(); ++at) array[at + 1] = Carrier<T>::value(all[at]);
        return array;
    }
};

/// A parameter that may be left out.
template <class T>
struct Carrier<std::optional<T>> : Carrier<T> {};

template <class T>
inline constexpr bool is_optional = false;
template <class T>
inline constexpr bool is_optional<std::optional<T>> = true;

/// The value of an argument for a parameter of type `Parameter`.
template <class Parameter, class Argument>
Value value_of(const Argument& argument) {
    constexpr bool is_number = std::integral<Argument> && host::Number<Argument>;
    if constexpr (is_optional<Parameter>) {
        if constexpr (std::same_as<Argument, std::nullopt_t>) {
            return {};
        } else if constexpr (std::same_as<Argument, Parameter>) {
            return argument ? value_of<typename Parameter::value_type>(*argument) : Value();
        } else {
            return value_of<typename Parameter::value_type>(argument);
        }
    } else if constexpr (std::same_as<Parameter, std::string>) {
        static_assert(TextLike<Argument>, "the parameter is a text");
        return std::string_view(argument);
    } else if constexpr (std::same_as<Parameter, bool>) {
        static_assert(std::same_as<Argument, bool>, "the parameter is a logical");
        return argument;
    } else if constexpr (std::same_as<Parameter, std::int64_t>) {
        static_assert(is_number, "the parameter is a whole number");
        return argument;
    } else if constexpr (std::same_as<Parameter, Value>) {
        return Value(argument);
    } else {
        static_assert(std::convertible_to<const Argument&, Parameter>,
                      "the argument does not become the type of the parameter");
        return Carrier<Parameter>::value(argument);
    }
}

}  // namespace zmfb::declared

#pragma GCC visibility pop
