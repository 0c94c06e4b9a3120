#include "sql/client.h"

#include <cerrno>

// Exported for the engine's own sake, and in no header.
extern "C" void gds__prefix_lock(char* path, const char* file);

namespace zmfb::sql {

namespace {

constexpr unsigned short dialect = SQL_DIALECT_V6;

Client library;
Client* current = &library;

}  // namespace

Client& client() { return *current; }

Client* set_client(Client* replacement) {
    Client* before = current == &library ? nullptr : current;
    current = replacement != nullptr ? replacement : &library;
    return before;
}

// The items end with an int 0. A block of its own is asked for with a null pointer of length 0.
void Client::expand_dpb(char** block, short* length, const char* user, const char* password,
                        const char* role) {
    const char* const none = nullptr;
    *block = nullptr;
    *length = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    isc_expand_dpb(block, length, isc_dpb_user_name, user, isc_dpb_password, password, isc_dpb_sql_role_name,
                   role, isc_dpb_lc_messages, none, isc_dpb_lc_ctype, none, 0);
#pragma GCC diagnostic pop
}

void Client::free_block(char* block) { isc_free(block); }

ISC_STATUS Client::attach_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                   short length, const char* block) {
    return isc_attach_database(status, 0, name, database, length, block);
}

ISC_STATUS Client::create_database(ISC_STATUS* status, const char* name, isc_db_handle* database,
                                   short length, const char* block) {
    return isc_create_database(status, 0, name, database, length, block, 0);
}

// The embedded engine repeats a call that succeeds for as long as errno is EINTR, which would be for ever:
// what a signal left behind earlier must not get there.
ISC_STATUS Client::detach_database(ISC_STATUS* status, isc_db_handle* database) {
    errno = 0;
    return isc_detach_database(status, database);
}

ISC_STATUS Client::cancel_operation(ISC_STATUS* status, isc_db_handle* database) {
    return fb_cancel_operation(status, database, fb_cancel_raise);
}

void Client::forget_cancellation(isc_db_handle* database) {
    ISC_STATUS_ARRAY nothing_to_forget;
    fb_cancel_operation(nothing_to_forget, database, fb_cancel_disable);
    fb_cancel_operation(nothing_to_forget, database, fb_cancel_enable);
}

ISC_STATUS Client::database_info(ISC_STATUS* status, isc_db_handle* database, short item_size,
                                 const char* items, short answer_size, char* answer) {
    return isc_database_info(status, database, item_size, items, answer_size, answer);
}

void Client::prefix_lock(char* path, const char* file) { gds__prefix_lock(path, file); }

ISC_STATUS Client::start_transaction(ISC_STATUS* status, isc_tr_handle* transaction, isc_db_handle* database,
                                     unsigned short length, const char* block) {
    return isc_start_transaction(status, transaction, 1, database, length, block);
}

ISC_STATUS Client::commit_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    return isc_commit_transaction(status, transaction);
}

ISC_STATUS Client::rollback_transaction(ISC_STATUS* status, isc_tr_handle* transaction) {
    return isc_rollback_transaction(status, transaction);
}

ISC_STATUS Client::prepare(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                           const char* statement, const char* text, XSQLDA* output) {
    return isc_embed_dsql_prepare(status, database, transaction, statement, 0, text, dialect, output);
}

ISC_STATUS Client::describe(ISC_STATUS* status, const char* statement, XSQLDA* output) {
    return isc_embed_dsql_describe(status, statement, dialect, output);
}

ISC_STATUS Client::declare(ISC_STATUS* status, const char* statement, const char* cursor) {
    return isc_embed_dsql_declare(status, statement, cursor);
}

ISC_STATUS Client::open(ISC_STATUS* status, isc_tr_handle* transaction, const char* cursor) {
    return isc_embed_dsql_open(status, transaction, cursor, dialect, nullptr);
}

ISC_STATUS Client::fetch(ISC_STATUS* status, const char* cursor, XSQLDA* output) {
    return isc_embed_dsql_fetch(status, cursor, dialect, output);
}

ISC_STATUS Client::close(ISC_STATUS* status, const char* cursor) {
    return isc_embed_dsql_close(status, cursor);
}

ISC_STATUS Client::release(ISC_STATUS* status, const char* statement) {
    return isc_embed_dsql_release(status, statement);
}

ISC_STATUS Client::execute_immediate(ISC_STATUS* status, isc_db_handle* database, isc_tr_handle* transaction,
                                     const char* text) {
    return isc_embed_dsql_execute_immed(status, database, transaction, 0, text, dialect, nullptr);
}

int Client::sqlcode(const ISC_STATUS* status) { return static_cast<int>(isc_sqlcode(status)); }

void Client::version(char* text) { isc_get_client_version(text); }

void Client::sql_interprete(int sqlcode, char* text, short size) {
    isc_sql_interprete(static_cast<short>(sqlcode), text, size);
}

long Client::interpret(char* text, unsigned size, const ISC_STATUS** status) {
    return fb_interpret(text, size, status);
}

void Client::decode_timestamp(const ISC_TIMESTAMP* stamp, void* calendar) {
    isc_decode_timestamp(stamp, calendar);
}

}  // namespace zmfb::sql
