/// The one way to the Firebird client library: each call that is made has one virtual function here, which
/// forwards it as it stands. A test puts an object of a derived class in its place and makes any single call
/// fail, counts calls, or answers like another engine.
///
/// The functions keep the client's own conventions: the status vector comes first and holds the outcome;
/// handles and blocks are written through pointers.
#pragma once

#include <ibase.h>

namespace zmfb::sql {

class Client {
  public:
    Client() = default;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    virtual ~Client() = default;

    /// Makes a parameter block of user, password and role; message language and character set are named
    /// without a value. The block is given back through free_block().
    virtual void expand_dpb(char** block, short* length, const char* user, const char* password,
                            const char* role);
    virtual void free_block(char* block);
    virtual ISC_STATUS attach_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                       short length, const char* block);
    virtual ISC_STATUS create_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                       short length, const char* block);
    virtual ISC_STATUS detach_database(ISC_STATUS* status, isc_db_handle* database);
    /// Lets the call that another thread makes on this attachment fail; it need not have one.
    virtual ISC_STATUS cancel_operation(ISC_STATUS* status, isc_db_handle* database);
    /// Takes such a request back that no call has failed of yet. A server keeps it, and the next thing it is
    /// asked fails of it: often one that nobody waits for, such as freeing a statement, which keeps its table
    /// in use then.
    virtual void forget_cancellation(isc_db_handle* database);
    virtual ISC_STATUS database_info(ISC_STATUS* status, isc_db_handle* database, short item_size,
                                     const char* items, short answer_size, char* answer);
    /// Writes the path of a file in the folder of the embedded engine's locks, less than PATH_MAX bytes. The
    /// engine's choice of the folder is made when it is asked first.
    virtual void prefix_lock(char* path, const char* file);

    virtual ISC_STATUS start_transaction(ISC_STATUS* status, isc_tr_handle* transaction,
                                         isc_db_handle* database, unsigned short length, const char* block);
    virtual ISC_STATUS commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction);
    virtual ISC_STATUS rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction);

    virtual ISC_STATUS prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                               const char* statement, const char* text, XSQLDA* output);
    virtual ISC_STATUS describe(ISC_STATUS* status, const char* statement, XSQLDA* output);
    virtual ISC_STATUS declare(ISC_STATUS* status, const char* statement, const char* cursor);
    virtual ISC_STATUS open(ISC_STATUS* status, isc_tr_handle* transaction, const char* cursor);
    virtual ISC_STATUS fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output);
    virtual ISC_STATUS close(ISC_STATUS* status, const char* cursor);
    /// Forgets a prepared statement.
    virtual ISC_STATUS release(ISC_STATUS* status, const char* statement);
    virtual ISC_STATUS execute_immediate(ISC_STATUS* status, isc_db_handle* database,
                                         isc_tr_handle* transaction, const char* text);

    virtual int sqlcode(const ISC_STATUS* status);
    /// Writes the message of an SQLCODE, at most `size` bytes with the zero at its end.
    virtual void sql_interprete(int sqlcode, char* text, short size);
    /// Writes the next line of the message in the vector and moves on; 0 when there is none.
    virtual long interpret(char* text, unsigned size, const ISC_STATUS** status);
    virtual void decode_timestamp(const ISC_TIMESTAMP* stamp, void* calendar);
    /// Writes the version of the client library, less than 256 bytes.
    virtual void version(char* text);
};

/// The client in use.
Client& client();

/// Puts `replacement` in use, or the library itself for a null pointer; returns the one before, null for the
/// library.
Client* set_client(Client* replacement);

}  // namespace zmfb::sql
