/// Work on a database in single steps, each of which a test lets go.
#pragma once

#include "sql/client.h"
#include "sql/object_client.h"

namespace zmfb::test {

/// The client library with a stop before everything that others may see or that depends on what others did:
/// the start of a transaction, a statement and the commit of a change. At each stop a line "at ..." goes to
/// standard output, and it goes on when a line has come in. In use while it exists.
class SteppingClient : public sql::Client, public sql::ObjectClient {
  public:
    SteppingClient() : before_(sql::set_client(this)), objects_before_(sql::set_object_client(this)) {}
    ~SteppingClient() override {
        sql::set_client(before_);
        sql::set_object_client(objects_before_);
    }

    ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                 unsigned short length, const char* block) override;
    ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                 const char* text) override;
    ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) override;

    ISC_STATUS execute(Firebird::IStatus* status, Firebird::IStatement* statement,
                       Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input, void* values,
                       Firebird::IMessageMetadata* output, void* row) override;
    ISC_STATUS open(Firebird::IStatus* status, Firebird::IStatement* statement,
                    Firebird::ITransaction* transaction, Firebird::IMessageMetadata* input, void* values,
                    Firebird::IMessageMetadata* output, Firebird::IResultSet** rows) override;
    ISC_STATUS commit_transaction(Firebird::IStatus* status, Firebird::ITransaction* transaction) override;

  private:
    using sql::Client::open;

    sql::Client* before_;
    sql::ObjectClient* objects_before_;
    bool started_ = false;  ///< a transaction by handle, and nothing was done in it
    bool changed_ = false;  ///< something that was not committed
};

}  // namespace zmfb::test
