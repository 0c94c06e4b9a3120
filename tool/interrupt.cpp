#include "tool/interrupt.h"

#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <ctime>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <type_traits>

#include "zmfbconn/cancel.h"

namespace zmfb::tool {
namespace {

constexpr std::array ending_signals{SIGINT, SIGTERM, SIGHUP};
constexpr int parent_died = SIGUSR1;
constexpr int wake_up = SIGUSR2;
constexpr timespec between_two_cancels{0, 50'000'000};

// Seconds until a process is ended that does not end by itself.
constexpr unsigned without_a_database = 2, with_a_database = 20, for_undoing = 60;

enum ControlCMeans : int { end_of_the_tool, end_of_what_runs, nothing_but_a_note, end_of_what_is_shown };

struct State {
    std::mutex mutex;
    pthread_t main_thread = pthread_self();
    std::atomic<int> ending = 0;
    std::atomic<bool> noted = false;  // a Ctrl-C that does not end the tool
    std::atomic<int> control_c = end_of_the_tool;
    std::atomic<bool> waits = false;  // the main thread, in a system call
    bool undoing = false;
    std::atomic<void (*)()> give_back = nullptr;
};

// Made anew in a forked process, where the mutex may stand as the other thread had it; never destroyed, since
// that thread goes on to the very end.
State before_signals_are_watched;
State* state = &before_signals_are_watched;
static_assert(std::is_trivially_destructible_v<State>);

const sigset_t& awaited_signals() {
    static const sigset_t set = [] {
        sigset_t awaited;
        sigemptyset(&awaited);
        for (const int signal : ending_signals) {
            struct sigaction at_the_start {};
            sigaction(signal, nullptr, &at_the_start);
            if (at_the_start.sa_handler != SIG_IGN) sigaddset(&awaited, signal);
        }
        sigaddset(&awaited, parent_died);
        sigaddset(&awaited, SIGCHLD);
        sigaddset(&awaited, SIGALRM);
        return awaited;
    }();
    return set;
}

// Those that are ignored are blocked as well: the client library's handlers would not ignore them.
void block_signals() {
    sigset_t blocked = awaited_signals();
    for (const int signal : ending_signals) sigaddset(&blocked, signal);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    struct sigaction only_wakes {};
    only_wakes.sa_handler = [](int) {};
    sigemptyset(&only_wakes.sa_mask);
    sigaction(wake_up, &only_wakes, nullptr);
    struct sigaction only_at_the_end {};
    only_at_the_end.sa_flags = SA_NOCLDSTOP;
    sigaction(SIGCHLD, &only_at_the_end, nullptr);
}

// What is said when the time is up, in plain words and as JSON.
struct LastWords {
    std::string_view plain;
    std::string_view json;
};
constexpr LastWords of_undoing{
    "error: the clean-up has not come to an end\n"
    "hint: \"zmfb doctor\" says what was left\n",
    R"({"error":"the clean-up has not come to an end","hint":"\"zmfb doctor\" says what was left"})"
    "\n"};
constexpr LastWords of_what_runs{
    "error: interrupted, but what ran has not come to an end\n"
    "hint: \"zmfb doctor\" says what was left, if anything was\n",
    R"({"error":"interrupted, but what ran has not come to an end",)"
    R"("hint":"\"zmfb doctor\" says what was left, if anything was"})"
    "\n"};

// The time is up. The main thread may hold any lock, and holds it for good.
[[noreturn]] void end_at_once() {
    const LastWords& last = state->undoing ? of_undoing : of_what_runs;
    const std::string_view words = errors_are_json() ? last.json : last.plain;
    if (void (*const give_back)() = state->give_back; give_back != nullptr) give_back();
    if (::write(STDERR_FILENO, words.data(), words.size()) < 0) errno = 0;
    ::_exit(state->ending == 0 ? static_cast<int>(Exit::failed) : static_cast<int>(ending_status()));
}

void wake_main_thread() {
    if (state->waits) pthread_kill(state->main_thread, wake_up);
}

void end_on(int signal) {
    if (state->ending != 0) return;
    state->ending = signal;
    if (state->undoing) {
        ::alarm(for_undoing);
        return;
    }
    const bool attached = cancel();
    wake_main_thread();
    ::alarm(attached ? with_a_database : without_a_database);
}

void take(int signal) {
    const std::lock_guard lock(state->mutex);
    if (signal == SIGALRM) end_at_once();
    if (signal == parent_died) signal = SIGTERM;
    if (signal == SIGCHLD && state->control_c != end_of_what_is_shown) return;
    if ((signal != SIGINT && signal != SIGCHLD) || state->control_c == end_of_the_tool) return end_on(signal);
    if (state->control_c == end_of_what_runs && state->noted) return end_on(signal);
    state->noted = true;
    if (state->control_c != nothing_but_a_note) cancel();
    wake_main_thread();
}

// A statement may just have been let through, and the main thread may be about to wait.
void repeat() {
    const std::lock_guard lock(state->mutex);
    if (!interrupted() || state->undoing) return;
    if (state->ending != 0 || state->control_c != nothing_but_a_note) cancel();
    wake_main_thread();
}

[[noreturn]] void watch() {
    for (;;) {
        const int signal = interrupted() ? sigtimedwait(&awaited_signals(), nullptr, &between_two_cancels)
                                         : sigwaitinfo(&awaited_signals(), nullptr);
        if (signal > 0) {
            take(signal);
        } else {
            repeat();
        }
    }
}

}  // namespace

void watch_signals() {
    state = new State;
    block_signals();
    std::thread(watch).detach();
}

void watch_signals_of_child(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, parent_died);
    watch_signals();
    if (::getppid() != parent) ::kill(::getpid(), parent_died);
}

int ending_signal() { return state->ending; }

Exit ending_status() { return static_cast<Exit>(128 + state->ending); }

bool interrupted() { return state->ending != 0 || state->noted; }

void require_uninterrupted() {
    if (interrupted()) throw Failure{ending_status(), interrupted_message};
}

void before_being_ended(void (*give_back)()) { state->give_back = give_back; }

void begin_undoing() {
    const std::lock_guard lock(state->mutex);
    state->undoing = true;
    resume();
    if (state->control_c == end_of_the_tool) ::alarm(for_undoing);
}

ControlC::ControlC(Second second) : before_(state->control_c) {
    const std::lock_guard lock(state->mutex);
    state->noted = false;
    if (state->ending == 0) resume();
    constexpr std::array means{end_of_what_runs, nothing_but_a_note, end_of_what_is_shown};
    state->control_c = means.at(static_cast<std::size_t>(second));
}

ControlC::~ControlC() {
    const std::lock_guard lock(state->mutex);
    state->control_c = before_;
    state->noted = false;
    if (state->ending != 0) return;
    state->undoing = false;
    resume();
}

Waiting::Waiting() { state->waits = true; }

Waiting::~Waiting() { state->waits = false; }

}  // namespace zmfb::tool
