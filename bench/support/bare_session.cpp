#include "bench/support/bare_session.h"

#include <stdexcept>

#include "tests/support/environment.h"

namespace zmfb::bench {

namespace {

constexpr short usual_columns = 32;
constexpr ISC_STATUS end_of_rows = 100;
constexpr const char* statement_name = "BARE_STATEMENT";
constexpr const char* cursor_name = "BARE_CURSOR";

void check(const ISC_STATUS* status, std::string_view doing) {
    if (status[0] != isc_arg_gds || status[1] == 0) return;
    std::string message(doing);
    char line[1024];
    for (const char* separator = ": "; fb_interpret(line, sizeof line, &status) != 0; separator = " ")
        message.append(separator).append(line);
    throw std::runtime_error(message);
}

class StartedTransaction {
  public:
    StartedTransaction(isc_db_handle* database, std::string_view block) {
        ISC_STATUS_ARRAY status;
        isc_start_transaction(status, &handle_, 1, database, static_cast<unsigned short>(block.size()),
                              block.data());
        check(status, "start");
    }
    StartedTransaction(const StartedTransaction&) = delete;
    ~StartedTransaction() {
        ISC_STATUS_ARRAY ignored;
        if (handle_ != isc_tr_handle()) isc_rollback_transaction(ignored, &handle_);
    }
    isc_tr_handle* handle() { return &handle_; }
    void commit() {
        ISC_STATUS_ARRAY status;
        isc_commit_transaction(status, &handle_);
        check(status, "commit");
    }

