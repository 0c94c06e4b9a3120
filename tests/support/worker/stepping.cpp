#include "tests/support/worker/stepping.h"

#include <iostream>
#include <stdexcept>
#include <string>

namespace zmfb::test {
namespace {

void stop_at(const char* what) {
    std::cout << "at " << what << std::endl;
    if (std::string line; !std::getline(std::cin, line)) throw std::runtime_error("nobody lets this go on");
}

}  // namespace

// A query is one step, since what it sees is settled when its transaction starts.
ISC_STATUS SteppingClient::start_transaction(ISC_STATUS* status, isc_tr_handle* transaction,
                                             isc_db_handle* database, unsigned short length,
                                             const char* block) {
    stop_at("start");
    started_ = true;
    return Client::start_transaction(status, transaction, database, length, block);
}

ISC_STATUS SteppingClient::execute_immediate(ISC_STATUS* status, isc_db_handle* database,
                                             isc_tr_handle* transaction, const char* text) {
    if (!started_) stop_at("change");
    started_ = false;
    changed_ = true;
    return Client::execute_immediate(status, database, transaction, text);
}

ISC_STATUS SteppingClient::commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    if (changed_) stop_at("commit");
    changed_ = false;
    return Client::commit_transaction(status, transaction);
}

ISC_STATUS SteppingClient::execute(Firebird::IStatus* status, Firebird::IStatement* statement,
                                   Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input,
                                   void* values, Firebird::IMessageMetadata* output, void* row) {
    stop_at("change");
    changed_ = true;
    return ObjectClient::execute(status, statement, transaction, input, values, output, row);
}

ISC_STATUS SteppingClient::open(Firebird::IStatus* status, Firebird::IStatement* statement,
                                Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input,
                                void* values, Firebird::IMessageMetadata* output,
                                Firebird::IResultSet** rows) {
    stop_at("query");
    return ObjectClient::open(status, statement, transaction, input, values, output, rows);
}

ISC_STATUS SteppingClient::commit_transaction(Firebird::IStatus* status,
                                              Firebird::ITransaction* transaction) {
    if (changed_) stop_at("commit");
    changed_ = false;
    return ObjectClient::commit_transaction(status, transaction);
}

}  // namespace zmfb::test
