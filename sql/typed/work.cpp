#include "sql/typed/work.h"

#include <string>
#include <utility>

#include "sql/sessions.h"
#include "sql/state.h"
#include "sql/typed/failure.h"

namespace zmfb::typed {

using sql::object_client;

namespace {

int writers = 0;

// One thread cannot wait for what it would have to end itself.
Firebird::ITransaction* start(Session& session, Access access, Isolation isolation) {
    session.check_usable();
    std::string block(1, char{isc_tpb_version1});
    block += access == Access::read_only ? char{isc_tpb_read} : char{isc_tpb_write};
    block += sql::is_writing() ? char{isc_tpb_nowait} : char{isc_tpb_wait};
    block += isolation == Isolation::snapshot ? char{isc_tpb_concurrency} : char{isc_tpb_read_committed};
    if (isolation == Isolation::read_committed) block += char{isc_tpb_rec_version};
    if (isolation == Isolation::newest) block += char{isc_tpb_no_rec_version};
    Firebird::ITransaction* transaction = nullptr;
    check(object_client().start_transaction(status(), session.attachment(), &transaction, block));
    return transaction;
}

}  // namespace

int Work::writing() { return writers; }

Work::Work(std::shared_ptr<Session> session, Access access, Isolation isolation)
    : session_(std::move(session)),
      transaction_(start(*session_, access, isolation)),
      read_only_(access == Access::read_only) {
    session_->add(*this);
    if (!read_only_) ++writers;
}

Work::Work(std::shared_ptr<Session> session, Firebird::ITransaction* batch)
    : session_(std::move(session)), transaction_(batch), is_batch_(true) {
    // The call by handle that ends it takes one reference with it.
    sql::ObjectClient::retain(batch);
    session_->add(*this);
    ++writers;
}

Work::~Work() { give_up(); }

void Work::check_active(std::string_view statement) const {
    if (transaction_ == nullptr) refuse(typed::ended, how_ended_, statement);
}

void Work::ended(const char* how) noexcept {
    if (transaction_ == nullptr) return;
    Firebird::ITransaction* const transaction = std::exchange(transaction_, nullptr);
    how_ended_ = how;
    if (is_batch_) {
        sql::ObjectClient::let_go(transaction);
        sql::state().batch = isc_tr_handle();
    }
    session_->remove(*this);
    if (!read_only_) --writers;
    for (Dependent* const dependent : std::exchange(dependents_, {})) dependent->transaction_ended();
}

// A transaction whose commit failed is of no more use: rolled back, it at least lets others go on.
void Work::commit() {
    check_active();
    session_->check_usable();
    const ISC_STATUS code = object_client().commit_transaction(status(), transaction());
    if (code == 0) return ended("The transaction was committed");
    try {
        check(code);
    } catch (...) {
        give_up();
        throw;
    }
}

void Work::roll_back() {
    const ISC_STATUS code = object_client().rollback_transaction(status(), transaction());
    if (code != 0) sql::ObjectClient::let_go(transaction_);
    ended("The transaction was rolled back");
    check(code);
}

void Work::give_up() noexcept {
    if (transaction_ == nullptr) return;
    if (object_client().rollback_transaction(status(), transaction_) != 0)
        sql::ObjectClient::let_go(transaction_);
    ended("The transaction was rolled back");
}

}  // namespace zmfb::typed
