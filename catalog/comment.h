/// Descriptions on engines that refuse to have their system tables updated.
#pragma once

#include <string>
#include <string_view>

#include "conn/self.h"

namespace zmfb::catalog {

/// Whether the attached engine takes descriptions by COMMENT ON alone: Firebird 3 and later. It is asked for
/// its version until it has answered, and again when another handle was asked about between; one that cannot
/// answer, or no engine at all, is taken for an older one that time.
bool takes_comments_only(Self& self);

/// `name` in double quotes, those inside it doubled.
Value quoted(const Value& name);

/// Sends COMMENT ON `object` IS `descr`; returns what executeupdate returns. "" removes the description.
Value comment_on(Self& self, const Value& object, const Value& descr);

/// The ISO-8859-1 form of a description as such an engine gives it back: in UTF-8, perhaps cut within a
/// character. What is no UTF-8 of ISO-8859-1 characters comes back as it is.
std::string from_utf8(std::string_view description);

}  // namespace zmfb::catalog
