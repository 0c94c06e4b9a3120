/// The declaration of a method: its name, what it takes and answers, and a line of help.
///
/// zmfbconn/methods.h has the declarations of all methods, in the namespace zmfb::m. A program calls one on a
/// connection object, and what it hands over is checked when it is compiled:
///
///     bool there = connection(m::istable, "customers");
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "host/class.h"
#include "method_carriers.h"

namespace zmfb {

using host::MethodKind;

/// One parameter of a method.
struct ParameterRow {
    std::string_view name;  ///< as in the reference
    std::string_view kind;  ///< "text", "number", "logical", "table", "area", "record", ...
    bool optional;          ///< whether it may be left out
};

/// What is known of a method without its types: a row of the method table.
struct MethodRow {
    std::string_view name;                     ///< lower case
    MethodKind kind;                           ///< host::kind_name() has the word
    std::span<const ParameterRow> parameters;  ///< after the object
    std::string_view result;                   ///< the kind of what it answers; "NIL" for nothing
    std::string_view help;                     ///< one line for users
};

template <class Signature>
class Method;

/// A method that takes `Parameters` and answers `Result`. std::optional is a parameter that may be left out,
/// at the end, and arrives as NIL then; void answers NIL. A declaration lives as long as the program.
template <class Result, class... Parameters>
class Method<Result(Parameters...)> {
  public:
    /// The names of the parameters.
    using Names = std::array<std::string_view, sizeof...(Parameters)>;

    /// One of that name, with the names of its parameters and its line of help.
    consteval Method(std::string_view name, const Names& parameters, std::string_view help,
                     MethodKind kind = MethodKind::exported)
        : Method(name, parameters, help, kind, std::index_sequence_for<Parameters...>()) {}

    /// Its row.
    constexpr operator MethodRow() const {  // NOLINT(google-explicit-constructor)
        return {name_, kind_, parameters_, declared::Carrier<Result>::kind, help_};
    }
    /// Its name.
    [[nodiscard]] constexpr std::string_view name() const { return name_; }
    /// Its kind.
    [[nodiscard]] constexpr MethodKind kind() const { return kind_; }

    /// The values of a call. Does not compile for another number of arguments, or for one that its parameter
    /// is not made of.
    template <class... Arguments>
    static std::array<Value, sizeof...(Arguments)> values(const Arguments&... arguments) {
        static_assert(sizeof...(Arguments) <= sizeof...(Parameters), "more arguments than the method takes");
        static_assert(sizeof...(Arguments) >= (std::size_t{!declared::is_optional<Parameters>} + ... + 0),
                      "fewer arguments than the method needs");
        return values_at(std::index_sequence_for<Arguments...>(), arguments...);
    }
    /// The answer of a call. Throws UnexpectedAnswer when it is none that the method is declared with.
    [[nodiscard]] Result answer(const Value& value) const {
        if (!declared::Carrier<Result>::fits(value)) {
            throw UnexpectedAnswer(name_, declared::Carrier<Result>::kind, value);
        }
        return declared::Carrier<Result>::read(value);
    }

  private:
    template <std::size_t... At, class... Arguments>
    static std::array<Value, sizeof...(Arguments)> values_at(std::index_sequence<At...>,
                                                             const Arguments&... arguments) {
        return {declared::value_of<std::tuple_element_t<At, std::tuple<Parameters...>>>(arguments)...};
    }
    template <std::size_t... At>
    consteval Method(std::string_view name, const Names& parameters, std::string_view help, MethodKind kind,
                     std::index_sequence<At...>)
        : name_(name),
          kind_(kind),
          parameters_{ParameterRow{parameters[At], declared::Carrier<Parameters>::kind,
                                   declared::is_optional<Parameters>}...},
          help_(help) {}

    std::string_view name_;
    MethodKind kind_;
    std::array<ParameterRow, sizeof...(Parameters)> parameters_;
    std::string_view help_;
};

}  // namespace zmfb
