#include "conn/log.h"
#include "conn/raise.h"
#include "host/text.h"
#include "sql/attachments.h"
#include "sql/methods.h"
#include "sql/sessions.h"
#include "sql/state.h"
#include "sql/statement_text.h"
#include "sql/transaction.h"

namespace zmfb::sql {

namespace {

void drop_batch() {
    ClassState& shared = state();
    client().rollback_transaction(shared.status, &shared.batch);
    shared_batch_ended();
    shared.batch = isc_tr_handle();
}

}  // namespace

Value executeupdate(Self& self, Args args) {
    const Value& stmt = args[0];
    call(self, "writelog", "[UPDT] Statement: " + stmt, 7);
    const isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return "";
    Transaction transaction(database, update_block);
    int code = transaction.start_code();
    if (code >= 0) code = refuse_unfit(stmt);
    if (code >= 0) code = transaction.execute(text_of(stmt).c_str());
    if (code >= 0) code = transaction.commit();
    if (code == 0) return "";
    return log_failure(code);
}

// On top of an open batch the client refuses to start another: the open one goes on.
Value starttransaction(Self& self, Args) {
    conn::log_event(7, "[TRANS] Starting Transaction");
    isc_db_handle database = handle_of(self);
    if (database == isc_db_handle() || admit(database) != 0) return {};
    ClassState& shared = state();
    const bool is_open = shared.batch != isc_tr_handle();
    if (is_open || !start_shared_batch(shared.status, &shared.batch, database)) {
        client().start_transaction(shared.status, &shared.batch, &database, batch_block.size(),
                                   batch_block.data());
    }
    if (sqlcode() >= 0) shared.batch_database = database;
    return {};
}

Value cachedupdate(Self& self, Args args) {
    const std::string statement = text_of(args[0]);
    conn::log_event(7, "[CACHE] Statement: " + statement);
    isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return "";
    int code = admit(database);
    if (code == 0) code = refuse_unfit(args[0]);
    if (code == 0) {
        client().execute_immediate(state().status, &database, &state().batch, statement.c_str());
        code = sqlcode();
    }
    return code == 0 ? Value("") : Value(log_failure(code));
}

// A transaction whose commit failed is rolled back: left open, it would stand in the way of every later
// batch.
Value commitchanges(Self& self, Args) {
    conn::log_event(7, "[COMMIT] Commit");
    const isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return {};
    int code = admit(database);
    if (code == 0) {
        client().commit_transaction(state().status, &state().batch);
        code = sqlcode();
    }
    if (code < 0) drop_batch();
    shared_batch_ended();
    return {};
}

Value executequery(Self& self, Args args) { return call(self, "internalselect", args[0]); }

Value looptest(Self&, Args args) {
    conn::raiseerror(args[0]);
    return Value::array_of_size(0);
}

}  // namespace zmfb::sql
