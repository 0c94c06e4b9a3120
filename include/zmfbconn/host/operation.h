/// The operations of work areas by their names in the language, for callers that have names only: other
/// languages, expressions.
#pragma once

#include <cstddef>
#include <string_view>

#include "value.h"

#pragma GCC visibility push(default)

namespace zmfb::host {

/// An operation of workarea.h, moves.h or record.h.
struct Operation {
    std::string_view name;   ///< upper case: "DBUSEAREA"
    std::size_t parameters;  ///< how many it takes at most
    Value (*run)(Args);  ///< does it; an argument left out is NIL, and NIL is the answer where there is none
};

/// The operation of that name, in any case of letters; null when there is none.
///
/// They are those of the language, with what these headers tell of each; LOCATE, CONTINUE, PACK and ZAP are
/// __DBLOCATE, __DBCONTINUE, __DBPACK and __DBZAP. RLOCK and FLOCK take for how many seconds to try again,
/// DBRLOCK does behind the record; NETERRHOLDER is neterrholder().
const Operation* find_operation(std::string_view name);

}  // namespace zmfb::host

#pragma GCC visibility pop
