#include "sql/typed/statement.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "sql/statement_text.h"
#include "sql/typed/bind.h"
#include "sql/typed/cursor.h"
#include "sql/typed/failure.h"
#include "sql/typed/text.h"
#include "zmfbconn/transaction.h"

namespace zmfb {

namespace typed {

using sql::object_client;

namespace {

// The engine has names in UTF-8, whatever the texts in its tables are.
std::string bytes_of(std::string_view text, const Encoding& encoding) {
    std::string bytes;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view name = sql::first_quoted_name(rest);
        const std::string_view before =
            name.empty() ? rest : rest.substr(0, static_cast<std::size_t>(name.data() - rest.data()));
        bytes += encoded(before, encoding, "the statement", text);
        bytes += name;
        rest.remove_prefix(before.size() + name.size());
    }
    return bytes;
}

Firebird::IStatement* prepare(Work& work, const std::string& text, TextForm form) {
    work.check_active(text);
    work.session().check_usable(text);
    if (text.find('\0') != std::string::npos) refuse(no_character, "A statement has a zero byte", text);
    const std::string bytes = form == TextForm::as_kept ? text : bytes_of(text, work.session().encoding());
    check(work.session().use(sql::NewTypes::as_texts), text);
    Firebird::IStatement* statement = nullptr;
    check(object_client().prepare(status(), work.session().attachment(), work.transaction(text), &statement,
                                  bytes),
          text);
    return statement;
}

}  // namespace

Prepared::Prepared(std::shared_ptr<Work> work, std::string_view text, TextForm form)
    : work_(std::move(work)), text_(text) {
    statement_ = prepare(*work_, text_, form);
    work_->session().add(*this);
    try {
        check(object_client().statement_type(status(), statement_, &type_), text_);
        if (type_ == isc_info_sql_stmt_commit || type_ == isc_info_sql_stmt_rollback ||
            type_ == isc_info_sql_stmt_start_trans) {
            refuse(not_here, "A statement begins or ends no transaction here", text_);
        }
        check(object_client().has_cursor(status(), statement_, &has_cursor_), text_);
        Firebird::IMessageMetadata* message = nullptr;
        check(object_client().input_message(status(), statement_, &message), text_);
        parameters_.emplace(message, Layout::Of::parameters, form, text_);
        check(object_client().output_message(status(), statement_, &message), text_);
        rows_.emplace(message, Layout::Of::rows, form, text_);
        values_.emplace(parameters_->size());
    } catch (...) {
        free();
        throw;
    }
}

Prepared::~Prepared() { free(); }

void Prepared::free() noexcept {
    if (statement_ == nullptr) return;
    if (cursor_ != nullptr) cursor_->give_up("The connection was detached");
    Firebird::IStatement* const statement = std::exchange(statement_, nullptr);
    if (object_client().release(status(), statement) != 0) sql::ObjectClient::let_go(statement);
    work_->session().remove(*this);
}

void Prepared::forget(const Cursor& cursor) {
    if (cursor_ == &cursor) cursor_ = nullptr;
}

Firebird::IStatement* Prepared::ready(std::span<const Parameter> values) {
    work_->check_active(text_);
    work_->session().check_usable(text_);
    bind_values(values, *parameters_, *values_, work_, text_);
    if (cursor_ != nullptr) cursor_->give_up("The statement was run again");
    return statement_;
}

void Prepared::run(std::span<const Parameter> values) {
    if (!rows_->columns().empty()) {
        refuse(no_rows_here, "The statement returns rows: query(), rows() and one() run such statements",
               text_);
    }
    Firebird::IStatement* const statement = ready(values);
    check(object_client().execute(status(), statement, work_->transaction(), parameters_->metadata(),
                                  values_->data(), nullptr, nullptr),
          text_);
}

std::int64_t Prepared::count_changes() const {
    constexpr unsigned changing[] = {isc_info_sql_stmt_insert, isc_info_sql_stmt_update,
                                     isc_info_sql_stmt_delete, isc_info_sql_stmt_exec_procedure};
    if (std::ranges::find(changing, type_) == std::end(changing)) return 0;
    std::uint64_t count = 0;
    check(object_client().affected_records(status(), statement_, &count), text_);
    return static_cast<std::int64_t>(count);
}

Firebird::IResultSet* Prepared::open(std::span<const Parameter> values, Cursor& cursor) {
    Firebird::IStatement* const statement = ready(values);
    Firebird::IResultSet* rows = nullptr;
    check(object_client().open(status(), statement, work_->transaction(), parameters_->metadata(),
                               values_->data(), rows_->metadata(), &rows),
          text_);
    cursor_ = &cursor;
    return rows;
}

// RETURNING of a statement that found no row gives a row of nothing but NULL.
bool Prepared::fill(std::span<const Parameter> values, Message& row) {
    Firebird::IStatement* const statement = ready(values);
    check(object_client().execute(status(), statement, work_->transaction(), parameters_->metadata(),
                                  values_->data(), rows_->metadata(), row.data()),
          text_);
    const auto is_null = [&row](const Slot& slot) {
        std::int16_t indicator = 0;
        std::memcpy(&indicator, row.data() + slot.null_offset, sizeof indicator);
        return indicator != 0;
    };
    if (!std::ranges::all_of(rows_->slots(), is_null) || sql::begins_with(text_, "EXECUTE")) return true;
    return count_changes() > 0;
}

const std::vector<Column>& columns_of(const Prepared& statement) { return statement.rows().columns(); }

}  // namespace typed

std::size_t Statement::parameter_count() const { return statement_->parameters().slots().size(); }

std::int64_t Statement::run(std::span<const Parameter> values) {
    statement_->run(values);
    return statement_->count_changes();
}

void Statement::run_uncounted(std::span<const Parameter> values) { statement_->run(values); }

}  // namespace zmfb
