#include "host/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <utility>

namespace zmfb::host {
namespace {

// Repeats a system call that a signal broke off.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

constexpr std::size_t largest_transfer = std::size_t{1} << 30;

// Transfers piece by piece; errno is 0 afterwards unless an error ended it.
template <class Step>
std::size_t transfer(std::size_t size, Step step) {
    std::size_t done = 0;
    while (done < size) {
        const std::size_t ask = std::min(size - done, largest_transfer);
        const ssize_t now = uninterrupted([&] { return step(done, ask); });
        if (now < 0) return done;
        if (now == 0) break;
        done += static_cast<std::size_t>(now);
    }
    errno = 0;
    return done;
}

off_t offset(std::int64_t position, std::size_t done) {
    return static_cast<off_t>(position) + static_cast<off_t>(done);
}

// The text of the link that `name` ends in, when its owner may be trusted; empty, with errno set, otherwise.
std::string trusted_link(const std::string& name) {
    const Descriptor link(name, O_PATH | O_NOFOLLOW);
    struct stat status {};
    if (!link.is_open() || ::fstat(link.number(), &status) != 0) return {};
    if (!S_ISLNK(status.st_mode) || (status.st_uid != ::geteuid() && status.st_uid != 0)) {
        errno = EACCES;
        return {};
    }
    std::string target(4096, '\0');
    const ssize_t size = ::readlinkat(link.number(), "", target.data(), target.size());
    target.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return target;
}

}  // namespace

int dos_error(int system_error) {
    switch (system_error) {
        case 0:
            return 0;
        case ENOENT:
            return 2;
        case ENOTDIR:
        case ENAMETOOLONG:
            return 3;
        case EMFILE:
        case ENFILE:
            return 4;
        case EBADF:
            return 6;
        case ENOMEM:
            return 8;
        case EINVAL:
        case ESPIPE:
        case EOVERFLOW:
            return 25;
        case ENOSPC:
        case EFBIG:
        case EDQUOT:
        case EPIPE:
            return 29;
        case EIO:
            return 30;
        case ETXTBSY:
        case EBUSY:
            return 32;
        case EAGAIN:
        case EDEADLK:
        case ENOLCK:
            return 33;
        default:
            return 5;
    }
}

int dos_write_error(int system_error) {
    constexpr int access_denied = 5;
    constexpr int write_fault = 29;
    return system_error == EBADF ? access_denied : write_fault;
}

Descriptor::Descriptor(std::string_view name, int flags, unsigned permissions) {
    if (name.empty() || name.find('\0') != std::string_view::npos) {
        errno = ENOENT;
        return;
    }
    const std::string path(name);
    number_ = uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, permissions); });
    struct stat status {};
    if (number_ >= 0 && ::fstat(number_, &status) == 0 && S_ISDIR(status.st_mode)) {
        close();
        errno = EISDIR;
    }
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        close();
        number_ = std::exchange(other.number_, -1);
    }
    return *this;
}

// close(2) lets go of the descriptor even when it reports EINTR, so it is never repeated.
bool Descriptor::close() {
    if (number_ < 0) return true;
    const int result = ::close(std::exchange(number_, -1));
    return result == 0 || errno == EINTR;
}

std::size_t Descriptor::read(std::span<char> target) {
    return transfer(target.size(), [&](std::size_t done, std::size_t ask) {
        return ::read(number_, target.data() + done, ask);
    });
}

std::size_t Descriptor::read_at(std::int64_t position, std::span<char> target) {
    return transfer(target.size(), [&](std::size_t done, std::size_t ask) {
        return ::pread(number_, target.data() + done, ask, offset(position, done));
    });
}

std::size_t Descriptor::write(std::string_view bytes) {
    return transfer(bytes.size(), [&](std::size_t done, std::size_t ask) {
        return ::write(number_, bytes.data() + done, ask);
    });
}

std::size_t Descriptor::write_at(std::int64_t position, std::string_view bytes) {
    return transfer(bytes.size(), [&](std::size_t done, std::size_t ask) {
        return ::pwrite(number_, bytes.data() + done, ask, offset(position, done));
    });
}

std::int64_t Descriptor::seek(std::int64_t offset, int origin) {
    return ::lseek(number_, static_cast<off_t>(offset), origin);
}

std::int64_t Descriptor::size() const {
    struct stat status {};
    return ::fstat(number_, &status) == 0 ? static_cast<std::int64_t>(status.st_size) : -1;
}

bool Descriptor::is_regular() const {
    struct stat status {};
    return ::fstat(number_, &status) == 0 && S_ISREG(status.st_mode);
}

bool Descriptor::truncate(std::int64_t size) {
    return uninterrupted([&] { return ::ftruncate(number_, static_cast<off_t>(size)); }) == 0;
}

bool Descriptor::sync() {
    return uninterrupted([&] { return ::fdatasync(number_); }) == 0;
}

bool Descriptor::lock(Lock kind, ByteRange range, bool wait) {
    struct flock request {};
    request.l_type = kind == Lock::none ? F_UNLCK : kind == Lock::shared ? F_RDLCK : F_WRLCK;
    request.l_whence = SEEK_SET;
    request.l_start = static_cast<off_t>(range.start);
    request.l_len = static_cast<off_t>(range.size);
    const int command = wait ? F_OFD_SETLKW : F_OFD_SETLK;
    return uninterrupted([&] { return ::fcntl(number_, command, &request); }) == 0;
}

// Each link on the way is read through a descriptor of the link itself, so it cannot be exchanged between the
// look at its owner and its use.
Descriptor create_file(std::string_view name, int flags, unsigned permissions) {
    constexpr int most_links = 40;
    std::string path(name);
    for (int links = 0; links < most_links; ++links) {
        Descriptor file(path, O_RDWR | O_CREAT | O_NOFOLLOW | flags, permissions);
        if (file.is_open() || errno != ELOOP) return file;
        const std::string target = trusted_link(path);
        if (target.empty()) return {};
        path = target.front() == '/' ? target : path.substr(0, path.rfind('/') + 1) + target;
    }
    errno = ELOOP;
    return {};
}

}  // namespace zmfb::host
