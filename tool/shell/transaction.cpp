// The transaction that is open in the shell: the one of starttransaction() and commitchanges().
#include <fmt/format.h>

#include "tool/confirm.h"
#include "tool/encoding.h"
#include "tool/locks.h"
#include "tool/reading.h"
#include "tool/say.h"
#include "tool/shell/shell.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {

std::string Shell::prompt() {
    if (waiting()) return "  ...> ";
    return session_.in_transaction() ? "zmfb*> " : "zmfb> ";
}

void Shell::change_transaction(Step step) {
    if (step == Step::begin) return begin();
    return step == Step::commit ? commit() : roll_back();
}

void Shell::begin() {
    if (session_.in_transaction())
        throw Failure{Exit::failed, "a transaction is open already", "commit; or rollback; ends it."};
    session_.connection()(m::starttransaction);
    if (!session_.in_transaction())
        throw Failure{Exit::failed, "no transaction could be begun", last_engine_message()};
    fmt::print("done: begin\n");
}

void Shell::end_transaction(void (Transaction::*end)(), std::string_view how_it_failed,
                            std::string_view done) {
    Transaction transaction = Transaction::batch(session_.connection());
    try {
        (transaction.*end)();
    } catch (const SqlError& error) {
        throw_failure(session_.connection(), error, how_it_failed);
    }
    tables_.reset();
    fmt::print("done: {}\n", done);
}

// Scripts of shells that begin a transaction by themselves commit all the time.
void Shell::commit() {
    if (!session_.in_transaction())
        return say("note: no transaction is open: each statement is committed by itself\n");
    end_transaction(&Transaction::commit, "the commit failed, and what was done is undone", "commit");
}

void Shell::roll_back() {
    if (!session_.in_transaction()) {
        throw Failure{Exit::failed, "no transaction is open: nothing is undone",
                      "Each statement was committed by itself. begin; opens a transaction."};
    }
    end_transaction(&Transaction::roll_back, "the transaction could not be rolled back", "rollback");
}

bool Shell::may_leave() {
    done_ = false;
    if (!session_.in_transaction()) return true;
    bool leaves = false;
    guarded([&] {
        const auto answer = ask("A transaction is open. Commit it, roll it back, or stay? [c/r/S]");
        if (answer == "c" || answer == "commit") {
            commit();
            leaves = true;
        } else if (!answer || answer == "r" || answer == "rollback") {
            roll_back();
            leaves = true;
        }
    });
    return leaves;
}

// What it locked would stay behind it, of a process that is dead.
void Shell::give_back(const std::string& area) {
    zmFBConn& connection = session_.connection();
    const AreaId own(area);
    const auto is_own = [&](const auto& one) { return one.owner.holder.id == to_utf8(area); };
    for (const Lock& lock : locks_of(connection)) {
        if (!is_own(lock)) continue;
        const std::string table = *to_latin1(lock.table);
        if (lock.record) {
            connection(m::setrecordasunlocked, table, own, RecordNumber(*lock.record));
        } else {
            connection(m::settableasunlocked, table, own);
        }
    }
    for (const Registration& open : registrations_of(connection)) {
        if (!is_own(open)) continue;
        connection(m::settableusedbyarea, false, *to_latin1(open.table), own, open.shared);
    }
}

void Shell::end() {
    if (session_.in_transaction()) {
        guarded([&] { roll_back(); });
        fail("the transaction that was open at the end is rolled back", "", "commit; keeps what it did");
    }
    if (!area_.empty()) guarded([&] { give_back(area_); });
}

}  // namespace zmfb::tool
