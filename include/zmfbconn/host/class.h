/// Classes of the runtime: named instance variables, methods called by name, properties, an end-of-life
/// handler.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

class Instance;

/// The one shape of every method: the object, then the arguments; a missing one reads as NIL.
using Routine = Value (*)(Instance& self, Args args);

/// What a row of a method table is for.
enum class MethodKind : std::uint8_t { exported, protected_, access, assign };

/// "exported", "protected", "access" or "assign".
std::string_view kind_name(MethodKind kind);

/// One row of a method table.
struct Method {
    std::string_view name;  ///< lower case
    int parameters;         ///< after the object
    MethodKind kind;        ///< recorded and shown; a protected method is not refused to an outside caller
    Routine routine;        ///< what it does
};

/// Who may use a variable by name: everybody, its class, nobody, everybody through its property.
enum class Visibility : std::uint8_t { exported, protected_, hidden, property };

/// One row of a class's variables.
struct Variable {
    std::string_view name;  ///< lower case
    Visibility visibility;  ///< who may use it
    Value (*initial)();     ///< makes the default
};

/// A class: its name, variables and methods, all of which must outlive it.
class Class {
  public:
    /// `methods` must be ordered by name in byte order, a property's access row before its assign row.
    Class(std::string_view name, std::span<const Variable> variables, std::span<const Method> methods);

    /// Its name.
    [[nodiscard]] std::string_view name() const { return name_; }
    /// Its variables, in the order of the rows given.
    [[nodiscard]] std::span<const Variable> variables() const { return variables_; }
    /// Its methods, ordered by name.
    [[nodiscard]] std::span<const Method> methods() const { return methods_; }

    /// What the searches answer when there is nothing of that name.
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    /// The row of the first method of that name, or none.
    [[nodiscard]] std::size_t find_method(std::string_view name) const;
    /// The row of the assign method of property `name`, or none.
    [[nodiscard]] std::size_t find_assign(std::string_view name) const;
    /// The last variable of that name (a property's variable stands behind its property row), or none.
    [[nodiscard]] std::size_t find_variable(std::string_view name) const;

  private:
    [[nodiscard]] std::size_t first_place(std::string_view name) const;

    std::string_view name_;
    std::span<const Variable> variables_;
    std::span<const Method> methods_;
    std::vector<std::size_t> places_;  // rows by what their names are mixed to; one whose place is taken
                                       // stands in the next that is free
};

/// An object of a class.
///
/// A name that the class has no method for goes to its method `nomethod` with the name as argument; a class
/// without one raises "No exported method: <NAME>". Exported variables are read and assigned by name; of the
/// others only properties are, through their access and assign methods. The method `axit`, if there is one,
/// is called when the last reference goes away.
class Instance final : public Object {
  public:
    /// An object of `type`, which must outlive it, its variables at their defaults.
    explicit Instance(const Class& type);

    /// Its class.
    [[nodiscard]] const Class& type() const { return type_; }
    /// The variable of row `index` of the class; unchecked.
    Value& variable(std::size_t index) { return variables_[index]; }

    /// Calls the method in row `index` of the class's table; unchecked.
    Value call(std::size_t index, Args args) { return type_.methods()[index].routine(*this, args); }

    /// The name of its class.
    [[nodiscard]] std::string_view class_name() const override { return type_.name(); }
    /// Calls a method by its name, in any case of letters.
    Value send(std::string_view name, Args args) override;
    /// Reads an exported variable or a property by its name.
    Value get(std::string_view name) override;
    /// Assigns an exported variable or a property by its name.
    void set(std::string_view name, const Value& value) override;
    /// Calls the method `axit`, if there is one.
    void last_release() noexcept override;

  private:
    const Class& type_;
    std::vector<Value> variables_;
};

}  // namespace zmfb::host

#pragma GCC visibility pop
