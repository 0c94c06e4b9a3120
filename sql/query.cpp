#include <fmt/format.h>

#include <algorithm>

#include "conn/log.h"
#include "host/text.h"
#include "sql/attachments.h"
#include "sql/convert.h"
#include "sql/exact.h"
#include "sql/methods.h"
#include "sql/row_buffer.h"
#include "sql/state.h"
#include "sql/statement_text.h"
#include "sql/transaction.h"
#include "zmfbconn/exact.h"

namespace zmfb::sql {

namespace {

constexpr const char* statement_name = "sql_stmt";
constexpr const char* cursor_name = "DYN_CURSOR";
constexpr ISC_STATUS end_of_rows = 100;
constexpr int column_log_level = 10;

Value describe_column(const XSQLVAR& column) {
    const std::string_view field = field_name(column);
    return host::array_of(field.empty() ? alias_name(column) : field, translate_type(type_of(column)),
                          column.sqllen, -column.sqlscale);
}

Value header_of(std::span<const XSQLVAR> columns) {
    Value header = Value::array_of_size(columns.size());
    std::transform(columns.begin(), columns.end(), header.items().begin(), describe_column);
    return header;
}

void log_columns(std::span<const XSQLVAR> columns) {
    if (conn::log_level() < column_log_level) return;
    for (const XSQLVAR& column : columns) {
        conn::log_event(column_log_level,
                        fmt::format("[INFO] Column: {} Type: {} Length: {} Alias: {}", field_name(column),
                                    column.sqltype, column.sqllen, alias_name(column)));
    }
}

// The steps of one query. Each returns the SQLCODE of its client call, below 0 when the query ends there.
class Query {
  public:
    explicit Query(isc_db_handle database) : transaction_(database, query_block) {}
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;
    // A statement that stayed prepared would keep its tables in use, and nobody could drop or alter them. The
    // outcome goes to a vector of its own: that of the query may still be wanted.
    ~Query() {
        ISC_STATUS_ARRAY ignored;
        if (prepared_) client().release(ignored, statement_name);
    }

    // Appends the header and the rows to `result`, as far as it comes.
    int run(const Value& stmt, const Value& result) {
        int code = transaction_.start_code();
        if (code >= 0) code = refuse_unfit(stmt);
        if (code >= 0) code = prepare(text_of(stmt));
        if (code >= 0) code = describe();
        if (code < 0) return code;
        ExactQueries* const exact = ExactQueries::current();
        result.push(exact == nullptr ? header_of(area_.columns()) : exact_header(area_.columns()));
        log_columns(area_.columns());
        code = open();
        if (code >= 0) code = exact == nullptr ? fetch_rows(result) : fetch_exactly(result, exact->reader());
        if (code >= 0) code = close();
        if (code >= 0) code = transaction_.commit();
        return code;
    }

  private:
    static ISC_STATUS* status() { return state().status; }

    int prepare(const std::string& statement) {
        client().prepare(status(), transaction_.database(), transaction_.handle(), statement_name,
                         statement.c_str(), area_.get());
        const int code = sqlcode();
        prepared_ = code >= 0;
        return code;
    }

    int describe() {
        client().describe(status(), statement_name, area_.get());
        int code = sqlcode();
        if (code >= 0 && area_.too_small()) {
            area_ = DescriptorArea(area_.get()->sqld);
            client().describe(status(), statement_name, area_.get());
            code = sqlcode();
        }
        return code;
    }

    int open() {
        client().declare(status(), statement_name, cursor_name);
        int code = sqlcode();
        if (code >= 0) {
            client().open(status(), transaction_.handle(), cursor_name);
            code = sqlcode();
        }
        return code;
    }

    // Calls `take` for every row in the buffer, until it answers with something other than 0.
    template <class Take>
    int fetch_each(const Take& take) {
        for (;;) {
            const ISC_STATUS outcome = client().fetch(status(), cursor_name, area_.get());
            if (outcome == end_of_rows) return 0;
            if (outcome != 0) {
                const int code = sqlcode();
                if (code < 0) return code;
            }
            if (const int code = take(); code != 0) return code;
        }
    }

    int fetch_rows(const Value& result) {
        const RowBuffer buffer(area_.columns());
        RowConverter converter(area_.columns());
        return fetch_each([&] {
            require_not_cancelled();
            result.push(converter.convert());
            return 0;
        });
    }

    int fetch_exactly(const Value& result, RowReader* reader) {
        const RowBuffer buffer(area_.columns());
        ExactConverter converter(area_.columns(), transaction_);
        if (reader != nullptr) reader->header(result[1]);
        return fetch_each([&] {
            Value row;
            const int code = converter.convert(row);
            if (code < 0) return code;
            if (reader != nullptr) return reader->row(row) ? 0 : int{end_of_rows};
            require_not_cancelled();
            result.push(row);
            return 0;
        });
    }

    int close() {
        client().close(status(), cursor_name);
        return sqlcode();
    }

    Transaction transaction_;
    DescriptorArea area_{1};
    bool prepared_ = false;
};

}  // namespace

Value internalselect(Self& self, Args args) {
    const Value& stmt = args[0];
    Value result = Value::array_of_size(0);
    call(self, "writelog", "[QURY] Statement: " + stmt, 8);
    const isc_db_handle database = handle_of(self);
    if (database == isc_db_handle()) return result;
    Query query(database);
    const int code = query.run(stmt, result);
    if (ExactQueries* const exact = ExactQueries::current(); exact != nullptr) exact->set_sqlcode(code);
    if (code != 0) log_failure(code);
    return result;
}

}  // namespace zmfb::sql
