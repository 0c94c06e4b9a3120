#include "zmfbconn/method_types.h"

#include <algorithm>

#include "zmfbconn/method_carriers.h"

namespace zmfb {
namespace {

using host::Kind;

std::string_view word_of(Kind kind) {
    switch (kind) {
        case Kind::nil:
            return "NIL";
        case Kind::character:
            return "a text";
        case Kind::numeric:
            return "a number";
        case Kind::logical:
            return "a logical";
        case Kind::date:
            return "a date";
        case Kind::array:
            return "an array";
        case Kind::object:
            return "an object";
        case Kind::block:
            return "a code block";
    }
    return "";
}

bool is_array_of(const Value& value, std::initializer_list<bool (*)(const Value&)> elements) {
    if (!value.is(Kind::array) || value.size() < elements.size()) return false;
    return std::ranges::equal(elements, value.items().first(elements.size()),
                              [](auto fits, const Value& element) { return fits(element); });
}

}  // namespace

Array::Array(Value array) : value_(std::move(array)) {
    if (!value_.is(Kind::array)) throw std::invalid_argument("the value is no array");
}

UnexpectedAnswer::UnexpectedAnswer(std::string_view method, std::string_view declared, Value answer)
    : std::runtime_error(std::string(method) + " answered " + std::string(word_of(answer.kind())) +
                         ", and is declared to answer: " + std::string(declared)),
      answer_(std::move(answer)) {}

UnexpectedAnswer::~UnexpectedAnswer() = default;

namespace declared {

bool Carrier<std::int64_t>::fits(const Value& value) {
    return value.is(Kind::numeric) && static_cast<double>(value.integer()) == value.number();
}

bool Carrier<FieldDescriptor>::fits(const Value& value) {
    return is_array_of(value, {Carrier<std::string>::fits, Carrier<std::string>::fits,
                               Carrier<std::int64_t>::fits, Carrier<std::int64_t>::fits});
}

FieldDescriptor Carrier<FieldDescriptor>::read(const Value& value) {
    return {value[1].string(), value[2].string(), value[3].integer(), value[4].integer()};
}

Value Carrier<FieldDescriptor>::value(const FieldDescriptor& field) {
    return host::array_of(field.name, field.type, field.length, field.decimals);
}

bool Carrier<MatrixLog>::fits(const Value& value) {
    return is_array_of(value, {Carrier<bool>::fits, Carrier<TextRows>::fits}) &&
           std::ranges::none_of(value[2].items(), [](const Value& line) { return line.size() == 0; });
}

MatrixLog Carrier<MatrixLog>::read(const Value& value) {
    MatrixLog log{.ok = value[1].logical(), .lines = {}};
    for (const Value& line : value[2].items()) log.lines.push_back(line[1].string());
    return log;
}

}  // namespace declared
}  // namespace zmfb
