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

// A warning is told as a failure is.
Value text_of_outcome(const Status& done) {
    if (done.sqlcode() == 0) return "";
    return log_failure(done.sqlcode());
}

}  // namespace

Value executeupdate(Self& self, Args args) {
    const Value& stmt = args[0];
    call(self, "writelog", "[UPDT] Statement: " + stmt, 7);
    const isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return "";
    Transaction transaction(database, update_block);
    Status done = transaction.started();
    if (done.ok()) done = refuse_unfit(stmt);
    if (done.ok()) done = transaction.execute(text_of(stmt).c_str());
    if (done.ok()) done = transaction.commit();
    return text_of_outcome(done);
}

Value refused_update(Self& self, const Value& stmt, int sqlcode, std::string_view reason) {
    call(self, "writelog", "[UPDT] Statement: " + stmt, 7);
    return handle_of(self) == isc_db_handle() ? "" : text_of_outcome(refuse(sqlcode, reason));
}

// On top of an open batch the client refuses to start another: the open one goes on.
Value starttransaction(Self& self, Args) {
    conn::log_event(7, "[TRANS] Starting Transaction");
    isc_db_handle database = handle_of(self);
    if (database == isc_db_handle() || !admit(database).ok()) return {};
    ClassState& shared = state();
    const bool is_open = shared.batch != isc_tr_handle();
    if (is_open || !start_shared_batch(shared.status, &shared.batch, database)) {
        client().start_transaction(shared.status, &shared.batch, &database, batch_block.size(),
                                   batch_block.data());
    }
    if (outcome().ok()) shared.batch_database = database;
    return {};
}

Value cachedupdate(Self& self, Args args) {
    const std::string statement = text_of(args[0]);
    conn::log_event(7, "[CACHE] Statement: " + statement);
    isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return "";
    Status done = admit(database);
    if (done.ok()) done = refuse_unfit(args[0]);
    if (done.ok()) {
        client().execute_immediate(state().status, &database, &state().batch, statement.c_str());
        done = outcome();
    }
    return text_of_outcome(done);
}

// A transaction whose commit failed is rolled back: left open, it would stand in the way of every later
// batch.
Value commitchanges(Self& self, Args) {
    conn::log_event(7, "[COMMIT] Commit");
    const isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return {};
    Status done = admit(database);
    if (done.ok()) {
        client().commit_transaction(state().status, &state().batch);
        done = outcome();
    }
    if (!done.ok()) drop_batch();
    shared_batch_ended();
    return {};
}

Value executequery(Self& self, Args args) { return call(self, "internalselect", args[0]); }

Value looptest(Self&, Args args) {
    conn::raiseerror(args[0]);
    return Value::array_of_size(0);
}

}  // namespace zmfb::sql
