// Programs on a pseudo-terminal, and their talk with the test over a socket: a letter, a size, a text, and
// one byte back when it has been done.
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "tests/support/terminal.h"

namespace zmfb::test {
namespace {

struct Theatre {
    int master;
    int channel;
    TerminalScreen screen;
    Performance& performance;
};

// Takes in what the program wrote, until nothing has come for so many milliseconds.
void listen(Theatre& theatre, int quiet) {
    pollfd output{theatre.master, POLLIN, 0};
    while (::poll(&output, 1, quiet) > 0) {
        std::array<char, 65536> buffer{};
        const ssize_t got = ::read(theatre.master, buffer.data(), buffer.size());
        if (got <= 0) return;
        const std::string_view bytes(buffer.data(), static_cast<std::size_t>(got));
        theatre.performance.bytes += bytes;
        theatre.screen.feed(bytes);
    }
}

// Answers one request; false when the program has ended.
bool serve(Theatre& theatre) {
    char what = 0;
    std::uint32_t size = 0;
    if (::recv(theatre.channel, &what, 1, MSG_WAITALL) != 1) return false;
    if (::recv(theatre.channel, &size, sizeof size, MSG_WAITALL) != static_cast<ssize_t>(sizeof size))
        return false;
    std::string text(size, '\0');
    if (size > 0 && ::recv(theatre.channel, text.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size))
        return false;
    constexpr int long_enough = 150;
    if (what == 's') {
        listen(theatre, long_enough);
        theatre.performance.snapshots.insert_or_assign(text, theatre.screen);
    } else if (what == 'k') {
        if (::write(theatre.master, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            return false;
    } else {
        theatre.performance.report += text + '\n';
    }
    return ::send(theatre.channel, "", 1, MSG_NOSIGNAL) == 1;
}

[[noreturn]] void play(int channel, const std::string& kind, const std::function<void(const Stage&)>& body) {
    ::setenv("TERM", kind.c_str(), 1);
    ::unsetenv("LINES");
    ::unsetenv("COLUMNS");
    try {
        body(Stage(channel));
    } catch (const std::exception& failure) {
        Stage(channel).report(failure.what());
        ::_exit(1);
    }
    ::_exit(0);
}

}  // namespace

void Stage::ask(char what, std::string_view text) const {
    const auto size = static_cast<std::uint32_t>(text.size());
    std::string message(1, what);
    message.append(reinterpret_cast<const char*>(&size), sizeof size).append(text);
    char answer = 0;
    if (::send(channel_, message.data(), message.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(message.size()) ||
        ::recv(channel_, &answer, 1, MSG_WAITALL) != 1) {
        ::_exit(98);
    }
}

const TerminalScreen& Performance::snapshot(std::string_view name) const {
    const auto found = snapshots.find(name);
    if (found == snapshots.end())
        throw std::out_of_range("no snapshot " + std::string(name) + "; report: " + report);
    return found->second;
}

Performance perform(int rows, int columns, const std::string& kind,
                    const std::function<void(const Stage&)>& body) {
    std::array<int, 2> channels{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, channels.data()) != 0)
        throw std::runtime_error("no socket");
    winsize size{};
    size.ws_row = static_cast<unsigned short>(rows);
    size.ws_col = static_cast<unsigned short>(columns);
    Performance performance;
    Theatre theatre{-1, channels[0], TerminalScreen(rows, columns), performance};
    std::fflush(nullptr);  // or the child would write what this process has not written yet
    const pid_t child = ::forkpty(&theatre.master, nullptr, nullptr, &size);
    if (child < 0) throw std::runtime_error("no pseudo-terminal");
    if (child == 0) {
        ::close(channels[0]);
        play(channels[1], kind, body);
    }
    ::close(channels[1]);
    std::array<pollfd, 2> waits{{{theatre.channel, POLLIN, 0}, {theatre.master, POLLIN, 0}}};
    for (bool going_on = true; going_on;) {
        ::poll(waits.data(), waits.size(), -1);
        listen(theatre, 0);
        if (waits[0].revents != 0) going_on = serve(theatre);
        if ((waits[1].revents & POLLHUP) != 0) waits[1].fd = -1;
    }
    listen(theatre, 50);
    termios modes{};
    constexpr tcflag_t as_for_a_shell = ECHO | ICANON | ISIG;
    performance.given_back =
        ::tcgetattr(theatre.master, &modes) == 0 && (modes.c_lflag & as_for_a_shell) == as_for_a_shell;
    ::close(theatre.master);
    ::close(theatre.channel);
    int status = 0;
    ::waitpid(child, &status, 0);
    performance.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return performance;
}

}  // namespace zmfb::test
