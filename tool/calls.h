/// Calls of methods, as they are typed.
#pragma once

#include "tool/literal.h"
#include "tool/session.h"

namespace zmfb::tool {

/// Makes a call, those among its arguments first. Throws Failure when one of those is of no method, before
/// anything is called, or raises; and when + joins what is no text.
host::Value evaluate(Session& session, const Expression& call);

/// Whether a method gave the text of a statement's failure, which is no raised error.
bool is_failure_text(const host::Value& result);

}  // namespace zmfb::tool
