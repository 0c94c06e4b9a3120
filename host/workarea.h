/// Work areas: open tables with aliases, each served by a database driver, and the registry of drivers.
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "host/value.h"

namespace zmfb::host {

/// RDDSETDEFAULT([name]): the default driver's name before the call; a name given becomes the default,
/// upper-cased. Any name is taken; one that no driver is registered under fails when a table is opened
/// through it. At the start the default is "DBFIDX".
Value rddsetdefault();
Value rddsetdefault(const Value& name);

/// DBOBJECT([alias]): the data-server object of the work area with that alias (of the current one without),
/// whose property `rddname` names the driver that opened it; NIL when there is none.
Value dbobject(const Value& alias = {});
/// Selects the work area with that alias and closes it; nothing happens when there is none. Without an alias:
/// the current one.
void dbclosearea(const Value& alias = {});

}  // namespace zmfb::host
