// The ways out of a program whose full screen is on: the terminal is given back first.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "host/error.h"
#include "on_screen.h"

#define NCURSES_NOMACROS
#include <curses.h>

namespace zmfb::host {
namespace {

using host_test::columns;
using host_test::rows;
using test::perform;
using test::Performance;
using test::Stage;

// What an xterm is sent to show again what it showed before the full screen.
constexpr std::string_view shows_shell = "\x1B[?1049l";

void raise_described() {
    const Value error = error_new();
    error.object()->set("description", "first line;second line");
    error_block(Value());
    raise(error);
}

void throw_it() { throw std::runtime_error("nobody catches this"); }
void throw_to_nobody() noexcept { throw_it(); }

// Goes into the full screen and out of the program; nothing is dumped where that is a crash.
Performance leave(const std::function<void()>& way) {
    return perform(rows, columns, "xterm", [&](const Stage&) {
        const rlimit none{};
        ::setrlimit(RLIMIT_CORE, &none);
        screen_begin();
        devpos(1, 1);
        devout("on the screen");
        way();
    });
}

struct Way {
    const char* name;
    void (*leave)();
    int status;
    std::string_view message = {};
};

TEST(Leaving, GivesTheTerminalBackBeforeAnythingIsSaid) {
    const Way ways[] = {
        {"exit", [] { std::exit(3); }, 3},
        {"quick_exit", [] { std::quick_exit(4); }, 4},
        {"the default error block", raise_described, 1, "first line\r\nsecond line\r\n"},
        {"an exception that nobody catches", throw_to_nobody, 128 + SIGABRT, "nobody catches this"},
        {"abort", std::abort, 128 + SIGABRT},
    };
    for (const auto& [name, way, status, message] : ways) {
        SCOPED_TRACE(name);
        const Performance performance = leave(way);
        EXPECT_EQ(performance.status, status);
        EXPECT_TRUE(performance.given_back);
        const std::size_t shell = performance.bytes.find(shows_shell);
        ASSERT_NE(shell, std::string::npos);
        EXPECT_EQ(performance.bytes.find(shows_shell, shell + 1), std::string::npos) << "given back twice";
        EXPECT_NE(performance.bytes.find(message, shell), std::string::npos) << performance.bytes;
    }
}

TEST(Leaving, BySignalGivesTheTerminalBackAndEndsByThatSignal) {
    std::vector<int> signals{SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGPIPE, SIGALRM,
                             SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGSYS};
#ifndef __SANITIZE_ADDRESS__  // which has handlers of its own for these
    signals.insert(signals.end(), {SIGSEGV, SIGBUS, SIGFPE, SIGILL});
#endif
    for (const int signal : signals) {
        SCOPED_TRACE(::strsignal(signal));
        const Performance performance = leave([&] { ::raise(signal); });
        EXPECT_EQ(performance.status, 128 + signal);
        EXPECT_TRUE(performance.given_back);
        EXPECT_NE(performance.bytes.find(shows_shell), std::string::npos);
    }
}

TEST(Leaving, IsWatchedOnceThoughTheProgramEndsTheScreenItself) {
    const Performance performance = leave([] {
        ::endwin();
        screen_begin();
        throw_to_nobody();
    });
    EXPECT_EQ(performance.status, 128 + SIGABRT);
    EXPECT_TRUE(performance.given_back);
    EXPECT_NE(performance.bytes.find("nobody catches this", performance.bytes.rfind(shows_shell)),
              std::string::npos);
}

int seen = 0;
void see(int) { ++seen; }

TEST(Leaving, SignalsThatTheProgramHandlesOrIgnoresStayItsOwn) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage& stage) {
        std::signal(SIGTERM, see);
        std::signal(SIGHUP, SIG_IGN);
        screen_begin();
        std::signal(SIGUSR1, see);
        for (const int signal : {SIGTERM, SIGHUP, SIGUSR1}) ::raise(signal);
        screen_end();
        for (const int signal : {SIGTERM, SIGHUP, SIGUSR1}) ::raise(signal);
        stage.report(std::to_string(seen));
    });
    EXPECT_EQ(performance.status, 0);
    EXPECT_EQ(performance.report, "4\n");
}

std::string handlers() {
    std::string found;
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGABRT, SIGPIPE, SIGXFSZ}) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_DFL) found += ::strsignal(signal) + std::string("; ");
    }
    return found;
}

TEST(Leaving, NothingIsHandledAnyMoreWhenTheFullScreenIsLeft) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage& stage) {
        const auto terminate = std::get_terminate();
        for (int time = 0; time < 2; ++time) {
            screen_begin();
            stage.report(handlers().empty() || std::get_terminate() == terminate ? "unwatched" : "watched");
            screen_end();
            stage.report(handlers() + (std::get_terminate() == terminate ? "as before" : "not as before"));
        }
        screen_begin();
        std::exit(0);
    });
    EXPECT_EQ(performance.report, "watched\nas before\nwatched\nas before\n");
    EXPECT_TRUE(performance.given_back);
}

TEST(Leaving, AProcessForkedFromTheProgramLeavesItsScreen) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage& stage) {
        screen_begin();
        devpos(1, 1);
        devout("kept");
        for (void (*const way)() : {+[] { std::exit(0); }, +[] { ::raise(SIGTERM); }}) {
            const pid_t child = ::fork();
            if (child == 0) way();
            ::waitpid(child, nullptr, 0);
        }
        stage.report(standard_screen() == nullptr ? "gone" : "there");
        stage.snapshot("after");
        screen_end();
    });
    EXPECT_EQ(performance.report, "there\n");
    EXPECT_EQ(performance.snapshot("after").text(), "\n kept\n");
    EXPECT_EQ(performance.bytes.find(shows_shell), performance.bytes.rfind(shows_shell));
}

TEST(Leaving, TheDefaultErrorBlockGivesAProgramsOwnScreenBackToo) {
    const Performance performance = perform(rows, columns, "xterm", [](const Stage&) {
        ::initscr();
        ::noecho();
        ::refresh();
        raise_described();
    });
    EXPECT_EQ(performance.status, 1);
    EXPECT_TRUE(performance.given_back);
    EXPECT_NE(performance.bytes.find("first line\r\nsecond line\r\n", performance.bytes.find(shows_shell)),
              std::string::npos)
        << performance.bytes;
}

}  // namespace
}  // namespace zmfb::host
