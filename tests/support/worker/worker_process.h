/// Worker processes of a test: programs of their own, each with a connection object that the test drives.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/value.h"

namespace zmfb::test {

using host::Args;
using host::Value;

/// A running zmfb_worker. It inherits the environment, and so the embedded engine's folders, of the test.
class WorkerProcess {
  public:
    /// Starts the process; throws std::runtime_error when it cannot be started. `before` are words of a
    /// command that runs it: env, setpriv.
    explicit WorkerProcess(std::vector<std::string> before = {});
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    WorkerProcess(WorkerProcess&& other) noexcept;
    /// Ends the process: end of input, and SIGKILL when it has not ended ten seconds later. That, and a
    /// status other than 0, is a failure of the test.
    ~WorkerProcess();

    /// Calls a method, or one of the worker's own programs, in the process and waits for the answer. Throws
    /// std::runtime_error with the description when an error was raised there, and when the process has
    /// ended.
    template <class... Arguments>
    Value call(std::string_view method, Arguments&&... arguments) {
        start(method, std::forward<Arguments>(arguments)...);
        return finish();
    }

    /// The two halves of call(), so that several processes may be at work at once.
    template <class... Arguments>
    void start(std::string_view method, Arguments&&... arguments) {
        if constexpr (sizeof...(Arguments) == 0) {
            send(method, Args());
        } else {
            const Value values[] = {Value(std::forward<Arguments>(arguments))...};
            send(method, Args(values));
        }
    }
    Value finish(std::chrono::seconds limit = std::chrono::seconds(120));

    /// Starts a call that is written as the worker reads it.
    void start_line(const std::string& call);
    /// After stepwise(.T.): the stop that the call which was started has come to; "" when it has answered,
    /// which finish() takes then; nothing when it has done neither within the time.
    std::optional<std::string> wait_for_stop(std::chrono::milliseconds limit);
    /// Lets it go on from a stop.
    void go_on() { start_line(""); }

    /// Whether an answer has come that was not taken with finish().
    [[nodiscard]] bool has_answered() const;

    /// Ends the process with SIGKILL and waits until it is gone.
    void kill();

    [[nodiscard]] pid_t pid() const { return pid_; }

  private:
    void send(std::string_view method, Args args);
    std::string read_line(std::chrono::seconds limit);
    /// Whether there is a whole line by then; throws when the process has ended.
    bool has_line(std::chrono::milliseconds limit);
    void close_pipes();
    /// The wait status of the process; nothing when it has not ended by then.
    std::optional<int> wait_for_end(std::chrono::seconds limit);

    pid_t pid_ = -1;
    int input_ = -1;   ///< the process's standard input
    int output_ = -1;  ///< its standard output
    std::string unread_;
};

}  // namespace zmfb::test
