#include "tests/transfer/open_files.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

// What the descriptor of an entry of /proc/self/fd is open on, "" when it is gone already.
fs::path target_of(const fs::directory_entry& entry) {
    std::error_code gone;
    return fs::read_symlink(entry.path(), gone);
}

bool lock_for_writing(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock whole {};
    whole.l_type = F_WRLCK;
    return file >= 0 && ::fcntl(file, F_SETLK, &whole) == 0;
}

}  // namespace

std::size_t open_files() {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        if (!target_of(entry).empty()) ++count;
    }
    return count;
}

std::size_t open_files(const std::string& path) {
    const fs::path wanted = fs::canonical(path);
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        if (target_of(entry) == wanted) ++count;
    }
    return count;
}

bool another_process_can_lock(const std::string& path) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(lock_for_writing(path) ? 0 : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

LockHolder::LockHolder(const std::string& path, std::chrono::milliseconds time) : process_(-1) {
    int ready[2];
    if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
        const char locked = lock_for_writing(path) ? 1 : 0;
        const auto told = ::write(ready[1], &locked, 1);
        ::usleep(static_cast<useconds_t>(time.count() * 1000));
        ::_exit(told == 1 ? 0 : 1);
    }
    char locked = 0;
    const bool told = ::read(ready[0], &locked, 1) == 1;
    ::close(ready[0]);
    ::close(ready[1]);
    if (!told || locked != 1) throw std::runtime_error("the other process has no lock on " + path);
}

LockHolder::~LockHolder() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

FileSizeLimit::FileSizeLimit(std::uintmax_t size) : handler_before_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{static_cast<rlim_t>(size), before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_before_);
}

}  // namespace zmfb::test
