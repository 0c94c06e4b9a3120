#include "tests/support/dialogue.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace zmfb::test {
namespace {

constexpr std::chrono::seconds longest_wait{60};

[[noreturn]] void become(const std::vector<std::string>& command) {
    ::setenv("TERM", "xterm", 1);
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    ::execvp(words[0], words.data());
    ::_exit(127);
}

}  // namespace

Dialogue::Dialogue(const std::vector<std::string>& command) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = 80;
    process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
    if (process_ < 0) throw std::runtime_error("no pseudo-terminal");
    if (process_ == 0) become(command);
    ::fcntl(terminal_, F_SETFD, FD_CLOEXEC);
}

Dialogue::~Dialogue() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    ::close(terminal_);
}

void Dialogue::type(std::string_view keys) {
    if (::write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::runtime_error("the program reads no keys");
}

// .F. when the program has closed its terminal, or nothing came.
bool Dialogue::read_some(int milliseconds) {
    pollfd output{terminal_, POLLIN, 0};
    if (::poll(&output, 1, milliseconds) <= 0) return false;
    std::array<char, 4096> buffer{};
    const ssize_t got = ::read(terminal_, buffer.data(), buffer.size());
    if (got <= 0) return false;
    unread_.append(buffer.data(), static_cast<std::size_t>(got));
    return true;
}

std::string Dialogue::expect(std::string_view text) {
    const auto until = std::chrono::steady_clock::now() + longest_wait;
    for (;;) {
        const std::size_t found = unread_.find(text);
        if (found != std::string::npos) {
            const std::string seen = unread_.substr(0, found + text.size());
            unread_.erase(0, seen.size());
            return seen;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !read_some(static_cast<int>(left.count())))
            throw std::runtime_error("waited for \"" + std::string(text) + "\", there was: " + unread_);
    }
}

std::string Dialogue::expect_prompt(std::string_view text) {
    std::string seen = expect(text);
    const auto until = std::chrono::steady_clock::now() + longest_wait;
    for (termios mode{}; std::chrono::steady_clock::now() < until; ::poll(nullptr, 0, 1)) {
        if (::tcgetattr(terminal_, &mode) != 0) throw std::runtime_error("the program has left its terminal");
        if ((mode.c_lflag & static_cast<tcflag_t>(ICANON)) == 0) return seen;
    }
    throw std::runtime_error("the program shows a prompt, but takes no single keys");
}

int Dialogue::end() {
    const auto until = std::chrono::steady_clock::now() + 2 * longest_wait;
    while (std::chrono::steady_clock::now() < until &&
           read_some(static_cast<int>(std::chrono::milliseconds(longest_wait).count()))) {
    }
    int status = 0;
    while (::waitpid(process_, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > until) throw std::runtime_error("the program does not end");
        ::poll(nullptr, 0, 5);
    }
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace zmfb::test
