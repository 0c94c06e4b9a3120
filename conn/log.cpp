#include "conn/log.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>

#include "conn/methods.h"

namespace zmfb::conn {
namespace {

int current_level = 0;

// Every log text passes through this one buffer; its last byte ends the text.
char event_buffer[10000];

// A file that grows beyond the process's limit of file sizes sends a signal that ends the program. While this
// lives the signal is held back from this thread, and what was sent meanwhile is taken away at the end.
class FileSizeSignalHeldBack {
  public:
    FileSizeSignalHeldBack() {
        sigset_t pending;
        ::sigpending(&pending);
        was_pending_ = sigismember(&pending, SIGXFSZ) != 0;
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &signal_, &mask_before_);
    }
    FileSizeSignalHeldBack(const FileSizeSignalHeldBack&) = delete;
    FileSizeSignalHeldBack& operator=(const FileSizeSignalHeldBack&) = delete;
    ~FileSizeSignalHeldBack() {
        const std::timespec at_once{};
        while (!was_pending_ && ::sigtimedwait(&signal_, nullptr, &at_once) < 0 && errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
    }

  private:
    sigset_t signal_;
    sigset_t mask_before_;
    bool was_pending_;
};

void write_entry(int level) {
    if (level > current_level) return;
    const FileSizeSignalHeldBack no_signal;
    const std::time_t now = std::time(nullptr);
    std::FILE* file = std::fopen(log_path(), "a");
    if (file == nullptr) return;
    const char* user = std::getenv("USER");
    char date[26];  // what ctime_r asks for; the text ends in a line break
    std::fprintf(file, "\t[%i] %s ", level, user == nullptr ? "(null)" : user);
    std::fprintf(file, "%s ", ctime_r(&now, date));
    std::fprintf(file, "%s\n", event_buffer);
    std::fclose(file);
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
