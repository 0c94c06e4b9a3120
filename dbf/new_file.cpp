#include "dbf/new_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

#include "dbf/folder.h"

namespace zmfb::dbf {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view beginning = ".zmfb-";
constexpr std::size_t digits = 16;

std::string name_beside(const std::string& place) {
    std::random_device random;
    return fs::path(place).parent_path() / fmt::format("{}{:08x}{:08x}", beginning, random(), random());
}

bool is_temporary(std::string_view name) {
    if (!name.starts_with(beginning)) return false;
    name.remove_prefix(beginning.size());
    return name.size() == digits && name.find_first_not_of("0123456789abcdef") == name.npos;
}

// Not on a file system without locks.
bool lock(int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

// remove_unfinished() of another process may find a file before it is locked.
bool is_kept(int descriptor) {
    struct stat status {};
    const bool is_ours = lock(descriptor) || errno != EWOULDBLOCK;
    return is_ours && ::fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

bool is_unfinished(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
           lock(descriptor);
}

bool remove_if_unfinished(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool is_removed = is_unfinished(descriptor) && ::unlink(path.c_str()) == 0;
    ::close(descriptor);
    return is_removed;
}

}  // namespace

NewFile::NewFile(std::string place) : place_(std::move(place)) {
    struct stat before {};
    const bool is_there = ::stat(place_.c_str(), &before) == 0;
    if (is_there && !S_ISREG(before.st_mode)) {
        errno = S_ISDIR(before.st_mode) ? EISDIR : EINVAL;
        fail();
    }
    if (is_there && ::faccessat(AT_FDCWD, place_.c_str(), W_OK, AT_EACCESS) != 0) fail();
    begin();
    constexpr mode_t permissions = 0777;
    const bool is_ours = is_there && before.st_uid == ::geteuid();
    if (is_ours) static_cast<void>(::fchmod(descriptor_, before.st_mode & permissions));
}

void NewFile::begin() {
    constexpr mode_t usual = 0666;
    do {
        if (descriptor_ >= 0) ::close(descriptor_);
        temporary_ = name_beside(place_);
        descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, usual);
        if (descriptor_ < 0) fail();
    } while (!is_kept(descriptor_));
}

NewFile::~NewFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void NewFile::write(std::string_view bytes) {
    write_at(written_, bytes);
    written_ += bytes.size();
}

void NewFile::write_at(std::uint64_t position, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t done = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) fail();
        bytes.remove_prefix(static_cast<std::size_t>(done));
        position += static_cast<std::uint64_t>(done);
    }
}

void NewFile::sync() {
    if (::fsync(descriptor_) != 0) fail();
}

void NewFile::take_name() {
    if (std::rename(temporary_.c_str(), place_.c_str()) != 0) fail();
    temporary_.clear();
    ::close(std::exchange(descriptor_, -1));
}

void NewFile::fail() const {
    throw fs::filesystem_error("cannot write", place_, std::error_code(errno, std::generic_category()));
}

std::size_t remove_unfinished(const std::string& folder) {
    std::size_t removed = 0;
    std::error_code unreadable;
    for (const std::string& name : names_in(folder, unreadable)) {
        if (is_temporary(name) && remove_if_unfinished(fs::path(folder) / name)) ++removed;
    }
    return removed;
}

}  // namespace zmfb::dbf
