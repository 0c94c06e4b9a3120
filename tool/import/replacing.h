/// How the rows that were loaded beside a table come into it, or into its place.
///
/// A table beside another describes itself as unfinished until it has all rows. Then it is a loaded one, and
/// its description says what becomes of it. In the transaction that brings its rows to their place it becomes
/// an unfinished one again, which is dropped. The table that it replaces is given up before it is dropped:
/// that calls itself unfinished, too, and from then on the rows beside it are those that count.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tool/import/hold.h"
#include "tool/name.h"
#include "zmfbconn/connection.h"
#include "zmfbconn/driver_table.h"
#include "zmfbconn/transaction.h"

namespace zmfb::tool {

/// Where the rows of a loaded table are to go.
struct Destination {
    bool added = false;              ///< to those of the table; else in their place
    std::vector<std::string> again;  ///< the statements that give the new table what the old one had
};

/// Has the table beside, with all its rows in this transaction, describe itself as a loaded one.
void describe_loaded(Transaction& work, const std::string& beside, const Destination& destination);

// All of these throw SqlError; the rows of both tables stay whole then.

/// What the description of a loaded table says.
Destination destination_of(zmFBConn& connection, const std::string& beside);

/// Gives the table up, drops it and these views on it, and makes it anew, unfinished. When it cannot be
/// dropped, other programs having it in use perhaps, everything is as before; `again` are the statements for
/// what went with it.
void make_room(zmFBConn& connection, const std::string& table, std::span<const DriverColumn> columns,
               const std::vector<Name>& views, const std::vector<std::string>& again);

/// The columns of the table beside, but for the driver's own, as that was made with them.
std::vector<DriverColumn> made_columns_of(zmFBConn& connection, const std::string& beside);

/// Brings the rows of the table beside, which is held until then, into the unfinished one, whose columns are
/// the same, finishes that and runs the statements of `again`, in one transaction; then drops the one beside.
/// Returns what is to be said of those of `again` that the engine has refused.
std::vector<std::string> move_in(zmFBConn& connection, ImportHold& hold, const std::string& table,
                                 const std::vector<std::string>& again);

/// Adds the rows of the table beside, which is held until then, to those of `table`, which has its columns,
/// in one transaction; then drops it.
void add_rows(zmFBConn& connection, ImportHold& hold, const std::string& table);

/// Puts the counting generators of a table right, which count rows too that a process had added when it was
/// killed. Not while others change the database, as far as this user sees that; returns whether they are
/// right now.
bool recount(zmFBConn& connection, const std::string& table);

}  // namespace zmfb::tool
