#include <fmt/format.h>

#include <algorithm>

#include "conn/log.h"
#include "host/text.h"
#include "sql/attachments.h"
#include "sql/convert.h"
#include "sql/methods.h"
#include "sql/row_buffer.h"
#include "sql/sessions.h"
#include "sql/state.h"
#include "sql/statement_text.h"
#include "sql/transaction.h"

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

// The steps of one query. Each returns how its client call ended; the query ends with the first that fails.
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
    Status run(const Value& stmt, const Value& result) {
        Status done = transaction_.started();
        if (done.ok()) done = refuse_unfit(stmt);
        if (done.ok()) done = use_types_of_before(*transaction_.database());
        if (done.ok()) done = prepare(text_of(stmt));
        if (done.ok()) done = describe();
        if (!done.ok()) return done;
        result.push(header_of(area_.columns()));
        log_columns(area_.columns());
        done = open();
        if (done.ok()) done = fetch_rows(result);
        if (done.ok()) done = close();
        if (done.ok()) done = transaction_.commit();
        return done;
    }

  private:
    static ISC_STATUS* status() { return state().status; }

    Status prepare(const std::string& statement) {
        client().prepare(status(), transaction_.database(), transaction_.handle(), statement_name,
                         statement.c_str(), area_.get());
        Status done = outcome();
        prepared_ = done.ok();
        return done;
    }

    Status describe() {
        client().describe(status(), statement_name, area_.get());
        Status done = outcome();
        if (done.ok() && area_.too_small()) {
            area_ = DescriptorArea(area_.get()->sqld);
            client().describe(status(), statement_name, area_.get());
            done = outcome();
        }
        return done;
    }

    Status open() {
        client().declare(status(), statement_name, cursor_name);
        Status done = outcome();
        if (done.ok()) {
            client().open(status(), transaction_.handle(), cursor_name);
            done = outcome();
        }
        return done;
    }

    Status fetch_rows(const Value& result) {
        const RowBuffer buffer(area_.columns());
        RowConverter converter(area_.columns());
        for (;;) {
            const ISC_STATUS answer = client().fetch(status(), cursor_name, area_.get());
            if (answer == end_of_rows) return {};
            if (answer != 0) {
                if (Status done = outcome(); !done.ok()) return done;
            }
            require_not_cancelled();
            result.push(converter.convert());
        }
    }

    Status close() {
        client().close(status(), cursor_name);
        return outcome();
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
    const int code = query.run(stmt, result).sqlcode();
    if (code != 0) log_failure(code);
    return result;
}

}  // namespace zmfb::sql
