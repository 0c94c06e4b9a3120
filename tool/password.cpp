#include "tool/password.h"

#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tool/confirm.h"
#include "tool/interrupt.h"
#include "tool/line_input.h"

namespace zmfb::tool {
namespace {

constexpr std::string_view option = "--password";

// While it lives, what is typed is not shown.
class NoEcho {
  public:
    NoEcho() : known_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!known_) return;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= static_cast<tcflag_t>(ECHONL);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~NoEcho() {
        if (known_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

  private:
    termios before_{};
    bool known_;
};

std::string password_in(const std::string& path) {
    try {
        return LineInput(path).next().value_or("");
    } catch (Failure& failure) {
        if (!interrupted()) failure.status = Exit::usage;
        throw;
    }
}

}  // namespace

void find_password(Options& options, const GivenPassword& given) {
    options.password_given = true;
    if (given.on_command_line) {
        fmt::print(
            stderr,
            "warning: --password shows in the list of processes; ISC_PASSWORD, --password-file and the "
            "prompt do not\n");
        return;
    }
    if (!given.file.empty()) {
        options.password = password_in(given.file);
        if (options.password.ends_with('\r')) options.password.pop_back();
        return;
    }
    const char* const password = std::getenv("ISC_PASSWORD");
    options.password_given = password != nullptr;
    if (password != nullptr) options.password = password;
}

void hide_password(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        char* value = nullptr;
        if (word == option && i + 1 < argc) value = argv[++i];
        if (word.starts_with(option) && word.substr(option.size()).starts_with('=')) {
            value = argv[i] + option.size() + 1;
        }
        if (value != nullptr) std::memset(value, 'x', std::strlen(value));
    }
}

std::optional<std::string> ask_for_password(const std::string& user, const std::string& database) {
    if (isatty(STDIN_FILENO) == 0) return std::nullopt;
    const NoEcho no_echo;
    return ask(fmt::format("Password of {} on {}:", user, database));
}

}  // namespace zmfb::tool
