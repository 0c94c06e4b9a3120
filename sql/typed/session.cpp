#include "sql/typed/session.h"

#include <fmt/format.h>

#include <map>
#include <utility>

#include "sql/attachments.h"
#include "sql/sessions.h"
#include "sql/state.h"
#include "sql/transaction.h"
#include "sql/typed/failure.h"
#include "sql/typed/statement.h"
#include "sql/typed/work.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/database.h"

namespace zmfb {

namespace {

using Sessions = std::map<isc_db_handle, std::shared_ptr<typed::Session>>;

Sessions& sessions() {
    // Never destroyed: the engine may be gone by then.
    static Sessions& all = *new Sessions;
    return all;
}

}  // namespace

namespace typed {

// The attachment's own reference goes with the detaching.
Session::Session(Firebird::IAttachment* attachment, isc_db_handle handle)
    : attachment_(attachment), handle_(handle) {
    sql::ObjectClient::retain(attachment);
}

Session::~Session() { end(); }

std::shared_ptr<Session> Session::of(zmFBConn& connection) {
    if (!connection.isconnected()) refuse(not_attached, "The object is not attached to a database");
    const auto found = sessions().find(sql::handle_of(connection.get("dbhndl").number()));
    if (found != sessions().end()) return found->second;
    if (!sql::has_object_interface()) {
        refuse(no_interface, fmt::format("{} has no object interface, which transactions of programs need: "
                                         "Firebird's client library from 3.0 on has it",
                                         client_version()));
    }
    refuse(not_attached, "The object's handle is none that this library has attached");
}

void Session::check_usable(std::string_view statement) const {
    try {
        if (const Status admitted = sql::admit(handle_); !admitted.ok())
            refuse(given_up, admitted.message(), statement);
    } catch (const Cancelled& cancelled_by) {
        refuse(cancelled, cancelled_by.what(), statement);
    }
}

Status Session::use(sql::NewTypes as) {
    if (as == new_types_) return {};
    if (structure_ == 0) {
        if (Status asked = sql::ask_structure(handle_, structure_); !asked.ok()) return asked;
    }
    if (structure_ < sql::structure_of_4) return {};
    Status done = sql::set_new_types(handle_, as);
    if (done.ok()) new_types_ = as;
    return done;
}

std::shared_ptr<Work>& shared_batch() {
    static std::shared_ptr<Work>& batch = *new std::shared_ptr<Work>;
    return batch;
}

std::shared_ptr<Work> Session::batch() const {
    const std::shared_ptr<Work>& open = shared_batch();
    if (open == nullptr || !open->active() || &open->session() != this)
        refuse(ended, "No batch is open on the object: starttransaction opens one");
    return open;
}

void Session::end() noexcept {
    if (attachment_ == nullptr) return;
    while (!works_.empty()) works_.back()->give_up();
    while (!statements_.empty()) statements_.back()->free();
    sql::ObjectClient::let_go(std::exchange(attachment_, nullptr));
}

}  // namespace typed

namespace sql {

namespace {

// The vector of the calls by handle has room for so much; texts in it are those of the status.
void copy_errors(const ISC_STATUS* from, ISC_STATUS* to) {
    const ISC_STATUS* const last = to + ISC_STATUS_LENGTH - 1;
    while (*from != isc_arg_end) {
        const int parts = *from == isc_arg_cstring ? 3 : 2;
        if (last - to < parts) break;
        for (int i = 0; i < parts; ++i) *to++ = *from++;
    }
    *to = isc_arg_end;
}

}  // namespace

bool has_object_interface() { return object_client().available(); }

void attach_session(ISC_STATUS* status, const char* name, isc_db_handle* handle, short length,
                    const char* block) {
    Firebird::IAttachment* attachment = nullptr;
    if (object_client().attach_database(typed::status(), name, &attachment, static_cast<unsigned>(length),
                                        block) != 0) {
        return copy_errors(ObjectClient::errors(typed::status()), status);
    }
    if (object_client().database_handle(status, handle, attachment) != 0) {
        *handle = isc_db_handle();
        if (object_client().detach_database(typed::status(), attachment) != 0)
            ObjectClient::let_go(attachment);
        return;
    }
    sessions()[*handle] = std::make_shared<typed::Session>(attachment, *handle);
}

void end_session(isc_db_handle handle) {
    const auto found = sessions().find(handle);
    if (found == sessions().end()) return;
    found->second->end();
    sessions().erase(found);
}

bool start_shared_batch(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle handle) {
    const auto session = sessions().find(handle);
    if (session == sessions().end()) return false;
    Firebird::ITransaction* started = nullptr;
    if (object_client().start_transaction(typed::status(), session->second->attachment(), &started,
                                          batch_block) != 0) {
        copy_errors(ObjectClient::errors(typed::status()), status);
        return true;
    }
    if (object_client().transaction_handle(status, transaction, started) == 0) {
        typed::shared_batch() = std::make_shared<typed::Work>(session->second, started);
    } else if (object_client().rollback_transaction(typed::status(), started) != 0) {
        ObjectClient::let_go(started);
    }
    return true;
}

void shared_batch_ended() {
    if (typed::shared_batch() != nullptr) typed::shared_batch()->ended("The batch was ended");
}

Status use_types_of_before(isc_db_handle handle) {
    const auto session = sessions().find(handle);
    return session == sessions().end() ? Status() : session->second->use(NewTypes::as_before);
}

bool is_writing() { return state().batch != isc_tr_handle() || typed::Work::writing() > 0; }

}  // namespace sql

}  // namespace zmfb
