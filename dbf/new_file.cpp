#include "dbf/new_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

namespace zmfb::dbf {
namespace {

namespace fs = std::filesystem;

std::string name_beside(const std::string& place) {
    std::random_device random;
    return fs::path(place).parent_path() / fmt::format(".zmfb-{:08x}{:08x}", random(), random());
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
    std::string name = name_beside(place_);
    constexpr mode_t usual = 0666;
    descriptor_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, usual);
    if (descriptor_ < 0) fail();
    temporary_ = std::move(name);
    constexpr mode_t permissions = 0777;
    const bool is_ours = is_there && before.st_uid == ::geteuid();
    if (is_ours) static_cast<void>(::fchmod(descriptor_, before.st_mode & permissions));
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

void NewFile::close() {
    if (::fsync(descriptor_) != 0) fail();
    if (::close(std::exchange(descriptor_, -1)) != 0) fail();
}

void NewFile::take_name() {
    if (std::rename(temporary_.c_str(), place_.c_str()) != 0) fail();
    temporary_.clear();
}

void NewFile::fail() const {
    throw fs::filesystem_error("cannot write", place_, std::error_code(errno, std::generic_category()));
}

}  // namespace zmfb::dbf
