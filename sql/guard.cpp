#include "sql/guard.h"

#include <fcntl.h>
#include <pthread.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <optional>
#include <random>
#include <set>
#include <thread>

#include "sql/lock_folder.h"

namespace zmfb::sql {

namespace {

// Each process that has a file open holds a read lock on one byte far behind the file's end. Where the byte
// lies says which folder the process' engine keeps its locks in, and which process it is:
//
//     2^62 + identity of the folder (39 bits) * 2^22 + process id (22 bits)
//
// so that a lock anywhere in the region but in the part of one's own folder is a process that must not have
// the file open together with this one. Read locks stand beside each other, and need no right to write.
constexpr int process_bits = 22;
constexpr off_t region = off_t{1} << 62;
static_assert(sizeof(off_t) == 8, "the region lies beyond what 32 bits can tell");

struct Conflict {
    int error = 0;  ///< of a lock that could not be asked for; nothing else is known then
    off_t at = 0;
    pid_t owner = 0;  ///< as the kernel tells it: of ordinary locks only
};

struct flock lock_of(short type, off_t from, off_t length) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = from;
    lock.l_len = length;
    return lock;
}

std::optional<Conflict> conflict_in(int handle, off_t from, off_t length) {
    struct flock lock = lock_of(F_WRLCK, from, length);
    if (fcntl(handle, F_OFD_GETLK, &lock) != 0) return Conflict{.error = errno};
    if (lock.l_type == F_UNLCK) return std::nullopt;
    return Conflict{.at = lock.l_start, .owner = lock.l_pid};
}

off_t own_part() {
    return region + static_cast<off_t>(LockFolder::of_this_process().identity() << process_bits);
}

std::optional<Conflict> conflict_elsewhere(int handle) {
    constexpr off_t to_the_end = 0;
    const off_t own = own_part();
    if (own > region) {
        if (const auto found = conflict_in(handle, region, own - region)) return found;
    }
    return conflict_in(handle, own + (off_t{1} << process_bits), to_the_end);
}

std::string described(pid_t process) {
    const std::string number = std::to_string(process);
    std::string words = "process " + number;
    struct stat status {};
    if (stat(("/proc/" + number).c_str(), &status) != 0) return words;
    std::string program;
    std::getline(std::ifstream("/proc/" + number + "/comm"), program);
    const passwd* const user = getpwuid(status.st_uid);
    words += " (" + program + (program.empty() ? "" : ", ") + "user ";
    return words + (user != nullptr ? user->pw_name : std::to_string(status.st_uid)) + ")";
}

std::string refusal(const std::string& file, const Conflict& conflict) {
    if (conflict.error != 0)
        return "files cannot be locked where " + file + " lies: " + std::strerror(conflict.error);
    if (conflict.at < region)
        return (conflict.owner > 0 ? described(conflict.owner) : "another program") + " has locked all of " +
               file;
    const auto holder = static_cast<pid_t>(conflict.at & ((off_t{1} << process_bits) - 1));
    return described(holder) + " has " + file +
           " open, and its engine does not keep its locks in the folder of this process, " +
           LockFolder::of_this_process().path() + ": neither would see what the other does";
}

// Looks before it takes, so that the unlucky seldom stand in the way of others; and after, since two may have
// looked at the same moment. Then both let go.
std::optional<Conflict> try_to_lock(int handle) {
    if (const auto found = conflict_elsewhere(handle)) return found;
    struct flock lock = lock_of(F_RDLCK, own_part() + getpid(), 1);
    if (fcntl(handle, F_OFD_SETLK, &lock) != 0) return Conflict{.error = errno};
    const auto found = conflict_elsewhere(handle);
    if (found) {
        lock.l_type = F_UNLCK;
        fcntl(handle, F_OFD_SETLK, &lock);
    }
    return found;
}

// Patient for about a second.
std::optional<Conflict> lock_file(int handle) {
    constexpr int tries = 8;
    std::minstd_rand random(static_cast<unsigned>(getpid()));
    std::uniform_int_distribution<int> milliseconds(50, 200);
    std::optional<Conflict> found = try_to_lock(handle);
    for (int tried = 1; found && found->error == 0 && tried < tries; ++tried) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds(random)));
        found = try_to_lock(handle);
    }
    return found;
}

// The engine would wait for who reads and writes it. A disk may have a database on it without a file.
bool is_stream(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode) || S_ISSOCK(status.st_mode));
}

std::set<Guard*>& living() {
    static std::set<Guard*>& guards = *new std::set<Guard*>;
    return guards;
}

}  // namespace

// A child has the same open files as its parent, and the locks on them live as long as either.
void Guard::let_go_in_child() {
    for (Guard* guard : living()) {
        for (int& handle : guard->handles_) {
            close(handle);
            handle = -1;
        }
    }
}

Guard::Guard() {
    static const int registered = pthread_atfork(nullptr, nullptr, let_go_in_child);
    static_cast<void>(registered);
    living().insert(this);
}

Guard::~Guard() {
    living().erase(this);
    for (const int handle : handles_) {
        if (handle >= 0) close(handle);
    }
}

Status Guard::take(const std::string& file) {
    if (is_stream(file)) return Status(file + " is no file");
    const int handle = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (handle < 0) return {};
    Status done = LockFolder::of_this_process().look();
    if (done.ok()) done = LockFolder::of_this_process().look_for_room();
    if (done.ok()) {
        if (const auto conflict = lock_file(handle)) done = Status(refusal(file, *conflict));
    }
    if (done.ok()) {
        handles_.push_back(handle);
    } else {
        close(handle);
    }
    return done;
}

bool Guard::holds(const std::string& file) const {
    struct stat wanted {};
    if (stat(file.c_str(), &wanted) != 0) return false;
    return std::ranges::any_of(handles_, [&](int handle) {
        struct stat held {};
        return fstat(handle, &held) == 0 && held.st_dev == wanted.st_dev && held.st_ino == wanted.st_ino;
    });
}

}  // namespace zmfb::sql
