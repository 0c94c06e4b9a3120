/// The object as its own methods see it: the variables of zmFBConn, and calls of methods by name.
#pragma once

#include <cstddef>
#include <utility>

#include "conn/method_names.h"
#include "host/class.h"
#include "host/value.h"

namespace zmfb {

using host::Args;
using host::MethodKind;
using host::Value;

/// The object itself, the first parameter of every method.
using Self = host::Instance;

/// The slots of zmFBConn in their order; a property's slot stands just ahead of the variable it is bound to.
enum class Var : std::size_t {
    aaliases,
    bconn_property,
    bconn,
    brddativo,
    dbhndl_property,
    dbhndl,
    iglbskchsz,
    iglbskmode,
    oldscreen,
    previousrd,
    sdbname_property,
    sdbname,
    sfullpathd,
    srolename_property,
    srolename,
    susername_property,
    susername,
};

/// An instance variable, to read and to write.
inline Value& var(Self& self, Var slot) { return self.variable(static_cast<std::size_t>(slot)); }

/// Calls a method of the object by name, through the method table: call(self, "istable", name).
/// The name and the number of arguments are checked when the code is compiled.
template <class... Arguments>
Value call(Self& self, MethodName<sizeof...(Arguments)> method, Arguments&&... arguments) {
    if constexpr (sizeof...(Arguments) == 0) {
        return self.call(method.row(), Args());
    } else {
        const Value values[] = {Value(std::forward<Arguments>(arguments))...};
        return self.call(method.row(), Args(values));
    }
}

/// The same for methods that answer .T. or .F.; any other answer is a no.
template <class... Arguments>
bool ask(Self& self, MethodName<sizeof...(Arguments)> method, Arguments&&... arguments) {
    const Value answer = call(self, method, std::forward<Arguments>(arguments)...);
    return answer.is(host::Kind::logical) && answer.logical();
}

/// The row of the method table that has `routine` do what `declared` says.
consteval host::Method bound(const MethodRow& declared, host::Routine routine) {
    return {declared.name, static_cast<int>(declared.parameters.size()), declared.kind, routine};
}

}  // namespace zmfb
