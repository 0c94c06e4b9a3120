#include "tool/file_kind.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tool/interrupt.h"

namespace zmfb::tool {
namespace {

[[noreturn]] void cannot_read(const std::string& path, std::string_view reason) {
    throw Failure{Exit::failed, fmt::format("cannot read {}", path), std::string(reason)};
}

bool has_no_name(int pipe) {
    struct statfs system {};
    return ::fstatfs(pipe, &system) == 0 && system.f_type == PIPEFS_MAGIC;
}

// A file or a pipe without a name, open for reading; closed with this.
struct Opened {
    explicit Opened(const std::string& path)
        : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
        if (descriptor < 0) {
            const std::string reason = std::strerror(errno);
            const std::string_view odd = odd_kind_at(path);
            cannot_read(path, odd.empty() ? reason : fmt::format("it is {}", odd));
        }
        struct stat status {};
        const std::string_view odd = ::fstat(descriptor, &status) == 0 ? odd_kind(status.st_mode) : "";
        if (odd.empty() || (S_ISFIFO(status.st_mode) && has_no_name(descriptor))) {
            ::fcntl(descriptor, F_SETFL, 0);
            return;
        }
        ::close(descriptor);
        cannot_read(path, fmt::format("it is {}", odd));
    }
    ~Opened() { ::close(descriptor); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    int descriptor;
};

}  // namespace

std::string_view odd_kind(mode_t mode) {
    if (S_ISREG(mode)) return "";
    if (S_ISDIR(mode)) return "a folder";
    if (S_ISFIFO(mode)) return "a pipe";
    return S_ISSOCK(mode) ? "a socket" : "a device";
}

std::string_view odd_kind_at(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? odd_kind(status.st_mode) : "";
}

std::string whole_file(const std::string& path, std::string_view kind, std::size_t most) {
    const Opened file(path);
    std::string content;
    std::string block(65536, '\0');
    for (;;) {
        const ssize_t got = wait_for([&] { return ::read(file.descriptor, block.data(), block.size()); });
        if (got < 0) cannot_read(path, std::strerror(errno));
        if (got == 0) return content;
        content.append(block, 0, static_cast<std::size_t>(got));
        if (content.size() > most) {
            throw Failure{Exit::failed,
                          fmt::format("{} is no {}: it has more than {} bytes", path, kind, most)};
        }
    }
}

}  // namespace zmfb::tool
