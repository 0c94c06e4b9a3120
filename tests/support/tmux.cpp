#include "tests/support/tmux.h"

#include <fmt/format.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "tests/support/environment.h"
#include "tests/support/process.h"

namespace zmfb::test {
namespace {

constexpr std::chrono::seconds longest_wait{60};
constexpr std::chrono::milliseconds between_looks{20};

// Words as a shell takes them.
std::string quoted(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += " '";
        for (const char c : word) line += c == '\'' ? std::string("'\\''") : std::string(1, c);
        line += "'";
    }
    return line;
}

std::string without_blanks(const std::string& text) {
    std::string lines;
    std::size_t blanks = 0;
    for (const char c : text) {
        if (c == ' ') {
            ++blanks;
            continue;
        }
        if (c != '\n') lines.append(blanks, ' ');
        blanks = 0;
        lines += c;
    }
    return lines;
}

}  // namespace

Tmux::Tmux(const std::vector<std::string>& command, int columns, int rows,
           const std::vector<std::string>& environment) {
    static int number = 0;
    socket_ = process_folder() / fmt::format("tmux{}", ++number);
    const std::string settings = socket_ + ".conf";
    std::ofstream(settings)
        << "set -g status off\nset -s escape-time 0\nset -g default-terminal tmux-256color\n"
        << "set -g default-shell /bin/sh\n";
    std::vector<std::string> words{"env", "-u", "TMUX", "-u", "NO_COLOR"};
    words.insert(words.end(), environment.begin(), environment.end());
    words.insert(words.end(), command.begin(), command.end());
    // Ctrl-C goes to the shell as well, and is to end it no more than the shell of a user does.
    const std::string line = "trap : INT; " + quoted(words) +
                             "; echo \"ended $?\" $(stty -a | grep -Eow -e '-?(icanon|echo|isig)'); "
                             "exec cat >/dev/null";
    const Finished started = run({"tmux", "-S", socket_, "-f", settings, "-u", "new-session", "-d", "-x",
                                  std::to_string(columns), "-y", std::to_string(rows), line});
    if (started.status != 0) throw std::runtime_error("tmux: " + started.err);
}

Tmux::~Tmux() { run({"tmux", "-S", socket_, "kill-server"}); }

std::string Tmux::call(std::vector<std::string> words) const {
    words.insert(words.begin(), {"tmux", "-S", socket_, "-u"});
    const Finished done = run(words);
    if (done.status != 0) throw std::runtime_error("tmux: " + done.err);
    return done.out;
}

void Tmux::press(const std::vector<std::string>& keys) const {
    std::vector<std::string> words{"send-keys"};
    words.insert(words.end(), keys.begin(), keys.end());
    call(words);
}

void Tmux::type(const std::string& text) const { call({"send-keys", "-l", text}); }

void Tmux::resize(int columns, int rows) const {
    call({"resize-window", "-x", std::to_string(columns), "-y", std::to_string(rows)});
}

void Tmux::close() const { call({"kill-session"}); }

std::string Tmux::screen(const std::vector<std::string>& how) const {
    std::vector<std::string> words{"capture-pane", "-p"};
    words.insert(words.end(), how.begin(), how.end());
    return without_blanks(call(words));
}

std::string Tmux::expect(std::string_view text) const {
    const auto until = std::chrono::steady_clock::now() + longest_wait;
    for (;;) {
        std::string shown = screen();
        if (shown.find(text) != std::string::npos) return shown;
        if (std::chrono::steady_clock::now() > until)
            throw std::runtime_error(fmt::format("\"{}\" did not come; there is\n{}", text, shown));
        std::this_thread::sleep_for(between_looks);
    }
}

std::string Tmux::instead_of(const std::string& expected) const {
    const auto until = std::chrono::steady_clock::now() + longest_wait;
    for (;;) {
        std::string shown = screen();
        if (shown == expected) return "";
        if (std::chrono::steady_clock::now() > until) return shown;
        std::this_thread::sleep_for(between_looks);
    }
}

std::string Tmux::ended(int status) { return fmt::format("ended {} isig icanon echo", status); }

}  // namespace zmfb::test
