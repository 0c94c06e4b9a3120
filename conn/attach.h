/// Attaching, without the start-up checks.
#pragma once

#include "conn/self.h"

namespace zmfb::conn {

/// Attaches the object and gives it its names and a data file. A failed attach is logged at level 0 ("[ERROR]
/// SQLCODE=...") and raises nothing.
void attach_as_it_is(Self& self, const Value& db, const Value& user, const Value& pass, const Value& role);

/// Detaches the object, if it is attached, and says nothing. Needs no memory.
void let_go(Self& self) noexcept;

}  // namespace zmfb::conn
