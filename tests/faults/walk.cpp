#include "tests/faults/walk.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <ostream>
#include <regex>

#include "conn/log.h"
#include "host/error.h"
#include "sql/state.h"
#include "tests/support/environment.h"
#include "tests/support/server.h"
#include "tests/support/worker/wire.h"

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

using enum ClientCall;

constexpr std::string_view raised_prefix = "[FBCONN Error];";
constexpr int statements_level = 8;

std::string error_text() { return "[ERROR] SQLCODE=-902 (" + FaultyClient::io_error_text() + ")"; }

void replace_all(std::string& text, std::string_view what, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += by.size())
        text.replace(at, what.size(), by);
}

bool fits(const std::string& seen, const std::string& expected) {
    if (!expected.starts_with('~')) return seen == expected;
    return std::regex_match(seen, std::regex(expected.substr(1)));
}

bool fit(const std::vector<std::string>& seen, const std::vector<std::string>& expected) {
    if (expected == std::vector<std::string>{"*"}) return true;
    return seen.size() == expected.size() && std::equal(seen.begin(), seen.end(), expected.begin(), fits);
}

std::string listed(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += "\n    " + text;
    return all.empty() ? " none" : all;
}

// Calls whose failure nobody is told of.
bool is_passed_over(ClientCall call) {
    return call == release || call == detach_database || call == rollback_transaction;
}

// Calls that attach: a failure is no attachment, and a line for everybody.
bool is_of_attaching(ClientCall call) {
    return call == attach_database || call == database_handle || call == database_info;
}

}  // namespace

Walk::Walk() { make_databases(); }

std::string Walk::filled(std::string text) const {
    replace_all(text, "@E", error_text());
    replace_all(text, "@DB", name_);
    replace_all(text, "@DIR", folder().string());
    return text;
}

Value Walk::evaluate(const std::string& call) {
    const CallOfLiterals parsed = read_call(filled(call));
    return object().call_with(parsed.method, Args(parsed.arguments));
}

// A new file name each time: what is remembered of a database by its name is asked anew.
void Walk::restore(const Scenario& scenario) {
    object_.reset();
    fs::remove(folder() / ("w" + std::to_string(number_) + ".fdb"));
    const fs::path copy = folder() / ("w" + std::to_string(++number_) + ".fdb");
    fs::copy_file(folder() / scenario.database, copy);
    name_ = on_server() ? Server::shared().name_of(copy) : copy.string();
    if (scenario.uses == Uses::nothing) {
        object_.emplace();
    } else if (scenario.method != "init") {
        object_.emplace(name_, sysdba, sysdba_password);
        object_->call("setfullpathdatfile", file("data.dat"));
    }
}

void PrintTo(const Walk::Balance& balance, std::ostream* out) {
    *out << balance.transactions << " transactions, " << balance.statements << " statements, "
         << balance.attachments << " attachments, " << balance.blocks << " blocks"
         << (balance.batch ? ", a batch" : "");
}

Walk::Balance Walk::balance_of(const Witness& witness) {
    return {.transactions = witness.open_transactions(),
            .statements = witness.prepared(),
            .attachments = witness.attachments(),
            .blocks = witness.open_blocks(),
            .batch = sql::state().batch != isc_tr_handle()};
}

std::string Walk::shown(const Value& answer) const {
    std::string text = show(answer);
    replace_all(text, name_, "@DB");
    return std::regex_replace(text, std::regex("Data: [0-9/]+ [0-9:]+"), "Data: now");
}

// Sorts the log of a run: the statements until the failure, and the lines that everybody gets to see.
void Walk::read_log(Seen& seen) const {
    static const std::regex address("Pointer DB1: .*");
    constexpr std::string_view statement_tag = " Statement: ";
    bool before_failure = true;
    bool update = false;
    for (const LogEntry& entry : log_lines()) {
        if (entry.text == error_text()) before_failure = false;
        if (entry.text.starts_with("[ERROR] SQLCODE") && update) --seen.committed;
        if (entry.text.starts_with("[UPDT]")) ++seen.committed;
        update = entry.text.starts_with("[UPDT]");
        const std::size_t tag = entry.text.find(statement_tag);
        if (before_failure && tag != std::string::npos)
            seen.statements_until_failure.push_back(entry.text.substr(tag + statement_tag.size()));
        if (entry.level > 1) continue;
        std::string line = "[" + std::to_string(entry.level) + "] " + entry.text;
        replace_all(line, name_, "@DB");
        seen.lines.push_back(std::regex_replace(line, address, "Pointer"));
    }
}

