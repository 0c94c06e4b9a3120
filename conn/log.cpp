#include "conn/log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

#include "conn/methods.h"

namespace zmfb::conn {
namespace {

int current_level = 0;

// Every log text passes through this one buffer; its last byte ends the text.
char event_buffer[10000];

// A file that grows beyond the process's limit of file sizes, and a pipe that nobody reads any more, send
// signals that end the program. While this lives they are held back from this thread, and those sent
// meanwhile are taken away at the end.
class WriteSignalsHeldBack {
  public:
    WriteSignalsHeldBack() {
        sigset_t pending;
        ::sigpending(&pending);
        sigset_t held;
        sigemptyset(&held);
        sigemptyset(&taken_);
        for (const int signal : {SIGXFSZ, SIGPIPE}) {
            sigaddset(&held, signal);
            if (sigismember(&pending, signal) == 0) sigaddset(&taken_, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &held, &mask_before_);
    }
    WriteSignalsHeldBack(const WriteSignalsHeldBack&) = delete;
    WriteSignalsHeldBack& operator=(const WriteSignalsHeldBack&) = delete;
    ~WriteSignalsHeldBack() {
        const std::timespec at_once{};
        while (::sigtimedwait(&taken_, nullptr, &at_once) > 0 || errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
    }

  private:
    sigset_t taken_;  // what was not there before
    sigset_t mask_before_;
};

// In one piece, so that entries of several processes do not mix. A pipe in the place of the file never makes
// a method wait: it gets what somebody reads in time.
void write_entry(int level) {
    if (level > current_level) return;
    const WriteSignalsHeldBack no_signals;
    const std::time_t now = std::time(nullptr);
    constexpr mode_t usual = 0666;
    const int file =
        ::open(log_path(), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, usual);
    if (file < 0) return;
    const char* user = std::getenv("USER");
    if (user == nullptr) user = "(null)";
    char head[16];
    char date[26];  // what ctime_r asks for; the text ends in a line break
    const int head_size = std::snprintf(head, sizeof head, "\t[%i] ", level);
    ::ctime_r(&now, date);
    const auto piece = [](const char* text, std::size_t size) {
        return iovec{const_cast<char*>(text), size};
    };
    const std::array entry{piece(head, static_cast<std::size_t>(head_size)),
                           piece(user, std::strlen(user)),
                           piece(" ", 1),
                           piece(date, std::strlen(date)),
                           piece(" ", 1),
                           piece(event_buffer, std::strlen(event_buffer)),
                           piece("\n", 1)};
    // What cannot be written fails nothing.
    [[maybe_unused]] const ssize_t written = ::writev(file, entry.data(), static_cast<int>(entry.size()));
    ::close(file);
}

std::string_view text_or_empty(const Value& value) {
    return value.is(host::Kind::character) ? value.text() : std::string_view{};
}

}  // namespace

int log_level() { return current_level; }
void set_log_level(int level) { current_level = level; }

void log_event(int level, std::string_view text) {
    const std::size_t length = std::min(text.substr(0, text.find('\0')).size(), sizeof event_buffer - 1);
    text.copy(event_buffer, length);
    event_buffer[length] = '\0';
    write_entry(level);
}

std::string sqlcode_text(int sqlcode, std::string_view message) {
    std::string text = "[ERROR] SQLCODE=" + std::to_string(sqlcode) + " (";
    return text.append(message).append(")");
}

int integer_or_zero(const Value& value) {
    if (!value.is(host::Kind::numeric)) return 0;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(value.integer(), Limits::min(), Limits::max()));
}

Value writelog(Self&, Args args) {
    log_event(integer_or_zero(args[1]), text_or_empty(args[0]));
    return {};
}

Value setloglevel(Self&, Args args) {
    set_log_level(integer_or_zero(args[0]));
    log_event(0, "[LOG#] zmFBConn loglevel now is: " + std::to_string(current_level));
    return {};
}

Value getloglevel(Self&, Args) { return current_level; }

}  // namespace zmfb::conn
