#include "sql/lock_folder.h"

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "sql/client.h"

namespace zmfb::sql {

namespace {

// A file of our own among the engine's, called as they are: who removes theirs while they are in use removes
// it too, and from then on the folder counts as another one.
constexpr const char* mark_name = "fb_lock_zmfb";

constexpr int identity_bits = 39;

std::string first_line(const char* file) {
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}

std::string place_of(const struct stat& status) {
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

// FNV-1a, the upper bits folded in: the same for all builds, which those of the library need not be.
std::uint64_t hash_of(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return (hash ^ (hash >> identity_bits)) & ((std::uint64_t{1} << identity_bits) - 1);
}

// The engine tells living processes from dead ones by their numbers: those of another container mean nothing
// to it, and neither do those of another machine or of the time before the system was started anew.
std::uint64_t identity_of(const struct stat& mark) {
    struct stat processes {};
    stat("/proc/self/ns/pid", &processes);
    return hash_of(place_of(mark) + " " + place_of(processes) + " " +
                   first_line("/proc/sys/kernel/random/boot_id"));
}

// Whom it belongs to is the engine's business; its number is all that counts here.
int open_mark(const char* path) {
    constexpr int flags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
    const int present = open(path, flags);
    if (present >= 0 || errno != ENOENT) return present;
    const int made = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (made < 0 && errno != EEXIST) return made;
    close(made);
    return open(path, flags);
}

}  // namespace

LockFolder& LockFolder::of_this_process() {
    static LockFolder folder;
    return folder;
}

Status LockFolder::look() {
    std::array<char, PATH_MAX> mark{};
    client().prefix_lock(mark.data(), mark_name);
    if (handle_ < 0) return settle(mark.data());
    struct stat now {};
    struct stat then {};
    if (lstat(mark.data(), &now) == 0 && fstat(handle_, &then) == 0 && place_of(now) == place_of(then))
        return {};
    return Status("the folder of the engine's lock files, " + path_ +
                  ", was moved, replaced or emptied while this program runs");
}

Status LockFolder::settle(const std::string& mark) {
    path_ = std::filesystem::path(mark).parent_path().string();
    handle_ = open_mark(mark.c_str());
    if (handle_ < 0)
        return Status("cannot use the folder of the engine's lock files, " + path_ + ": " +
                      std::strerror(errno));
    struct stat status {};
    fstat(handle_, &status);
    identity_ = identity_of(status);
    return {};
}

}  // namespace zmfb::sql
