#include "host/leaving.h"

#define NCURSES_NOMACROS
#include <curses.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>

namespace zmfb::host {
namespace {

// Those that end a process by themselves.
constexpr std::array ending_signals{SIGHUP,  SIGINT,    SIGQUIT, SIGILL,  SIGTRAP, SIGABRT,  SIGBUS,  SIGFPE,
                                    SIGUSR1, SIGSEGV,   SIGUSR2, SIGPIPE, SIGALRM, SIGTERM,  SIGXCPU, SIGXFSZ,
                                    SIGPROF, SIGVTALRM, SIGPOLL, SIGPWR,  SIGSYS,  SIGSTKFLT};

pid_t watcher = 0;  // 0 when nobody watches
std::terminate_handler terminate_before = nullptr;

// Curses is not made for signal handlers, but its own does the same: without it a terminal that cannot be
// used is certain. The signal meets the process when this returns.
void end_by_signal(int number) {
    give_terminal_back();
    ::signal(number, SIG_DFL);
    ::raise(number);
}

[[noreturn]] void end_by_terminate() {
    give_terminal_back();
    if (terminate_before != nullptr) terminate_before();
    std::abort();
}

void end_by_exit() {
    if (watcher != 0) give_terminal_back();
}

bool is_default(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_DFL;
}

}  // namespace

void give_terminal_back() {
    if (watcher != 0 && watcher != ::getpid()) return;
    if (stdscr != nullptr && !isendwin()) endwin();
}

void watch_ways_out() {
    static const bool at_exit = std::atexit(end_by_exit) == 0 && std::at_quick_exit(end_by_exit) == 0;
    static_cast<void>(at_exit);
    watcher = ::getpid();
    if (std::get_terminate() != end_by_terminate) terminate_before = std::set_terminate(end_by_terminate);
    struct sigaction ours {};
    ours.sa_handler = end_by_signal;
    for (const int number : ending_signals) {
        struct sigaction found {};
        if (::sigaction(number, nullptr, &found) == 0 && is_default(found))
            ::sigaction(number, &ours, nullptr);
    }
}

void leave_ways_out() {
    watcher = 0;
    if (std::get_terminate() == end_by_terminate) std::set_terminate(terminate_before);
    for (const int number : ending_signals) {
        struct sigaction found {};
        if (::sigaction(number, nullptr, &found) == 0 && found.sa_handler == end_by_signal)
            ::signal(number, SIG_DFL);
    }
}

}  // namespace zmfb::host
