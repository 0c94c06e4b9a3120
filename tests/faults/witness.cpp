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

ISC_STATUS Witness::note(ISC_STATUS outcome) {
    if (outcome == io_error && !moment_.happened) {
        moment_ = now_;
        moment_.happened = true;
    }
    return outcome;
}

// The row that a blob belongs to was fetched, but is not taken before the blob has been read.
ISC_STATUS Witness::note_blob(ISC_STATUS outcome) {
    const bool happened = moment_.happened;
    note(outcome);
    if (!happened && moment_.happened) --moment_.rows;
    return outcome;
}

ISC_STATUS Witness::attach_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                    short length, const char* block) {
    const ISC_STATUS outcome = note(FaultyClient::attach_database(status, name, database, length, block));
    if (made(outcome)) ++attachments_;
    return outcome;
}

ISC_STATUS Witness::create_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                    short length, const char* block) {
    const ISC_STATUS outcome = note(FaultyClient::create_database(status, name, database, length, block));
    if (made(outcome)) ++attachments_;
    return outcome;
}

ISC_STATUS Witness::detach_database(ISC_STATUS* status, isc_db_handle* database) {
    const isc_db_handle before = *database;
    const ISC_STATUS outcome = note(FaultyClient::detach_database(status, database));
    if (outcome == io_error) not_detached_.push_back(before);
    if (made(outcome) || outcome == io_error) --attachments_;
    return outcome;
}

ISC_STATUS Witness::start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                      unsigned short length, const char* block) {
    now_ = {.happened = false, .transaction = now_.transaction + 1, .described = false, .rows = 0};
    rows_.push_back(0);
    return note(FaultyClient::start_transaction(status, transaction, database, length, block));
}

ISC_STATUS Witness::commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    return note(FaultyClient::commit_transaction(status, transaction));
}

ISC_STATUS Witness::rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    isc_tr_handle copy = *transaction;
    const ISC_STATUS outcome = note(FaultyClient::rollback_transaction(status, transaction));
    if (outcome == io_error && copy != isc_tr_handle()) {
        ISC_STATUS_ARRAY ignored;
        FaultyClient::rollback_transaction(ignored, &copy);
    }
    return outcome;
}

ISC_STATUS Witness::prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                            const char* statement, const char* text, XSQLDA* output) {
    const ISC_STATUS outcome =
        note(FaultyClient::prepare(status, database, transaction, statement, text, output));
    if (made(outcome)) ++prepared_;
    return outcome;
}

ISC_STATUS Witness::describe(ISC_STATUS* status, const char* statement, XSQLDA* output) {
    return note(FaultyClient::describe(status, statement, output));
}

ISC_STATUS Witness::declare(ISC_STATUS* status, const char* statement, const char* cursor) {
    now_.described = true;
    return note(FaultyClient::declare(status, statement, cursor));
}

ISC_STATUS Witness::open(ISC_STATUS* status, isc_tr_handle* transaction, const char* cursor) {
    return note(FaultyClient::open(status, transaction, cursor));
}

ISC_STATUS Witness::fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) {
    const ISC_STATUS outcome = note(FaultyClient::fetch(status, cursor, output));
    if (made(outcome)) {
        ++now_.rows;
        if (!rows_.empty()) ++rows_.back();
    }
    return outcome;
}

ISC_STATUS Witness::close(ISC_STATUS* status, const char* cursor) {
    return note(FaultyClient::close(status, cursor));
}

ISC_STATUS Witness::release(ISC_STATUS* status, const char* statement) {
    --prepared_;
    return note(FaultyClient::release(status, statement));
}

ISC_STATUS Witness::execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                      const char* text) {
    return note(FaultyClient::execute_immediate(status, database, transaction, text));
}

ISC_STATUS Witness::open_blob(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                              isc_blob_handle* blob, ISC_QUAD* id) {
    const ISC_STATUS outcome = note_blob(FaultyClient::open_blob(status, database, transaction, blob, id));
    if (made(outcome)) ++blobs_;
    return outcome;
}

ISC_STATUS Witness::blob_info(ISC_STATUS* status, isc_blob_handle* blob, short item_size, const char* items,
                              short answer_size, char* answer) {
    return note_blob(FaultyClient::blob_info(status, blob, item_size, items, answer_size, answer));
}

ISC_STATUS Witness::get_segment(ISC_STATUS* status, isc_blob_handle* blob, unsigned short* got,
                                unsigned short size, char* bytes) {
    return note_blob(FaultyClient::get_segment(status, blob, got, size, bytes));
}

ISC_STATUS Witness::close_blob(ISC_STATUS* status, isc_blob_handle* blob) {
    --blobs_;
    return note(FaultyClient::close_blob(status, blob));
}

}  // namespace zmfb::test