Walk::Seen Walk::run(const Scenario& scenario, const std::vector<ClientCall>& failing, int nth) {
    for (const std::string& call : scenario.before) evaluate(call);
    Seen seen;
    clear_log();
    forget_raised();
    log_at(statements_level);
    Witness witness;
    for (const ClientCall call : failing) witness.fail(call, call == failing.front() ? nth : 1);
    seen.value = scenario.act ? scenario.act(*this) : evaluate(scenario.call);
    seen.answer = shown(seen.value);
    log_at(0);
    for (const std::string& text : raised()) {
        EXPECT_TRUE(text.starts_with(raised_prefix)) << text;
        seen.raised.push_back(text.substr(raised_prefix.size()));
    }
    read_log(seen);
    for (std::size_t call = 0; call < client_call_count; ++call)
        seen.counts.push_back(witness.count(static_cast<ClientCall>(call)));
    EXPECT_TRUE(witness.all_failed()) << "the call was not made";
    for (const std::string& call : scenario.after) evaluate(call);
    seen.balance = balance_of(witness);
    seen.rows = witness.rows_by_transaction();
    seen.moment = witness.moment();
    if (scenario.uses == Uses::changes) seen.state = state_of_database();
    return seen;
}

const Walk::Seen& Walk::good_run(const Scenario& scenario) {
    restore(scenario);
    good_ = run(scenario, {}, 0);
    if (scenario.good != "*") {
        EXPECT_EQ(good_->answer, filled(scenario.good)) << listed(good_->raised);
    }
    if (scenario.before.empty()) {
        EXPECT_EQ(good_->balance, (Balance{.attachments = good_->balance.attachments}));
    }
    return *good_;
}

const Failure* Walk::expectation(const Scenario& scenario, ClientCall call, const Seen& seen) const {
    if (seen.statements_until_failure.empty())
        return is_of_attaching(call) ? &scenario.failures.front() : nullptr;
    const auto& statements = seen.statements_until_failure;
    const std::string& statement = statements.back();
    const auto times = std::count(statements.begin(), statements.end(), statement);
    for (const Failure& failure : scenario.failures) {
        if (!statement.starts_with(failure.statement)) continue;
        if (failure.nth == 0 || failure.nth == times) return &failure;
    }
    return nullptr;
}

Walk::Expected Walk::as_good() const {
    return {.answer = good_->answer, .raised = good_->raised, .lines = good_->lines};
}

// Of a query, what had come by then counts: nothing yet, some rows, or all of them.
Walk::Expected Walk::expected(const Scenario& scenario, const Failure& failure, const Moment& moment) const {
    const auto ordinal = static_cast<std::size_t>(moment.transaction);
    const int all_rows = ordinal >= 1 && ordinal <= good_->rows.size() ? good_->rows[ordinal - 1] : 0;
    if (scenario.ahead_of_rows >= 0 && &failure == &scenario.failures.front()) {
        if (moment.rows == 0 && !(moment.described && scenario.header_alone))
            return {.answer = failure.result, .raised = {}, .lines = good_->lines};
        Value cut = Value::array_of_size(0);
        const auto length = static_cast<std::size_t>(scenario.ahead_of_rows + moment.rows);
        for (std::size_t i = 1; i <= length; ++i) cut.push(good_->value[i]);
        return {.answer = show(cut), .raised = {}, .lines = good_->lines};
    }
    if (moment.described && moment.rows == all_rows) return as_good();
    Expected expected{
        .answer = moment.rows == 0 || failure.partial.empty() ? failure.result : failure.partial,
        .raised = failure.raised,
        .lines = failure.logged,
        .other_state = failure.other_state};
    if (expected.answer == "=") {
        expected.answer = good_->answer;
        if (expected.lines.empty()) expected.lines = good_->lines;
        if (expected.lines == std::vector<std::string>{"-"}) expected.lines.clear();
    }
    return expected;
}

void Walk::judge_answer(const Expected& expected, const Seen& seen, Tally& tally) {
    if (expected.answer == "?") {
        EXPECT_EQ(seen.answer.front(), good_->answer.front());
        ++tally.by_kind_only;
        return;
    }
    std::string answer = filled(expected.answer);
    replace_all(answer, name_, "@DB");
    EXPECT_TRUE(fits(seen.answer, answer)) << "answered: " << seen.answer << "\nexpected: " << answer;
    std::vector<std::string> raised = expected.raised;
    for (std::string& text : raised) text = filled(text);
    EXPECT_TRUE(fit(seen.raised, raised))
        << "raised:" << listed(seen.raised) << "\nexpected:" << listed(raised);
    if (answer != good_->answer) return;
    if (expected.other_state) {
        EXPECT_NE(seen.state, good_->state);
    } else {
        EXPECT_EQ(seen.state, good_->state) << "answered as if nothing had failed";
    }
}

