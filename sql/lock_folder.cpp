#include "sql/lock_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

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

// More than the files of a database take, which the engine maps: what cannot be kept of that ends the
// process.
constexpr off_t room = off_t{3} << 20;

bool is_full(int error) { return error == ENOSPC || error == EDQUOT; }

// 0 where the system tells nothing of it.
int keep_room(int descriptor, off_t size) {
    return fallocate(descriptor, 0, 0, size) != 0 && is_full(errno) ? errno : 0;
}

// Where the engine looks for it, now.
std::string place_of_mark() {
    std::array<char, PATH_MAX> mark{};
    client().prefix_lock(mark.data(), mark_name);
    return mark.data();
}

std::string folder_of(const std::string& file) { return std::filesystem::path(file).parent_path().string(); }

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

Status LockFolder::no_room(int error) const {
    return Status("there is no room for the engine's lock files in " + path_ + ": " + std::strerror(error));
}

Status LockFolder::look_for_room() {
    path_ = folder_of(place_of_mark());
    const int scratch = open(path_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const int error = scratch >= 0 ? keep_room(scratch, room) : is_full(errno) ? errno : 0;
    if (scratch >= 0) close(scratch);
    return error == 0 ? Status() : no_room(error);
}

// By the descriptors of the engine: who closes one of his own on a file gives up the locks of the process on
// it.
Status LockFolder::keep_room_for_files() const {
    const std::unique_ptr<DIR, int (*)(DIR*)> all(opendir("/proc/self/fd"), closedir);
    struct stat folder {};
    if (!all || stat(path_.c_str(), &folder) != 0) return {};
    while (const dirent* const entry = readdir(all.get())) {
        std::array<char, PATH_MAX> file{};
        if (readlinkat(dirfd(all.get()), entry->d_name, file.data(), file.size() - 1) < 0) continue;
        struct stat above {};
        const std::string parent = folder_of(file.data());
        if (stat(parent.c_str(), &above) != 0 || place_of(above) != place_of(folder)) continue;
        const int descriptor = std::atoi(entry->d_name);
        struct stat status {};
        if (fstat(descriptor, &status) != 0 || status.st_size == 0) continue;
        if (const int error = keep_room(descriptor, status.st_size); error != 0) return no_room(error);
    }
    return {};
}

Status LockFolder::look() {
    const std::string mark = place_of_mark();
    if (handle_ < 0) return settle(mark);
    struct stat now {};
    struct stat then {};
    if (lstat(mark.c_str(), &now) == 0 && fstat(handle_, &then) == 0 && place_of(now) == place_of(then))
        return {};
    return Status("the folder of the engine's lock files, " + path_ +
                  ", was moved, replaced or emptied while this program runs");
}

Status LockFolder::settle(const std::string& mark) {
    path_ = folder_of(mark);
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
