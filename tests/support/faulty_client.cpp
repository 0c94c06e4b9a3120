#include "tests/support/faulty_client.h"

namespace zmfb::test {

std::string name_of(ClientCall call) {
    static constexpr std::array<const char*, client_call_count> names = {"attach_database",
                                                                         "create_database",
                                                                         "detach_database",
                                                                         "database_info",
                                                                         "start_transaction",
                                                                         "commit_transaction",
                                                                         "rollback_transaction",
                                                                         "prepare",
                                                                         "describe",
                                                                         "declare",
                                                                         "open",
                                                                         "fetch",
                                                                         "close",
                                                                         "release",
                                                                         "execute_immediate",
                                                                         "open_blob",
                                                                         "blob_info",
                                                                         "get_segment",
                                                                         "close_blob",
                                                                         "database_handle",
                                                                         "transaction_handle",
                                                                         "statement_type",
                                                                         "has_cursor",
                                                                         "input_message",
                                                                         "output_message",
                                                                         "change_message",
                                                                         "execute",
                                                                         "affected_records",
                                                                         "create_blob",
                                                                         "put_segment",
                                                                         "cancel_blob"};
    return names[static_cast<std::size_t>(call)];
}

const std::string& FaultyClient::io_error_text() {
    static const std::string text =
        "Unsuccessful execution caused by a system error that precludes successful execution of subsequent "
        "statements";
    return text;
}

void FaultyClient::fail(ClientCall call, int nth, ISC_STATUS code) { faults_.push_back({call, nth, code}); }

void FaultyClient::fail_on_file(ClientCall call, const std::string& file) {
    faults_.push_back({call, 1, io_error, file});
}

bool FaultyClient::all_failed() const {
    for (const Fault& fault : faults_) {
        if (fault.left > 0) return false;
    }
    return true;
}

const FaultyClient::Fault* FaultyClient::due(ClientCall call) {
    ++counts_[static_cast<std::size_t>(call)];
    const Fault* due = nullptr;
    for (Fault& fault : faults_) {
        if (fault.call == call && --fault.left == 0) due = &fault;
    }
    return due;
}

std::vector<ISC_STATUS> FaultyClient::vector_of(const Fault& fault) {
    std::vector<ISC_STATUS> vector = {isc_arg_gds, fault.code};
    if (!fault.file.empty()) {
        for (const char* text : {"write", fault.file.c_str()}) {
            vector.push_back(isc_arg_string);
            vector.push_back(reinterpret_cast<ISC_STATUS>(text));
        }
    }
    vector.push_back(isc_arg_end);
    return vector;
}

void FaultyClient::put_failure(ISC_STATUS* status, const Fault& fault) {
    for (const ISC_STATUS part : vector_of(fault)) *status++ = part;
}

void FaultyClient::expand_dpb(char** block, short* length, const char* user, const char* password,
                              const char* role) {
    ++open_blocks_;
    Client::expand_dpb(block, length, user, password, role);
}

void FaultyClient::free_block(char* block) {
    --open_blocks_;
    Client::free_block(block);
}

ISC_STATUS FaultyClient::attach_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                         short length, const char* block) {
    return pass(ClientCall::attach_database, status,
                [&] { return Client::attach_database(status, name, database, length, block); });
}

ISC_STATUS FaultyClient::create_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                         short length, const char* block) {
    return pass(ClientCall::create_database, status,
                [&] { return Client::create_database(status, name, database, length, block); });
}

ISC_STATUS FaultyClient::detach_database(ISC_STATUS* status, isc_db_handle* database) {
    return pass(ClientCall::detach_database, status,
                [&] { return Client::detach_database(status, database); });
}

ISC_STATUS FaultyClient::database_info(ISC_STATUS* status, isc_db_handle* database, short item_size,
                                       const char* items, short answer_size, char* answer) {
    return pass(ClientCall::database_info, status, [&] {
        return Client::database_info(status, database, item_size, items, answer_size, answer);
    });
}

ISC_STATUS FaultyClient::start_transaction(ISC_STATUS* status, isc_tr_handle* transaction,
                                           isc_db_handle* database, unsigned short length,
                                           const char* block) {
    transaction_blocks_.emplace_back(block, length);
    const ISC_STATUS code = pass(ClientCall::start_transaction, status, [&] {
        return Client::start_transaction(status, transaction, database, length, block);
    });
    if (code == 0) ++open_transactions_;
    return code;
}

ISC_STATUS FaultyClient::commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    const ISC_STATUS code = pass(ClientCall::commit_transaction, status,
                                 [&] { return Client::commit_transaction(status, transaction); });
    if (code == 0) --open_transactions_;
    return code;
}

ISC_STATUS FaultyClient::rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    const ISC_STATUS code = pass(ClientCall::rollback_transaction, status,
                                 [&] { return Client::rollback_transaction(status, transaction); });
    if (code == 0) --open_transactions_;
    return code;
}

ISC_STATUS FaultyClient::prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* statement, const char* text, XSQLDA* output) {
    return pass(ClientCall::prepare, status,
                [&] { return Client::prepare(status, database, transaction, statement, text, output); });
}

ISC_STATUS FaultyClient::describe(ISC_STATUS* status, const char* statement, XSQLDA* output) {
    return pass(ClientCall::describe, status, [&] { return Client::describe(status, statement, output); });
}

ISC_STATUS FaultyClient::declare(ISC_STATUS* status, const char* statement, const char* cursor) {
    return pass(ClientCall::declare, status, [&] { return Client::declare(status, statement, cursor); });
}

ISC_STATUS FaultyClient::open(ISC_STATUS* status, isc_tr_handle* transaction, const char* cursor) {
    return pass(ClientCall::open, status, [&] { return Client::open(status, transaction, cursor); });
}

ISC_STATUS FaultyClient::fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) {
    return pass(ClientCall::fetch, status, [&] { return Client::fetch(status, cursor, output); });
}

ISC_STATUS FaultyClient::close(ISC_STATUS* status, const char* cursor) {
    return pass(ClientCall::close, status, [&] { return Client::close(status, cursor); });
}

ISC_STATUS FaultyClient::release(ISC_STATUS* status, const char* statement) {
    return pass(ClientCall::release, status, [&] { return Client::release(status, statement); });
}

ISC_STATUS FaultyClient::execute_immediate(ISC_STATUS* status, isc_db_handle* database,
                                           isc_tr_handle* transaction, const char* text) {
    return pass(ClientCall::execute_immediate, status,
                [&] { return Client::execute_immediate(status, database, transaction, text); });
}

}  // namespace zmfb::test
