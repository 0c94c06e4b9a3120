#include "c/statement.h"

#include <iterator>
#include <new>

using namespace zmfb::c;

namespace {

// Gives up the rows of an earlier run, and runs `work` with the values that were given.
template <class Work>
zmfb_status run(zmfb_statement* handle, Work work) noexcept {
    return on_prepared(handle, [&](zmfb_statement& statement) {
        statement.rows.reset();
        std::vector<zmfb::Parameter> values;
        for (const zmfb_statement::Given& given : statement.given) {
            if (!given.value) {
                return fail(ZMFB_WRONG_ARGUMENT,
                            "parameter " + std::to_string(values.size() + 1) + " was given no value");
            }
            values.push_back(*given.value);
        }
        work(statement, values);
        return ZMFB_OK;
    });
}

}  // namespace

zmfb_statement* zmfb_new_statement(void) { return new (std::nothrow) zmfb_statement; }

void zmfb_free_statement(zmfb_statement* statement) { delete statement; }

zmfb_status zmfb_prepare_statement(zmfb_statement* statement, zmfb_transaction* transaction,
                                   const char* sql) {
    return on(statement, [=](zmfb_statement& handle) {
        if (transaction == nullptr || sql == nullptr) return fail_null();
        if (!transaction->work) return fail(ZMFB_WRONG_ARGUMENT, "the transaction was not begun");
        zmfb::Statement prepared = transaction->work->prepare(sql);
        std::vector<zmfb_statement::Given> given(prepared.parameter_count());
        std::vector<zmfb_statement::Room> rooms(prepared.columns().size());
        handle.rows.reset();
        handle.prepared = std::move(prepared);
        handle.given = std::move(given);
        handle.rooms = std::move(rooms);
        return ZMFB_OK;
    });
}

zmfb_status zmfb_parameter_count(zmfb_statement* statement, size_t* count) {
    return on_prepared(statement, [=](zmfb_statement& handle) {
        if (count == nullptr) return fail_null();
        *count = handle.given.size();
        return ZMFB_OK;
    });
}

zmfb_status zmfb_execute(zmfb_statement* statement, int64_t* changed) {
    return run(statement, [=](zmfb_statement& handle, const std::vector<zmfb::Parameter>& values) {
        const std::int64_t count = handle.prepared->execute(values);
        if (changed != nullptr) *changed = count;
    });
}

zmfb_status zmfb_query(zmfb_statement* statement) {
    return run(statement, [](zmfb_statement& handle, const std::vector<zmfb::Parameter>& values) {
        handle.rows = handle.prepared->rows(values);
    });
}

zmfb_status zmfb_next(zmfb_statement* statement) {
    return on_prepared(statement, [](zmfb_statement& handle) {
        if (!handle.rows) return fail_no_rows();
        return ++RowReader(&*handle.rows) == std::default_sentinel ? ZMFB_END : ZMFB_OK;
    });
}

zmfb_status zmfb_statement_error(const zmfb_statement* statement, int* sqlcode, const char** sqlstate,
                                 const char** text) {
    return tell_failure(statement, sqlcode, sqlstate, text);
}

zmfb_status zmfb_column_count(zmfb_statement* statement, size_t* count) {
    return on_prepared(statement, [=](zmfb_statement& handle) {
        if (count == nullptr) return fail_null();
        *count = handle.prepared->columns().size();
        return ZMFB_OK;
    });
}

zmfb_status zmfb_column(zmfb_statement* statement, size_t index, const char** name, zmfb_sql_type* type,
                        int* decimals) {
    return on_prepared(statement, [=](zmfb_statement& handle) {
        const std::vector<zmfb::Column>& columns = handle.prepared->columns();
        if (index < 1 || index > columns.size()) return fail_no_column();
        const zmfb::Column& column = columns[index - 1];
        if (name != nullptr) *name = column.name.c_str();
        if (type != nullptr) *type = static_cast<zmfb_sql_type>(column.type);
        if (decimals != nullptr) *decimals = column.decimals;
        return ZMFB_OK;
    });
}
static_assert(static_cast<int>(zmfb::SqlType::text) == ZMFB_SQL_TEXT &&
              static_cast<int>(zmfb::SqlType::bytes) == ZMFB_SQL_BYTES &&
              static_cast<int>(zmfb::SqlType::integer) == ZMFB_SQL_INTEGER &&
              static_cast<int>(zmfb::SqlType::decimal) == ZMFB_SQL_DECIMAL &&
              static_cast<int>(zmfb::SqlType::real) == ZMFB_SQL_REAL &&
              static_cast<int>(zmfb::SqlType::boolean) == ZMFB_SQL_BOOLEAN &&
              static_cast<int>(zmfb::SqlType::date) == ZMFB_SQL_DATE &&
              static_cast<int>(zmfb::SqlType::time) == ZMFB_SQL_TIME &&
              static_cast<int>(zmfb::SqlType::timestamp) == ZMFB_SQL_TIMESTAMP &&
              static_cast<int>(zmfb::SqlType::text_blob) == ZMFB_SQL_TEXT_BLOB &&
              static_cast<int>(zmfb::SqlType::blob) == ZMFB_SQL_BLOB &&
              static_cast<int>(zmfb::SqlType::other) == ZMFB_SQL_OTHER);
