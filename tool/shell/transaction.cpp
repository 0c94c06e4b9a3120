// The transaction that is open in the shell: the one of starttransaction() and commitchanges().
#include <fmt/format.h>

#include "tool/confirm.h"
#include "tool/encoding.h"
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

// Scripts of shells that begin a transaction by themselves commit all the time.
void Shell::commit() {
    if (!session_.in_transaction())
        return say("note: no transaction is open: each statement is committed by itself\n");
    try {
        Transaction::batch(session_.connection()).commit();
    } catch (const SqlError& error) {
        throw_failure(session_.connection(), error, "the commit failed, and what was done is undone");
    }
    tables_.reset();
    fmt::print("done: commit\n");
}

void Shell::roll_back() {
    if (!session_.in_transaction()) {
        throw Failure{Exit::failed, "no transaction is open: nothing is undone",
                      "Each statement was committed by itself. begin; opens a transaction."};
    }
    try {
        Transaction::batch(session_.connection()).roll_back();
    } catch (const SqlError& error) {
        throw_failure(session_.connection(), error, "the transaction could not be rolled back");
    }
    tables_.reset();
    fmt::print("done: rollback\n");
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
            if (!answer) say("\n");
            roll_back();
            leaves = true;
        }
    });
    return leaves;
}

void Shell::end() {
    if (!session_.in_transaction()) return;
    guarded([&] { roll_back(); });
    fail("the transaction that was open at the end is rolled back", "", "commit; keeps what it did");
}

}  // namespace zmfb::tool
