#include "host/class.h"

#include <bit>
#include <string>

#include "host/error.h"
#include "host/text.h"

namespace zmfb::host {

std::string_view kind_name(MethodKind kind) {
    switch (kind) {
        case MethodKind::exported:
            return "exported";
        case MethodKind::protected_:
            return "protected";
        case MethodKind::access:
            return "access";
        case MethodKind::assign:
            return "assign";
    }
    return "";
}

// Letters at three places and the length tell names apart well enough; looking at all of them takes longer
// than the search it saves.
std::size_t Class::first_place(std::string_view name) const {
    if (name.empty()) return 0;
    const auto letter = [&](std::size_t at) -> std::size_t { return static_cast<unsigned char>(name[at]); };
    const std::size_t mixed =
        ((letter(0) * 31 + letter(name.size() / 2)) * 31 + letter(name.size() - 1)) * 31 + name.size();
    return mixed & (places_.size() - 1);
}

Class::Class(std::string_view name, std::span<const Variable> variables, std::span<const Method> methods)
    : name_(name),
      variables_(variables),
      methods_(methods),
      places_(std::bit_ceil(4 * methods.size() + 1), none) {
    for (std::size_t row = 0; row < methods.size(); ++row) {
        if (row > 0 && methods[row].name == methods[row - 1].name) continue;
        std::size_t place = first_place(methods[row].name);
        while (places_[place] != none) place = (place + 1) & (places_.size() - 1);
        places_[place] = row;
    }
}

std::size_t Class::find_method(std::string_view name) const {
    for (std::size_t place = first_place(name);; place = (place + 1) & (places_.size() - 1)) {
        const std::size_t row = places_[place];
        if (row == none || methods_[row].name == name) return row;
    }
}

std::size_t Class::find_assign(std::string_view name) const {
    for (std::size_t row = find_method(name); row < methods_.size() && methods_[row].name == name; ++row) {
        if (methods_[row].kind == MethodKind::assign) return row;
    }
    return none;
}

std::size_t Class::find_variable(std::string_view name) const {
    for (std::size_t row = variables_.size(); row > 0; --row) {
        if (variables_[row - 1].name == name) return row - 1;
    }
    return none;
}

Instance::Instance(const Class& type) : type_(type) {
    variables_.reserve(type.variables().size());
    for (const Variable& row : type.variables()) variables_.push_back(row.initial());
}

Value Instance::send(std::string_view name, Args args) {
    const Value keep_alive(this);
    std::size_t row = type_.find_method(name);
    if (row == Class::none) row = type_.find_method(lower(name).string());
    if (row != Class::none) return call(row, args);
    const std::size_t fallback = type_.find_method("nomethod");
    if (fallback == Class::none) {
        return runtime_error(GenCode::no_method, Subcode::no_method,
                             "No exported method: " + std::string(name));
    }
    const Value asked[] = {name};
    return call(fallback, asked);
}

Value Instance::get(std::string_view name) {
    const std::size_t row = type_.find_method(name);
    if (row != Class::none && type_.methods()[row].kind == MethodKind::access) return call(row, {});
    const std::size_t place = type_.find_variable(name);
    if (place != Class::none && type_.variables()[place].visibility == Visibility::exported)
        return variables_[place];
    return runtime_error(GenCode::no_variable, Subcode::no_variable,
                         "No exported variable: " + std::string(name));
}

void Instance::set(std::string_view name, const Value& value) {
    const std::size_t row = type_.find_assign(name);
    if (row != Class::none) {
        call(row, Args(value));
        return;
    }
    const std::size_t place = type_.find_variable(name);
    if (place != Class::none && type_.variables()[place].visibility == Visibility::exported) {
        variables_[place] = value;
        return;
    }
    runtime_error(GenCode::no_variable, Subcode::no_variable, "No exported variable: " + std::string(name));
}

void Instance::last_release() noexcept {
    const std::size_t row = type_.find_method("axit");
    if (row == Class::none) return;
    try {
        call(row, {});
    } catch (...) {  // an error handler that breaks off has nowhere to go at the end of an object's life
    }
}

}  // namespace zmfb::host
