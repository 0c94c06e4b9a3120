/// The attachments of this process: they can be cancelled from another thread, and one whose database file
/// cannot be read or written is not asked again.
#pragma once

#include <string_view>

#include "sql/client.h"
#include "zmfbconn/status.h"

namespace zmfb::sql {

void add_attachment(isc_db_handle database, std::string_view name);
void remove_attachment(isc_db_handle database);

/// What stands before everything that would begin something in `database`: fails when its attachment was
/// given up, which the status vector then says, too. Throws Cancelled.
Status admit(isc_db_handle database);
/// Only that: throws Cancelled between cancel() and resume().
void require_not_cancelled();

/// Gives up the attachments to the database whose own file the failure in `status` names. Asked again after
/// that, the engine can go round in circles without an end; the file of an external table does no such harm.
void give_up_after(const ISC_STATUS* status);

}  // namespace zmfb::sql
