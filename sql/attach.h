/// Attaching to a database and detaching from it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "zmfbconn/status.h"

namespace zmfb::sql {

/// What became of an attach.
struct Attachment {
    Status status;                       ///< attached is only what has the SQLCODE 0
    std::string message;                 ///< Firebird's text for the SQLCODE, at most 255 bytes
    const void* slot_address = nullptr;  ///< address of the class-level handle slot
    double handle = 0;                   ///< the database handle; 0 when not attached
};

/// Attaches to `database` with a parameter block of user, password and role, no character set. Leaves the
/// class-level handle slot at 0.
Attachment attach(std::string_view database, std::string_view user, std::string_view password,
                  std::string_view role);

/// Detaches `handle`.
Status detach(double handle);

/// Attaches, has `work` done on the handle, and detaches whatever becomes of it.
Status on_attachment(std::string_view database, std::string_view user, std::string_view password,
                     const std::function<Status(double handle)>& work);

}  // namespace zmfb::sql
