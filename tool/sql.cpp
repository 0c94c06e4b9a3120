#include "tool/sql.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/in_the_way.h"
#include "tool/interrupt.h"
#include "tool/reading.h"
#include "tool/shell/statement.h"
#include "tool/terminal.h"
#include "tool/unknown_name.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

enum class Kind { query, any };

constexpr int update_log_level = 7;

// The transaction that is open on the object, or else one of its own.
class Work {
  public:
    Work(Session& session, Kind kind)
        : is_open_(session.in_transaction()),
          transaction_(is_open_ ? Transaction::batch(session.connection())
                       : kind == Kind::query
                           ? Transaction(session.connection(), Access::read_only)
                           : Transaction(session.connection(), Access::read_write, Isolation::newest)) {}

    Statement prepare(const std::string& statement) { return transaction_.prepare(statement); }
    void keep() {
        if (!is_open_) transaction_.commit();
    }

  private:
    bool is_open_;
    Transaction transaction_;
};

void log_statement(Session& session, const std::string& statement, Kind kind) {
    if (kind == Kind::query) return log_query(session.connection(), statement);
    const std::string_view tag = session.in_transaction() ? "[CACHE]" : "[UPDT]";
    session.connection()(m::writelog, fmt::format("{} Statement: {}", tag, statement_bytes(statement)),
                         update_log_level);
}

// What was interrupted has no message of the engine's, but perhaps somebody who was waited for.
[[noreturn]] void throw_told(Session& session, const SqlError& error, Kind kind,
                             const std::string& statement) {
    const std::string message = kind == Kind::query ? "the query failed" : to_utf8(error.method_text());
    try {
        throw_failure(session.connection(), error, message);
    } catch (const Cancelled&) {
        throw Failure{ending_status(), interrupted_message, who_is_in_the_way(session, "")};
    } catch (Failure& failure) {
        failure.hint = meant_instead(session.connection(), statement, failure.detail);
        const std::string who = who_is_in_the_way(session, failure.detail);
        if (!who.empty()) failure.detail += "\n" + who;
        throw;
    }
}

std::optional<std::int64_t> run(Session& session, const std::string& statement, Kind kind,
                                const RowOutput& output) {
    log_statement(session, statement, kind);
    set_database_encoding(session.connection(), encoding_name());
    // Who leaves a pager gives up what runs: a change is not to be undone by that.
    Sink sink(output.file, output.pages && kind == Kind::query);
    Look look;
    if (!sink.is_file()) look = {terminal_width(), output_has_colours(), output.see_all};
    const auto writer = make_row_writer(output.mode, sink, look);
    try {
        Work work(session, kind);
        Statement prepared = work.prepare(statement);
        std::optional<std::int64_t> changed;
        if (!prepared.columns().empty()) {
            writer->write(prepared.rows());
        } else if (kind == Kind::query) {
            throw Failure{Exit::failed, "the statement returns no rows: exec runs such statements"};
        } else {
            changed = prepared.execute();
        }
        work.keep();
        if (!changed) writer->end(true);
        return changed;
    } catch (const SqlError& error) {
        const bool ended = interrupted();
        writer->end(ended);
        // Rows say themselves that they were interrupted; one WITH LOCK may have waited, though.
        const bool may_have_waited = kind != Kind::query || (session.in_transaction() && !sink.was_paged());
        if (ended && !may_have_waited) return std::nullopt;
        throw_told(session, error, kind, statement);
    }
}

}  // namespace

void run_query(Session& session, const std::string& statement, const RowOutput& output) {
    run(session, statement, Kind::query, output);
}

std::optional<std::int64_t> run_statement(Session& session, const std::string& statement,
                                          const RowOutput& output) {
    return run(session, statement, Kind::any, output);
}

std::string changes_of(const std::string& statement, std::int64_t changed) {
    constexpr std::array<std::string_view, 4> changing{"insert", "update", "delete", "merge"};
    const bool counts = changed > 0 || std::ranges::find(changing, first_word(statement)) != changing.end();
    return counts ? ", " + counted(static_cast<std::uint64_t>(changed), "row", "rows") : "";
}

}  // namespace zmfb::tool
