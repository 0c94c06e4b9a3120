/// Transactions and statements of C programs, and what every function of them goes through.
#pragma once

#include <zmfbconn/transaction.h>

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "c/guard.h"

struct zmfb_transaction {
    std::optional<zmfb::Transaction> work;
    std::optional<zmfb::SqlError> failure;
};

struct zmfb_statement {
    /// A value for a "?", which may be a view of `bytes`.
    struct Given {
        std::string bytes;
        std::optional<zmfb::Parameter> value;
    };
    /// What a field was read into, to live until the next row.
    struct Room {
        std::string text;
        zmfb::Bytes bytes;
    };

    std::optional<zmfb::Statement> prepared;
    std::vector<Given> given;
    std::optional<zmfb::Rows> rows;
    std::vector<Room> rooms;
    std::optional<zmfb::SqlError> failure;
};

namespace zmfb::c {

/// Goes to the next row of rows, and names their current one.
using RowReader = typed::RowIterator<Rows, const Row>;

/// The words of what several functions refuse.
inline zmfb_status fail_no_rows() noexcept {
    return fail(ZMFB_WRONG_ARGUMENT, "there are no rows: zmfb_query() comes first");
}
inline zmfb_status fail_no_column() noexcept { return fail(ZMFB_OUT_OF_RANGE, "no such column"); }

/// Runs `work` on a transaction or a statement, which keeps how it failed.
template <class Handle, class Work>
zmfb_status on(Handle* handle, Work work) noexcept {
    if (handle == nullptr) return fail_null();
    std::optional<SqlError> failure;
    const zmfb_status status = guard([&] {
        try {
            return work(*handle);
        } catch (const SqlError& error) {
            failure = error;
            throw;
        }
    });
    if (status != ZMFB_OK && status != ZMFB_END) handle->failure = std::move(failure);
    return status;
}

/// The same on a statement that must be prepared.
template <class Work>
zmfb_status on_prepared(zmfb_statement* handle, Work work) noexcept {
    return on(handle, [&](zmfb_statement& statement) {
        if (!statement.prepared) return fail(ZMFB_WRONG_ARGUMENT, "the statement is not prepared");
        return work(statement);
    });
}

/// Tells of the last failure.
template <class Handle>
zmfb_status tell_failure(const Handle* handle, int* sqlcode, const char** sqlstate,
                         const char** text) noexcept {
    if (handle == nullptr) return fail_null();
    const SqlError* const failure = handle->failure ? &*handle->failure : nullptr;
    if (sqlcode != nullptr) *sqlcode = failure == nullptr ? 0 : failure->sqlcode();
    if (sqlstate != nullptr) *sqlstate = failure == nullptr ? "" : failure->sqlstate().c_str();
    if (text != nullptr) *text = failure == nullptr ? "" : failure->message().c_str();
    return ZMFB_OK;
}

}  // namespace zmfb::c
