#include "tests/faults/witness.h"

namespace zmfb::test {

Witness::~Witness() {
    ISC_STATUS_ARRAY ignored;
    for (isc_db_handle& database : not_detached_) Client::detach_database(ignored, &database);
}

int Witness::calls() const {
    int sum = 0;
    for (std::size_t call = 0; call < client_call_count; ++call) sum += count(static_cast<ClientCall>(call));
    return sum;
}

void Witness::asked(ClientCall call) {
    if (call == ClientCall::start_transaction) {
        now_ = {.happened = false, .transaction = now_.transaction + 1, .described = false, .rows = 0};
        rows_.push_back(0);
    }
    if (call == ClientCall::declare) now_.described = true;
    if (call == ClientCall::release) --prepared_;
}

void Witness::answered(ClientCall call, ISC_STATUS outcome) {
    if (outcome == io_error && !moment_.happened) {
        moment_ = now_;
        moment_.happened = true;
    }
    if (outcome != 0) return;
    if (call == ClientCall::attach_database || call == ClientCall::create_database) ++attachments_;
    if (call == ClientCall::detach_database) --attachments_;
    if (call == ClientCall::prepare) ++prepared_;
    if (call == ClientCall::fetch) {
        ++now_.rows;
        if (!rows_.empty()) ++rows_.back();
    }
}

ISC_STATUS Witness::detach_database(ISC_STATUS* status, isc_db_handle* database) {
    const isc_db_handle before = *database;
    const ISC_STATUS outcome = FaultyClient::detach_database(status, database);
    if (outcome == io_error) {
        not_detached_.push_back(before);
        --attachments_;
    }
    return outcome;
}

ISC_STATUS Witness::rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    isc_tr_handle copy = *transaction;
    const ISC_STATUS outcome = FaultyClient::rollback_transaction(status, transaction);
    if (outcome == io_error && copy != isc_tr_handle()) {
        ISC_STATUS_ARRAY ignored;
        FaultyClient::rollback_transaction(ignored, &copy);
    }
    return outcome;
}

}  // namespace zmfb::test
