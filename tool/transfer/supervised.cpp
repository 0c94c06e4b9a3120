#include "tool/transfer/supervised.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/output.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool {
namespace {

constexpr int tick_milliseconds = 100;
constexpr std::string_view failure_head = "failed ", returned = "returned";
// More than the child takes to end itself: it was stopped.
constexpr std::chrono::seconds patience{30};

struct Child {
    pid_t process;
    pid_t parent;
};

Child fork_or_fail() {
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) throw Failure{Exit::failed, "cannot start a process", std::strerror(errno)};
    return {child, parent};
}

[[noreturn]] void end(Exit status) {
    const Exit last = finish_output(status);
    std::fflush(stderr);
    _exit(static_cast<int>(last));
}

void send_failure(const Reports& reports, const Failure& failure) {
    const Json json{{"message", failure.message}, {"detail", failure.detail}, {"hint", failure.hint}};
    reports.send(std::string(failure_head) + json_line(json));
}

Failure received_failure(std::string_view json_text) {
    const Json json = Json::parse(json_text);
    return {.message = json["message"], .detail = json["detail"], .hint = json["hint"]};
}

// Detaching, at the end of the session, is given its time as well.
Exit worked(const Options& options, const std::function<Exit(Session&, const Reports&)>& work,
            const Reports& reports) {
    try {
        Session session(options);
        try {
            const Exit status = work(session, reports);
            reports.send(returned);
            return status == Exit::ok && !session.raised().empty() ? Exit::failed : status;
        } catch (...) {
            begin_undoing();
            throw;
        }
    } catch (const Failure& failure) {
        if (ending_signal() == 0) send_failure(reports, failure);
        return failure.status;
    } catch (const Cancelled&) {
        return ending_status();
    } catch (const std::exception& problem) {
        send_failure(reports, {.message = problem.what()});
        return Exit::failed;
    }
}

// Hands over the whole lines in `pending` and keeps the rest there.
void hand_over(std::string& pending, const OnReport& on_report, Ended& ended) {
    for (std::size_t at = 0; (at = pending.find('\n')) != std::string::npos; pending.erase(0, at + 1)) {
        const std::string_view line = std::string_view(pending).substr(0, at);
        if (line == returned) {
            ended.returned = true;
        } else if (line.starts_with(failure_head)) {
            ended.failure = received_failure(line.substr(failure_head.size()));
        } else {
            on_report(line);
        }
    }
}

// Returns whether there is more to come.
bool take_reports(int descriptor, std::string& pending) {
    std::array<char, 4096> buffer;
    const ssize_t got = read(descriptor, buffer.data(), buffer.size());
    if (got < 0) return errno == EINTR;
    pending.append(buffer.data(), static_cast<std::size_t>(got));
    return got > 0;
}

int wait_for_end(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string death_by(int signal) {
    return fmt::format("its process was ended by signal {} ({})", signal, strsignal(signal));
}

// What the child could not tell any more.
std::string unexpected_end(int status) {
    return WIFSIGNALED(status) ? death_by(WTERMSIG(status))
                               : fmt::format("its process ended with status {}", WEXITSTATUS(status));
}

// Asks the child to end when this process is to end, and ends it when it does not.
class Ending {
  public:
    explicit Ending(pid_t child) : child_(child) {}
    void look() {
        if (ending_signal() == 0) return;
        const auto now = std::chrono::steady_clock::now();
        if (killed_at_ == never) {
            killed_at_ = now + patience;
            begin_undoing();
            kill(child_, ending_signal());
        } else if (now > killed_at_) {
            kill(child_, SIGKILL);
        }
    }

  private:
    static constexpr auto never = std::chrono::steady_clock::time_point::max();
    pid_t child_;
    std::chrono::steady_clock::time_point killed_at_ = never;
};

int run_apart(const std::function<Exit()>& work) {
    const Child child = fork_or_fail();
    if (child.process == 0) {
        end(told([&] {
            watch_signals_of_child(child.parent);
            return work();
        }));
    }
    pass_signals_on_to(child.process);
    const int status = wait_for_end(child.process);
    pass_signals_on_to(0);
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    print_error(death_by(WTERMSIG(status)), "", "\"zmfb doctor\" says what was left, if anything was");
    return 128 + WTERMSIG(status);
}

}  // namespace

void Reports::send(std::string_view line) const {
    const std::string text = fmt::format("{}\n", line);
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t put = write(descriptor_, text.data() + sent, text.size() - sent);
        if (put < 0 && errno != EINTR) return;
        if (put > 0) sent += static_cast<std::size_t>(put);
    }
}

Ended supervise(const Options& options, const std::function<Exit(Session&, const Reports&)>& work,
                const OnReport& on_report) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure{Exit::failed, "cannot make a pipe"};
    const Child child = fork_or_fail();
    if (child.process == 0) {
        close(ends[0]);
        const Reports reports(ends[1]);
        end(told([&] {
            watch_signals_of_child(child.parent);
            return worked(options, work, reports);
        }));
    }
    close(ends[1]);
    Ended ended;
    Ending ending(child.process);
    std::string pending;
    for (bool more = true; more; ending.look()) {
        pollfd wait{ends[0], POLLIN, 0};
        if (poll(&wait, 1, tick_milliseconds) > 0) more = take_reports(ends[0], pending);
        hand_over(pending, on_report, ended);
    }
    close(ends[0]);
    const int status = wait_for_end(child.process);
    ended.status = WIFEXITED(status) ? static_cast<Exit>(WEXITSTATUS(status)) : Exit::failed;
    if (!ended.returned && ended.failure.message.empty()) ended.failure.detail = unexpected_end(status);
    return ended;
}

Exit for_each_apart(const std::vector<std::string>& names,
                    const std::function<Exit(const std::string&)>& work) {
    Exit status = Exit::ok;
    for (const std::string& name : names) {
        const int ended = run_apart([&] { return work(name); });
        if (ended != 0) status = static_cast<Exit>(ended);
        if (ended >= 128) break;
    }
    return status;
}

}  // namespace zmfb::tool
