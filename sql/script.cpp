#include "sql/script.h"

#include <algorithm>
#include <utility>

#include "conn/public_call.h"
#include "sql/attach.h"
#include "sql/client.h"
#include "sql/state.h"
#include "sql/statement_text.h"
#include "sql/transaction.h"
#include "zmfbconn/database.h"

namespace zmfb {

namespace {

// A statement in a transaction of its own.
Status run_statement(isc_db_handle database, const std::string& statement) {
    sql::Transaction transaction(database, sql::batch_block);
    Status done = transaction.started();
    if (done.ok()) done = sql::refuse_unfit(statement);
    if (done.ok()) done = transaction.execute(statement.c_str());
    if (done.ok()) done = transaction.commit();
    return done;
}

constexpr std::string_view blanks = " \t\r\n";

std::string_view without_blanks_behind(std::string_view text) {
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view without_blanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return without_blanks_behind(text);
}

constexpr std::string_view new_end = "SET TERM ";

}  // namespace

std::vector<std::string> sql::statements_of(std::string_view script) {
    std::vector<std::string> statements;
    std::string statement;
    std::string_view end_mark = ";";
    while (!script.empty()) {
        const std::size_t end = script.find('\n');
        const std::string_view line = without_blanks_behind(script.substr(0, end));
        script.remove_prefix(end == std::string_view::npos ? script.size() : end + 1);
        const std::string_view words = without_blanks(line);
        if (words.empty() || words.starts_with("--")) continue;
        if (statement.empty() && words.starts_with(new_end)) {
            end_mark = words.substr(new_end.size());
            end_mark = end_mark.substr(0, end_mark.find(' '));
            continue;
        }
        statement += statement.empty() ? words : "\n" + std::string(line);
        if (!words.ends_with(end_mark)) continue;
        statement.resize(statement.size() - end_mark.size());
        statements.push_back(std::exchange(statement, {}));
    }
    if (!statement.empty()) statements.push_back(statement);
    return statements;
}

Status run_script(std::string_view database, std::string_view user, std::string_view password,
                  std::string_view script) {
    const conn::PublicCall under_way;
    return sql::on_attachment(database, user, password, [script](double handle) {
        for (const std::string& statement : sql::statements_of(script)) {
            if (Status done = run_statement(sql::handle_of(handle), statement); !done.ok()) return done;
        }
        return Status();
    });
}

}  // namespace zmfb