void Walk::judge(const Scenario& scenario, ClientCall call, const Seen& seen, Tally& tally) {
    const bool told = !is_passed_over(call) && !scenario.silent;
    const Failure* const failure = told ? expectation(scenario, call, seen) : nullptr;
    if (told && failure == nullptr) {
        const auto& statements = seen.statements_until_failure;
        ADD_FAILURE() << "no expectation for a failure of: " << (statements.empty() ? "" : statements.back())
                      << "\nanswered: " << seen.answer << "\nraised:" << listed(seen.raised)
                      << "\nlogged:" << listed(seen.lines);
        return;
    }
    Expected expected = told ? this->expected(scenario, *failure, seen.moment) : as_good();
    // Nobody is told of a batch that could not be committed.
    if (scenario.method == "commitchanges") expected.other_state = true;
    judge_answer(expected, seen, tally);
    std::vector<std::string> lines = seen.lines;
    if (told) {
        const std::string line = (is_of_attaching(call) ? "[0] " : "[1] ") + error_text();
        const auto found = std::find(lines.begin(), lines.end(), line);
        EXPECT_TRUE(found != lines.end()) << "not logged: " << line;
        if (found != lines.end()) lines.erase(found);
    }
    std::vector<std::string> wanted = expected.lines;
    for (std::string& text : wanted) {
        text = filled(text);
        replace_all(text, name_, "@DB");
    }
    EXPECT_TRUE(fit(lines, wanted)) << "logged besides the failure:" << listed(lines)
                                    << "\nexpected:" << listed(wanted);
}

void Walk::expect_usable(const Scenario& scenario) {
    if (!object_ || scenario.uses == Uses::nothing) return;
    if (scenario.method == "disconnect" || scenario.method == "axit" || scenario.method == "init") return;
    EXPECT_EQ(show(object().call("executequery", "select A from PROBE")), R"({{{"A", "N", 4, 0}}, {"7"}})");
    EXPECT_EQ(show(object().call("executeupdate", "update PROBE set A = 7")), "\"\"");
}

void Walk::fail_one(const Scenario& scenario, ClientCall call, int nth, bool rollback_too, Tally& tally) {
    SCOPED_TRACE(scenario.method + " " + scenario.variant + ": " + name_of(call) + " " + std::to_string(nth));
    if (scenario.uses == Uses::changes) restore(scenario);
    std::vector<ClientCall> failing = {call};
    if (rollback_too) failing.push_back(rollback_transaction);
    const Seen seen = run(scenario, failing, nth);
    judge(scenario, call, seen, tally);
    EXPECT_EQ(seen.balance, good_->balance);
    expect_usable(scenario);
    // What failed before it changed anything can be called again at once; anything else from where it began.
    const bool nothing_done = seen.committed <= 0 && seen.answer != good_->answer && scenario.before.empty();
    if (!nothing_done && scenario.uses == Uses::changes) restore(scenario);
    expect_good(scenario, nothing_done ? "the same once more" : "the next call");
    forget_raised();
}

void Walk::expect_good(const Scenario& scenario, const char* when) {
    const Seen again = run(scenario, {}, 0);
    EXPECT_EQ(again.answer, good_->answer) << when;
    EXPECT_EQ(again.raised, good_->raised) << when;
    EXPECT_EQ(again.lines, good_->lines) << when;
    EXPECT_EQ(again.state, good_->state) << when;
}

void Walk::walk(const Scenario& scenario, int limit, Tally& tally) {
    SCOPED_TRACE(scenario.method + " " + scenario.variant);
    const std::vector<int> counts = good_run(scenario).counts;
    const int calls = std::accumulate(counts.begin(), counts.end(), 0);
    if (scenario.uses == Uses::nothing) {
        EXPECT_EQ(calls, 0) << "talks to the database";
        return;
    }
    EXPECT_GT(calls, 0) << "does not talk to the database";
    for (std::size_t call = 0; call < counts.size(); ++call) {
        const int count = counts[call];
        if (count == 0) continue;
        tally.pairs.emplace(scenario.method, call);
        tally.occurrences += count;
        const int runs = std::min(count, limit);
        for (int i = 0; i < runs; ++i) {
            const int nth = runs == 1 ? 1 : 1 + i * (count - 1) / (runs - 1);
            fail_one(scenario, static_cast<ClientCall>(call), nth, false, tally);
            ++tally.failures;
        }
    }
}

void Walk::walk_rollbacks(const Scenario& scenario, Tally& tally) {
    if (scenario.uses == Uses::nothing || scenario.silent) return;
    SCOPED_TRACE(scenario.method + " " + scenario.variant);
    const std::vector<int> counts = good_run(scenario).counts;
    // A statement of a batch is not rolled back; and a rollback that comes anyway is not the failure's.
    if (scenario.method == "cachedupdate" || counts[static_cast<std::size_t>(rollback_transaction)] > 0)
        return;
    for (const ClientCall call :
         {prepare, describe, declare, open, fetch, close, execute_immediate, commit_transaction}) {
        if (counts[static_cast<std::size_t>(call)] == 0) continue;
        fail_one(scenario, call, 1, true, tally);
        ++tally.rollbacks;
    }
}

}  // namespace zmfb::test
