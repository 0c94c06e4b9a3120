/// The sessions of a case as processes, run step by step as a schedule says.
#pragma once

#include <string>
#include <vector>

#include "tests/interleavings/case_file.h"
#include "tests/interleavings/explore.h"
#include "tests/support/worker/worker_process.h"

namespace zmfb::test {

/// Processes that stay attached from one run to the next.
class Sessions {
  public:
    Sessions(const InterleavingCase& of, const std::string& database);

    /// Empties the system tables, makes the first calls of all sessions, then runs those in the middle to
    /// their end, then makes the last ones. The outcome is what those in the middle answered and what is
    /// shown. With `whole_calls` a call that has begun goes on to its end, unless it has to wait. Throws
    /// std::runtime_error when something hangs.
    Ran run(const Schedule& begin, bool whole_calls);

  private:
    enum class State { stopped, waits, ended };
    struct Session {
        WorkerProcess process;
        std::vector<std::string> first, calls, last;
        State state = State::ended;
        std::size_t next_call = 0;
        std::string stop;         ///< where it stopped last
        bool call_begins = true;  ///< whether that is the first stop of its call
        bool changed = false;     ///< whether it may have changes that are not committed
        std::string answers;
    };

    /// A text with the names of the sessions in the place of the ids of their work areas.
    [[nodiscard]] std::string with_names(std::string text) const;
    void prepare();
    std::string shown(const std::string& query);
    static void call_at_once(Session& session, const std::vector<std::string>& calls);
    void begin_calls(Session& session);
    bool come(Session& session, std::chrono::milliseconds limit);
    void take_answer(Session& session);
    void let_go(Session& session);
    [[nodiscard]] Chosen choose(const Schedule& begin, std::size_t at, std::size_t current, bool whole_calls,
                                bool& followed) const;
    void wait_for_the_waiting();
    [[nodiscard]] bool any(State state) const;

    std::string preparing_;  ///< the statement that is run before each interleaving
    std::vector<std::string> shows_;
    std::vector<Session> sessions_;
    int blocked_ = 0;
};

}  // namespace zmfb::test
