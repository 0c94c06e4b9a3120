#include "sql/typed/failure.h"

#include <fmt/format.h>

#include <utility>

#include "conn/log.h"
#include "sql/attachments.h"
#include "sql/state.h"

namespace zmfb {

namespace {

std::string description(const SqlError::Details& details) {
    std::string text =
        fmt::format("{}\nSQLSTATE {}, SQLCODE {}", details.message, details.sqlstate, details.sqlcode);
    if (!details.statement.empty()) text += "\nin: " + details.statement;
    return text;
}

}  // namespace

SqlError::SqlError(Details details)
    : std::runtime_error(description(details)),
      details_(std::make_shared<const Details>(std::move(details))) {}

SqlError::~SqlError() = default;

std::string SqlError::method_text() const {
    return conn::sqlcode_text(sqlcode(), sql::sqlcode_message(sqlcode()));
}

namespace typed {

Firebird::IStatus* status() {
    static Firebird::IStatus* const made = sql::ObjectClient::make_status();
    return made;
}

void check(ISC_STATUS code, std::string_view statement) {
    if (code == 0) return;
    const ISC_STATUS* const errors = sql::ObjectClient::errors(status());
    SqlError error({.sqlcode = sql::client().sqlcode(errors),
                    .sqlstate = sql::ObjectClient::sqlstate(status()),
                    .message = sql::keep_message(errors),
                    .statement = std::string(statement)});
    sql::give_up_after(errors);
    throw error;
}

void check(const Status& done, std::string_view statement) {
    if (done.ok()) return;
    throw SqlError({.sqlcode = done.sqlcode(),
                    .sqlstate = "HY000",
                    .message = done.message(),
                    .statement = std::string(statement)});
}

void refuse(Refusal refusal, std::string message, std::string_view statement) {
    throw SqlError({.sqlcode = refusal.sqlcode,
                    .sqlstate = refusal.sqlstate,
                    .message = std::move(message),
                    .statement = std::string(statement)});
}

}  // namespace typed

}  // namespace zmfb
