#include "tool/transfer/supervised.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

namespace zmfb::tool {
namespace {

constexpr int tick_milliseconds = 100;
constexpr std::array signals{SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t caught = 0;
volatile std::sig_atomic_t passed_on_to = 0;

void note(int signal) {
    caught = signal;
    if (passed_on_to != 0) kill(passed_on_to, signal);
}

// Notes these signals while it lives, and passes them on to a process if there is one.
class Signals {
  public:
    Signals() {
        caught = 0;
        struct sigaction action {};
        action.sa_handler = note;
        sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &action, &before_[i]);
    }
    ~Signals() {
        passed_on_to = 0;
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &before_[i], nullptr);
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

  private:
    std::array<struct sigaction, signals.size()> before_{};
};

pid_t fork_or_fail() {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw Failure{Exit::failed, "cannot start a process"};
    return child;
}

[[noreturn]] void end(Exit status) {
    std::fflush(nullptr);
    _exit(static_cast<int>(status));
}

// The terminal's signals reach the child too, but only its watcher acts on it.
[[noreturn]] void be_child(const Options& options, const std::function<Exit(Session&, const Reports&)>& work,
                           int descriptor, pid_t watcher) {
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGTERM, SIG_DFL);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != watcher) _exit(static_cast<int>(Exit::failed));
    end(told_in_session(options, [&](Session& session) { return work(session, Reports(descriptor)); }));
}

// Hands over the whole lines in `pending` and keeps the rest there.
void hand_over(std::string& pending, const Supervision& supervision) {
    for (std::size_t at = 0; (at = pending.find('\n')) != std::string::npos; pending.erase(0, at + 1)) {
        if (supervision.on_report) supervision.on_report(std::string_view(pending).substr(0, at));
    }
}

// Returns whether there is more to come.
bool take_reports(int descriptor, std::string& pending, const Supervision& supervision) {
    std::array<char, 4096> buffer;
    const ssize_t got = read(descriptor, buffer.data(), buffer.size());
    if (got < 0) return errno == EINTR;
    pending.append(buffer.data(), static_cast<std::size_t>(got));
    hand_over(pending, supervision);
    return got > 0;
}

int wait_for(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

int run_apart(const std::function<Exit()>& work) {
    const Signals signals;
    const pid_t child = fork_or_fail();
    if (child == 0) {
        caught = 0;
        passed_on_to = 0;
        end(told(work));
    }
    passed_on_to = child;
    if (caught != 0) kill(child, caught);
    const int status = wait_for(child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
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
                const Supervision& supervision) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure{Exit::failed, "cannot make a pipe"};
    const Signals signals;
    const pid_t watcher = getpid();
    const pid_t child = fork_or_fail();
    if (child == 0) {
        close(ends[0]);
        be_child(options, work, ends[1], watcher);
    }
    close(ends[1]);
    std::string pending;
    for (bool more = true; more && caught == 0;) {
        pollfd wait{ends[0], POLLIN, 0};
        if (poll(&wait, 1, tick_milliseconds) > 0) more = take_reports(ends[0], pending, supervision);
        if (more && supervision.on_tick) supervision.on_tick();
    }
    const int signal = caught;
    if (signal != 0) kill(child, SIGKILL);
    const int status = wait_for(child);
    // What the child said before its end still counts.
    if (signal != 0) {
        while (take_reports(ends[0], pending, supervision)) {
        }
    }
    close(ends[0]);
    if (signal != 0) return {Exit::failed, signal};
    return {WIFEXITED(status) ? static_cast<Exit>(WEXITSTATUS(status)) : Exit::failed, 0};
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
