/// What all objects of the process share: the status vector, the database handle slot and the batch
/// transaction; and how a failure of the client becomes a text.
#pragma once

#include <string>
#include <string_view>

#include "conn/self.h"
#include "sql/client.h"
#include "zmfbconn/status.h"

namespace zmfb::sql {

struct ClassState {
    ISC_STATUS status[ISC_STATUS_LENGTH] = {};
    isc_db_handle slot = 0;  ///< holds a handle only while attaching
    isc_tr_handle batch = 0;
    isc_db_handle batch_database = 0;  ///< the handle that the batch was opened with
};

ClassState& state();

/// A handle as the number that objects keep it as. The client's handles are numbers of at most 32 bits, also
/// where they are declared as pointers.
double number_of(isc_db_handle handle);
/// The handle of such a number: 0 for 0, a handle that the client refuses for a number that no handle can
/// have.
isc_db_handle handle_of(double number);
/// The handle in the object's `dbhndl`; 0 when that was assigned something that is no number.
isc_db_handle handle_of(Self& self);

/// All lines of the engine's message about a failure, kept for last_engine_message().
std::string keep_message(const ISC_STATUS* status);

/// What the status vector says: how the last call of the client ended. For a failure the engine's whole
/// message is kept for last_engine_message(), too; a success takes away what an earlier call of the program
/// has left there.
Status outcome();
/// Firebird's text for an SQLCODE, at most 255 bytes.
std::string sqlcode_message(int sqlcode);
/// Logs "[ERROR] SQLCODE=%d (%s)" at level 1 and returns it.
std::string log_failure(int sqlcode);

/// Makes the status vector say that a call was not made: `sqlcode`, with `reason` as the engine's message.
/// Returns that.
Status refuse(int sqlcode, std::string_view reason);

}  // namespace zmfb::sql
