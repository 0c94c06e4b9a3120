// The object interface's calls of the faulty client.
#include <firebird/Interface.h>

#include "tests/support/faulty_client.h"

namespace zmfb::test {

using namespace Firebird;

void FaultyClient::put_failure(IStatus* status, const Fault& fault) {
    status->setErrors(vector_of(fault).data());
}

ISC_STATUS FaultyClient::attach_database(IStatus* status, const char* name, IAttachment** attachment,
                                         unsigned length, const char* block) {
    return pass(ClientCall::attach_database, status,
                [&] { return ObjectClient::attach_database(status, name, attachment, length, block); });
}

ISC_STATUS FaultyClient::detach_database(IStatus* status, IAttachment* attachment) {
    return pass(ClientCall::detach_database, status,
                [&] { return ObjectClient::detach_database(status, attachment); });
}

ISC_STATUS FaultyClient::database_handle(ISC_STATUS* status, isc_db_handle* handle, IAttachment* attachment) {
    return pass(ClientCall::database_handle, status,
                [&] { return ObjectClient::database_handle(status, handle, attachment); });
}

ISC_STATUS FaultyClient::transaction_handle(ISC_STATUS* status, isc_tr_handle* handle,
                                            ITransaction* transaction) {
    return pass(ClientCall::transaction_handle, status,
                [&] { return ObjectClient::transaction_handle(status, handle, transaction); });
}

ISC_STATUS FaultyClient::start_transaction(IStatus* status, IAttachment* attachment,
                                           ITransaction** transaction, std::span<const char> block) {
    transaction_blocks_.emplace_back(block.begin(), block.end());
    const ISC_STATUS code = pass(ClientCall::start_transaction, status, [&] {
        return ObjectClient::start_transaction(status, attachment, transaction, block);
    });
    if (code == 0) ++open_transactions_;
    return code;
}

ISC_STATUS FaultyClient::commit_transaction(IStatus* status, ITransaction* transaction) {
    const ISC_STATUS code = pass(ClientCall::commit_transaction, status,
                                 [&] { return ObjectClient::commit_transaction(status, transaction); });
    if (code == 0) --open_transactions_;
    return code;
}

ISC_STATUS FaultyClient::rollback_transaction(IStatus* status, ITransaction* transaction) {
    const ISC_STATUS code = pass(ClientCall::rollback_transaction, status,
                                 [&] { return ObjectClient::rollback_transaction(status, transaction); });
    if (code == 0) --open_transactions_;
    return code;
}

ISC_STATUS FaultyClient::prepare(IStatus* status, IAttachment* attachment, ITransaction* transaction,
                                 IStatement** statement, std::string_view text) {
    return pass(ClientCall::prepare, status,
                [&] { return ObjectClient::prepare(status, attachment, transaction, statement, text); });
}

ISC_STATUS FaultyClient::statement_type(IStatus* status, IStatement* statement, unsigned* type) {
    return pass(ClientCall::statement_type, status,
                [&] { return ObjectClient::statement_type(status, statement, type); });
}

ISC_STATUS FaultyClient::has_cursor(IStatus* status, IStatement* statement, bool* answer) {
    return pass(ClientCall::has_cursor, status,
                [&] { return ObjectClient::has_cursor(status, statement, answer); });
}

ISC_STATUS FaultyClient::input_message(IStatus* status, IStatement* statement, IMessageMetadata** message) {
    return pass(ClientCall::input_message, status,
                [&] { return ObjectClient::input_message(status, statement, message); });
}

ISC_STATUS FaultyClient::output_message(IStatus* status, IStatement* statement, IMessageMetadata** message) {
    return pass(ClientCall::output_message, status,
                [&] { return ObjectClient::output_message(status, statement, message); });
}

ISC_STATUS FaultyClient::release(IStatus* status, IStatement* statement) {
    return pass(ClientCall::release, status, [&] { return ObjectClient::release(status, statement); });
}

ISC_STATUS FaultyClient::describe(IStatus* status, IMessageMetadata* message,
                                  std::vector<sql::MessageItem>* items, unsigned* length) {
    return pass(ClientCall::describe, status,
                [&] { return ObjectClient::describe(status, message, items, length); });
}

ISC_STATUS FaultyClient::change_message(IStatus* status, IMessageMetadata* message,
                                        std::span<const sql::MessageChange> changes,
                                        IMessageMetadata** changed) {
    return pass(ClientCall::change_message, status,
                [&] { return ObjectClient::change_message(status, message, changes, changed); });
}

ISC_STATUS FaultyClient::execute(IStatus* status, IStatement* statement, ITransaction* transaction,
                                 IMessageMetadata* input, void* values, IMessageMetadata* output, void* row) {
    return pass(ClientCall::execute, status, [&] {
        return ObjectClient::execute(status, statement, transaction, input, values, output, row);
    });
}

ISC_STATUS FaultyClient::affected_records(IStatus* status, IStatement* statement, std::uint64_t* count) {
    return pass(ClientCall::affected_records, status,
                [&] { return ObjectClient::affected_records(status, statement, count); });
}

ISC_STATUS FaultyClient::open(IStatus* status, IStatement* statement, ITransaction* transaction,
                              IMessageMetadata* input, void* values, IMessageMetadata* output,
                              IResultSet** rows) {
    return pass(ClientCall::open, status, [&] {
        return ObjectClient::open(status, statement, transaction, input, values, output, rows);
    });
}

ISC_STATUS FaultyClient::fetch(IStatus* status, IResultSet* rows, void* row) {
    return pass(ClientCall::fetch, status, [&] { return ObjectClient::fetch(status, rows, row); });
}

ISC_STATUS FaultyClient::close(IStatus* status, IResultSet* rows) {
    return pass(ClientCall::close, status, [&] { return ObjectClient::close(status, rows); });
}

ISC_STATUS FaultyClient::create_blob(IStatus* status, IAttachment* attachment, ITransaction* transaction,
                                     IBlob** blob, ISC_QUAD* id, std::span<const char> block) {
    return pass(ClientCall::create_blob, status,
                [&] { return ObjectClient::create_blob(status, attachment, transaction, blob, id, block); });
}

ISC_STATUS FaultyClient::open_blob(IStatus* status, IAttachment* attachment, ITransaction* transaction,
                                   IBlob** blob, ISC_QUAD* id, std::span<const char> block) {
    return pass(ClientCall::open_blob, status,
                [&] { return ObjectClient::open_blob(status, attachment, transaction, blob, id, block); });
}

ISC_STATUS FaultyClient::blob_info(IStatus* status, IBlob* blob, std::span<const char> items,
                                   std::span<char> answer) {
    return pass(ClientCall::blob_info, status,
                [&] { return ObjectClient::blob_info(status, blob, items, answer); });
}

ISC_STATUS FaultyClient::get_segment(IStatus* status, IBlob* blob, std::span<char> bytes, unsigned* got) {
    return pass(ClientCall::get_segment, status,
                [&] { return ObjectClient::get_segment(status, blob, bytes, got); });
}

ISC_STATUS FaultyClient::put_segment(IStatus* status, IBlob* blob, std::string_view bytes) {
    return pass(ClientCall::put_segment, status,
                [&] { return ObjectClient::put_segment(status, blob, bytes); });
}

ISC_STATUS FaultyClient::close_blob(IStatus* status, IBlob* blob) {
    return pass(ClientCall::close_blob, status, [&] { return ObjectClient::close_blob(status, blob); });
}

ISC_STATUS FaultyClient::cancel_blob(IStatus* status, IBlob* blob) {
    return pass(ClientCall::cancel_blob, status, [&] { return ObjectClient::cancel_blob(status, blob); });
}

}  // namespace zmfb::test
