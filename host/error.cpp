#include "host/error.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "host/class.h"
#include "host/leaving.h"
#include "host/utf8.h"
#include "host/workarea.h"

namespace zmfb::host {
namespace {

template <int N>
Value number_default() {
    return N;
}
Value text_default() { return ""; }
Value false_default() { return false; }
Value nil_default() { return {}; }

constexpr std::array error_variables{
    Variable{"args", Visibility::exported, nil_default},
    Variable{"candefault", Visibility::exported, false_default},
    Variable{"canretry", Visibility::exported, false_default},
    Variable{"cansubstitute", Visibility::exported, false_default},
    Variable{"cargo", Visibility::exported, nil_default},
    Variable{"description", Visibility::exported, text_default},
    Variable{"filename", Visibility::exported, text_default},
    Variable{"gencode", Visibility::exported, number_default<0>},
    Variable{"operation", Visibility::exported, text_default},
    Variable{"oscode", Visibility::exported, number_default<0>},
    Variable{"severity", Visibility::exported, number_default<0>},
    Variable{"subcode", Visibility::exported, number_default<0>},
    Variable{"subsystem", Visibility::exported, text_default},
    Variable{"tries", Visibility::exported, number_default<0>},
};

constexpr int severity_error = 2;

Value default_handler(Args args) {
    if (is_told_by_neterr(args[0])) return false;
    std::string text = error_description(args[0]);
    for (char& c : text) {
        if (c == ';') c = '\n';
    }
    give_terminal_back();
    std::fprintf(stderr, "%s\n", text.c_str());
    std::exit(EXIT_FAILURE);
}

Value& current_handler() {
    static Value handler = Value::block(default_handler);
    return handler;
}

Value make_error(GenCode code, Subcode subcode, std::string_view description) {
    Value error = error_new();
    Object& fields = *error.object();
    fields.set("description", description);
    fields.set("gencode", static_cast<int>(code));
    fields.set("subcode", static_cast<int>(subcode));
    fields.set("subsystem", "BASE");
    fields.set("severity", severity_error);
    return error;
}

}  // namespace

Value error_new() {
    static const Class error_class("ERROR", error_variables, {});
    return Value(new Instance(error_class));
}

Value error_block() { return current_handler(); }

Value error_block(const Value& handler) {
    Value before = current_handler();
    current_handler() = handler.is(Kind::block) ? handler : Value::block(default_handler);
    return before;
}

RaisedError::RaisedError(Value error)
    : std::runtime_error(to_utf8(error_description(error))), error_(std::move(error)) {}

RaisedError::~RaisedError() = default;

ThrowingErrors::ThrowingErrors()
    : block_(Value::block([](Args args) -> Value { throw RaisedError(args[0]); })) {}

std::string error_description(const Value& error) {
    if (error.object() == nullptr) return "unknown error";
    const Value text = error.object()->get("description");
    return text.is(Kind::character) ? std::string(text.text()) : "unknown error";
}

Value raise(const Value& error) { return error_block().eval(Args(error)); }

Value argument_error(Subcode subcode, std::string_view operation, std::span<const Value> args) {
    const Value error = make_error(GenCode::argument, subcode, "Argument error: " + std::string(operation));
    Value list = Value::array_of_size(0);
    for (const Value& arg : args) list.push(arg);
    error.object()->set("args", list);
    error.object()->set("operation", operation);
    error.object()->set("cansubstitute", true);
    return raise(error);
}

void bound_error(Subcode subcode, const Value& array, std::size_t index) {
    const Value error = make_error(GenCode::bound, subcode, "Bound error: array access");
    error.object()->set("args", array_of(array, index));
    raise(error);
}

Value string_overflow(std::string_view operation) {
    return runtime_error(GenCode::string_overflow, Subcode::string_overflow,
                         "String overflow: " + std::string(operation));
}

Value runtime_error(GenCode code, Subcode subcode, std::string_view description) {
    return raise(make_error(code, subcode, description));
}

std::string_view kind_name(Kind kind) {
    switch (kind) {
        case Kind::nil:
            return "nil";
        case Kind::character:
            return "character";
        case Kind::numeric:
            return "numeric";
        case Kind::logical:
            return "logical";
        case Kind::date:
            return "date";
        case Kind::array:
            return "array";
        case Kind::object:
            return "object";
        case Kind::block:
            return "block";
    }
    return "";
}

}  // namespace zmfb::host
