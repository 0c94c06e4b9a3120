#include "sql/typed/work.h"

#include <algorithm>
#include <array>
#include <utility>

#include "sql/sessions.h"
#include "sql/state.h"
#include "sql/transaction.h"
#include "sql/typed/failure.h"

namespace zmfb::typed {

using sql::object_client;

namespace {

int writers = 0;

// One thread cannot wait for what it would have to end itself.
Firebird::ITransaction* start(Session& session, bool read_only) {
    session.check_usable();
    std::array<char, 4> block = read_only ? sql::query_block : sql::batch_block;
    if (sql::is_writing()) std::ranges::replace(block, char{isc_tpb_wait}, char{isc_tpb_nowait});
    Firebird::ITransaction* transaction = nullptr;
    check(object_client().start_transaction(status(), session.attachment(), &transaction, block));
    return transaction;
}

}  // namespace

int Work::writing() { return writers; }

Work::Work(std::shared_ptr<Session> session, bool read_only)
    : session_(std::move(session)), transaction_(start(*session_, read_only)), read_only_(read_only) {
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