  private:
    isc_tr_handle handle_{};
};

}  // namespace

std::string attachment_block() {
    std::string block(1, isc_dpb_version1);
    const auto add = [&block](char item, std::string_view text) {
        block.push_back(item);
        block.push_back(static_cast<char>(text.size()));
        block += text;
    };
    add(isc_dpb_user_name, test::sysdba);
    add(isc_dpb_password, test::sysdba_password);
    return block;
}

BareSession::BareSession(const std::string& database) {
    const std::string block = attachment_block();
    ISC_STATUS_ARRAY status;
    isc_attach_database(status, 0, database.c_str(), &database_, static_cast<short>(block.size()),
                        block.data());
    check(status, "attach");
}

BareSession::~BareSession() {
    ISC_STATUS_ARRAY ignored;
    isc_detach_database(ignored, &database_);
}

void BareSession::execute_together(std::span<const std::string> statements, std::string_view block) {
    StartedTransaction transaction(&database_, block);
    ISC_STATUS_ARRAY status;
    for (const std::string& statement : statements) {
        isc_dsql_execute_immediate(status, &database_, transaction.handle(), 0, statement.c_str(),
                                   SQL_DIALECT_V6, nullptr);
        check(status, statement);
    }
    transaction.commit();
}

BareSession::Cursor::Cursor(BareSession& session, const std::string& statement, std::string_view block)
    : session_(session) {
    ISC_STATUS_ARRAY status;
    isc_start_transaction(status, &transaction_, 1, &session.database_,
                          static_cast<unsigned short>(block.size()), block.data());
    check(status, "start");
    if (session.calls_ == Calls::plain) {
        open_plainly(statement);
    } else {
        open_as_ours(statement);
    }
}

BareSession::Cursor::Cursor(BareSession& session, const std::string& statement, std::string_view block,
                            const std::string& value)
    : session_(session) {
    ISC_STATUS_ARRAY status;
    isc_start_transaction(status, &transaction_, 1, &session.database_,
                          static_cast<unsigned short>(block.size()), block.data());
    check(status, "start");
    prepare(statement);
    execute(value);
}

void BareSession::Cursor::open_again(const std::string& value) {
    ISC_STATUS_ARRAY status;
    isc_dsql_free_statement(status, &statement_, DSQL_close);
    check(status, "close");
    execute(value);
}

void BareSession::Cursor::execute(const std::string& value) {
    std::vector<char> text(value.begin(), value.end());
    XSQLDA parameter{};
    parameter.version = SQLDA_VERSION1;
    parameter.sqln = parameter.sqld = 1;
    parameter.sqlvar[0].sqltype = SQL_TEXT;
    parameter.sqlvar[0].sqllen = static_cast<ISC_SHORT>(text.size());
    parameter.sqlvar[0].sqldata = text.data();
    ISC_STATUS_ARRAY status;
    isc_dsql_execute(status, &transaction_, &statement_, SQL_DIALECT_V6, &parameter);
    check(status, "execute");
}

void BareSession::Cursor::prepare(const std::string& statement) {
    ISC_STATUS_ARRAY status;
    isc_dsql_allocate_statement(status, &session_.database_, &statement_);
    check(status, "allocate");
    make_area(usual_columns);
    isc_dsql_prepare(status, &transaction_, &statement_, 0, statement.c_str(), SQL_DIALECT_V6, area_);
    check(status, statement);
    if (area_->sqld > area_->sqln) {
        make_area(area_->sqld);
        isc_dsql_describe(status, &statement_, SQL_DIALECT_V6, area_);
        check(status, "describe");
    }
    lay_out();
}

void BareSession::Cursor::open_plainly(const std::string& statement) {
    prepare(statement);
    ISC_STATUS_ARRAY status;
    isc_dsql_execute(status, &transaction_, &statement_, SQL_DIALECT_V6, nullptr);
    check(status, statement);
}

void BareSession::Cursor::open_as_ours(const std::string& statement) {
    ISC_STATUS_ARRAY status;
    make_area(1);
    isc_embed_dsql_prepare(status, &session_.database_, &transaction_, statement_name, 0, statement.c_str(),
                           SQL_DIALECT_V6, area_);
    check(status, statement);
    isc_embed_dsql_describe(status, statement_name, SQL_DIALECT_V6, area_);
    check(status, "describe");
    if (area_->sqld > area_->sqln) {
        make_area(area_->sqld);
        isc_embed_dsql_describe(status, statement_name, SQL_DIALECT_V6, area_);
        check(status, "describe again");
    }
    lay_out();
    isc_embed_dsql_declare(status, statement_name, cursor_name);
    check(status, "declare");
    isc_embed_dsql_open(status, &transaction_, cursor_name, SQL_DIALECT_V6, nullptr);
    check(status, statement);
}

BareSession::Cursor::~Cursor() {
    ISC_STATUS_ARRAY ignored;
    if (statement_ != isc_stmt_handle()) isc_dsql_free_statement(ignored, &statement_, DSQL_drop);
    if (transaction_ != isc_tr_handle()) isc_rollback_transaction(ignored, &transaction_);
}

void BareSession::Cursor::make_area(short columns) {
    area_bytes_.assign(static_cast<std::size_t>(XSQLDA_LENGTH(columns)), 0);
    area_ = reinterpret_cast<XSQLDA*>(area_bytes_.data());
    area_->version = SQLDA_VERSION1;
    area_->sqln = columns;
}

// Each column begins at a multiple of eight bytes; its NULL indicator stands behind it.
void BareSession::Cursor::lay_out() {
    constexpr std::size_t word = sizeof(std::int64_t);
    std::vector<std::size_t> places;
    std::size_t words = 0;
    for (const XSQLVAR& column : columns()) {
        places.push_back(words);
        words += (static_cast<std::size_t>(column.sqllen) + sizeof(short)) / word + 2;
    }
    row_.resize(words);
    for (std::size_t i = 0; i < places.size(); ++i) {
        XSQLVAR& column = area_->sqlvar[i];
        const std::size_t end = i + 1 < places.size() ? places[i + 1] : words;
        column.sqldata = reinterpret_cast<char*>(&row_[places[i]]);
        column.sqlind = reinterpret_cast<ISC_SHORT*>(&row_[end - 1]);
    }
}

bool BareSession::Cursor::fetch() {
    ISC_STATUS_ARRAY status;
    const ISC_STATUS outcome = session_.calls_ == Calls::plain
                                   ? isc_dsql_fetch(status, &statement_, SQL_DIALECT_V6, area_)
                                   : isc_embed_dsql_fetch(status, cursor_name, SQL_DIALECT_V6, area_);
    if (outcome == end_of_rows) return false;
    check(status, "fetch");
    return true;
}

void BareSession::Cursor::finish() {
    ISC_STATUS_ARRAY status;
    if (session_.calls_ == Calls::plain) {
        isc_dsql_free_statement(status, &statement_, DSQL_drop);
        check(status, "drop");
    } else {
        isc_embed_dsql_close(status, cursor_name);
        check(status, "close");
    }
    isc_commit_transaction(status, &transaction_);
    check(status, "commit");
    if (session_.calls_ == Calls::as_ours) {
        isc_embed_dsql_release(status, statement_name);
        check(status, "release");
    }
}

std::uint64_t touch(std::span<const XSQLVAR> row) {
    std::uint64_t sum = 0;
    const auto ends = [](const char* text, std::size_t length) {
        return length == 0 ? 0 : static_cast<std::uint64_t>(text[0] + text[length - 1]);
    };
    for (const XSQLVAR& column : row) {
        if (is_null(column)) continue;
        const auto length = static_cast<std::size_t>(column.sqllen);
        switch (column.sqltype & ~1) {
            case SQL_TEXT:
                sum += ends(column.sqldata, length);
                break;
            case SQL_VARYING:
                sum += ends(column.sqldata + sizeof(std::uint16_t), value_at<std::uint16_t>(column));
                break;
            case SQL_SHORT:
                sum += value_at<std::uint16_t>(column);
                break;
            case SQL_LONG:
                sum += value_at<std::uint32_t>(column);
                break;
            default:
                sum += value_at<std::uint64_t>(column);
        }
    }
    return sum;
}

}  // namespace zmfb::bench
