#include <new>

#include "c/statement.h"

using namespace zmfb::c;

namespace {

zmfb::Transaction begun(zmfb::zmFBConn& connection, zmfb_access access) {
    if (access == ZMFB_BATCH) return zmfb::Transaction::batch(connection);
    return zmfb::Transaction(connection,
                             access == ZMFB_READ_ONLY ? zmfb::Access::read_only : zmfb::Access::read_write);
}

// Runs `work` on a transaction that was begun.
template <class Work>
zmfb_status on_begun(zmfb_transaction* handle, Work work) noexcept {
    return on(handle, [&](zmfb_transaction& transaction) {
        if (!transaction.work) return fail(ZMFB_WRONG_ARGUMENT, "the transaction was not begun");
        work(*transaction.work);
        return ZMFB_OK;
    });
}

}  // namespace

zmfb_transaction* zmfb_new_transaction(void) { return new (std::nothrow) zmfb_transaction; }

void zmfb_free_transaction(zmfb_transaction* transaction) { delete transaction; }

zmfb_status zmfb_begin(zmfb_transaction* transaction, const zmfb_value* connection, zmfb_access access) {
    return on(transaction, [=](zmfb_transaction& handle) {
        if (connection == nullptr) return fail_null();
        if (connection->value.object() == nullptr) return fail_kind(Kind::object, connection->value);
        if (access > ZMFB_BATCH) return fail(ZMFB_OUT_OF_RANGE, "no such access");
        if (handle.work && handle.work->active())
            return fail(ZMFB_WRONG_ARGUMENT, "the transaction has begun already, and has not ended");
        zmfb::zmFBConn object = zmfb::zmFBConn::of(connection->value);
        handle.work.emplace(begun(object, access));
        return ZMFB_OK;
    });
}

zmfb_status zmfb_commit(zmfb_transaction* transaction) {
    return on_begun(transaction, [](zmfb::Transaction& work) { work.commit(); });
}

zmfb_status zmfb_roll_back(zmfb_transaction* transaction) {
    return on_begun(transaction, [](zmfb::Transaction& work) { work.roll_back(); });
}

zmfb_status zmfb_transaction_error(const zmfb_transaction* transaction, int* sqlcode, const char** sqlstate,
                                   const char** text) {
    return tell_failure(transaction, sqlcode, sqlstate, text);
}

zmfb_status zmfb_set_database_encoding(const zmfb_value* connection, const char* name) {
    if (connection == nullptr || name == nullptr) return fail_null();
    if (connection->value.object() == nullptr) return fail_kind(Kind::object, connection->value);
    return guard([=] {
        zmfb::zmFBConn object = zmfb::zmFBConn::of(connection->value);
        zmfb::set_database_encoding(object, name);
        return ZMFB_OK;
    });
}
