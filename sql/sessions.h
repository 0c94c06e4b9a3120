/// What attaching and detaching tell the typed way, and ask of it.
#pragma once

#include "sql/object_client.h"
#include "zmfbconn/status.h"

namespace zmfb::sql {

/// Whether the client library has the object interface.
bool has_object_interface();

/// Attaches through the object interface; `handle` names the same attachment to the calls by handle. The
/// outcome is in `status`.
void attach_session(ISC_STATUS* status, const char* name, isc_db_handle* handle, short length,
                    const char* block);

/// Ends what is open on an attachment that is going to be detached: transactions are rolled back.
void end_session(isc_db_handle handle);

/// Starts the batch transaction so that programs can work in it, too: `transaction` names it to the calls by
/// handle. .F. when the attachment was not made through the object interface, and nothing was done; else the
/// outcome is in `status`.
bool start_shared_batch(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle handle);

/// What the batch transaction was shared with has ended, by a call by handle.
void shared_batch_ended();

/// Has an attachment give the types of Firebird 4 as those of before, where a program has had them otherwise.
Status use_types_of_before(isc_db_handle handle);

/// Whether a transaction that may change rows is open in this process.
bool is_writing();

}  // namespace zmfb::sql
