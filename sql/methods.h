/// The methods of sql/: their routines, bound to their declarations.
#pragma once

#include "conn/self.h"
#include "zmfbconn/methods/sql.h"

namespace zmfb::sql {

/// assemblestatement(stmt, param): the template with each {placeholder, value} pair of `param` applied in
/// order, every occurrence replaced as plain text. Values are not quoted; a placeholder without a pair stays.
/// A value that is no text is an argument error, which ends the filling: no statement goes out without it.
Value assemblestatement(Self& self, Args args);
/// cachedupdate(stmt): runs a statement in the batch transaction. Returns "" or the SQLCODE error text, which
/// is also logged at level 1; the batch stays open either way. Without a database: "".
Value cachedupdate(Self& self, Args args);
/// commitchanges(): commits the batch transaction, whatever became of its statements. NIL; a failure is not
/// reported.
Value commitchanges(Self& self, Args args);
/// executequery(stmt): what internalselect returns.
Value executequery(Self& self, Args args);
/// executeudfskippad(col, tbl, recno): the row {skippad(col)} of one record, {} when there is none.
Value executeudfskippad(Self& self, Args args);
/// executeupdate(stmt): runs a statement in a transaction of its own, committed when it succeeds and rolled
/// back when not. Returns "" or the SQLCODE error text, which is also logged at level 1. Without a database:
/// "".
Value executeupdate(Self& self, Args args);
/// getfirstrows(tbl, cond, order, plan, qti, sk): header and up to `qti` rows from offset `sk`, {} when there
/// is no row. The texts are SQL and go in as they are.
Value getfirstrows(Self& self, Args args);
/// getrow(tbl, cond, order, plan, sk): the one row at offset `sk`, bare, {} when there is none.
Value getrow(Self& self, Args args);
/// internalselect(stmt): runs a SELECT in a read-only snapshot of its own and returns {header, row, row,
/// ...}.
///
/// The header has a {name, type letter, length, decimals} for each column; every value of a row is a text,
/// NULL the text "NULL". A failure is logged at level 1 and raises nothing: {} before the header was known,
/// else what there was until then. {} without a database. Logs the statement at level 8 and each column at
/// level 10.
Value internalselect(Self& self, Args args);
/// looptest(tbl, cond, order, cols): raises `tbl` as an error and returns {}.
Value looptest(Self& self, Args args);
/// starttransaction(): opens the batch transaction, a snapshot. NIL; a failure is not reported. Until
/// commitchanges no other method that runs SQL should be called.
Value starttransaction(Self& self, Args args);

/// The routine of each method.
inline constexpr host::Method methods[] = {
    bound(m::assemblestatement, assemblestatement), bound(m::cachedupdate, cachedupdate),
    bound(m::commitchanges, commitchanges),         bound(m::executequery, executequery),
    bound(m::executeudfskippad, executeudfskippad), bound(m::executeupdate, executeupdate),
    bound(m::getfirstrows, getfirstrows),           bound(m::getrow, getrow),
    bound(m::internalselect, internalselect),       bound(m::looptest, looptest),
    bound(m::starttransaction, starttransaction),
};

}  // namespace zmfb::sql
