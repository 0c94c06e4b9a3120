#include "tool/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>
#include <utility>

#include "tool/file_kind.h"
#include "tool/interrupt.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"

namespace zmfb::tool {
namespace {

constexpr std::size_t block = 65536;

[[noreturn]] void cannot_write(const std::string& path, std::string_view reason) {
    throw Failure{Exit::failed, fmt::format("cannot write {}: {}", path, reason)};
}

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Those of /proc/self/fd lead to what is open already, and their texts are no paths.
bool leads_to_something_open(const std::string& link) {
    struct statfs system {};
    return ::statfs(folder_of(link).c_str(), &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
}

std::string target_of(const std::string& link) {
    std::string target(4096, '\0');
    const ssize_t size = ::readlink(link.c_str(), target.data(), target.size());
    target.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return target.starts_with('/') ? target : folder_of(link) + "/" + target;
}

}  // namespace

std::string place_of_file(const std::string& path) {
    constexpr int most_links = 40;
    std::string place = path;
    for (int links = 0; links < most_links; ++links) {
        struct stat status {};
        if (::lstat(place.c_str(), &status) != 0) return place;
        if (S_ISDIR(status.st_mode)) cannot_write(path, std::strerror(EISDIR));
        if (!S_ISLNK(status.st_mode)) return S_ISREG(status.st_mode) ? place : "";
        if (status.st_uid != ::geteuid() && status.st_uid != 0) {
            cannot_write(path, "it is a symbolic link of another user");
        }
        if (leads_to_something_open(place)) return "";
        place = target_of(place);
    }
    cannot_write(path, std::strerror(ELOOP));
}

template <class Work>
void OutputFile::attempt(const Work& work) const try {
    work();
} catch (const std::filesystem::filesystem_error& problem) {
    cannot_write(path_, problem.code().message());
}

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    const std::string place = place_of_file(path_);
    if (place.empty()) {
        open_stream();
    } else {
        attempt([&] { file_.emplace(place); });
    }
}

OutputFile::~OutputFile() {
    if (stream_ >= 0) ::close(stream_);
}

void OutputFile::give_up() {
    if (file_) {
        file_.reset();
    } else {
        close();
    }
}

// A pipe with a name waits for somebody who reads it.
void OutputFile::open_stream() {
    using namespace std::chrono_literals;
    struct stat status {};
    if (::stat(path_.c_str(), &status) == 0 && (S_ISSOCK(status.st_mode) || S_ISBLK(status.st_mode)))
        cannot_write(path_, fmt::format("it is {}", odd_kind(status.st_mode)));
    std::fflush(stdout);
    constexpr int usual = O_WRONLY | O_APPEND | O_NOCTTY | O_CLOEXEC;
    const auto later = std::chrono::steady_clock::now() + 1s;
    while ((stream_ = ::open(path_.c_str(), usual | O_NONBLOCK)) < 0 && errno == ENXIO &&
           std::chrono::steady_clock::now() < later) {
        require_uninterrupted();
        std::this_thread::sleep_for(10ms);
    }
    if (stream_ >= 0) {
        ::fcntl(stream_, F_SETFL, O_APPEND);
    } else if (errno == ENXIO) {
        say("waiting for somebody who reads {}\n", without_controls(path_));
        stream_ = wait_for([&] { return ::open(path_.c_str(), usual); });
    }
    if (stream_ < 0) fail();
}

void OutputFile::write(std::string_view bytes) {
    pending_ += bytes;
    if (pending_.size() >= block) flush();
}

void OutputFile::flush() {
    if (pending_.empty()) return;
    if (file_) {
        require_uninterrupted();
        attempt([&] { file_->write(pending_); });
    } else {
        flush_stream();
    }
    pending_.clear();
}

void OutputFile::flush_stream() {
    std::string_view rest = pending_;
    while (!rest.empty()) {
        const ssize_t written = wait_for([&] { return ::write(stream_, rest.data(), rest.size()); });
        if (written < 0) fail();
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

void OutputFile::close() {
    flush();
    if (!file_) {
        if (::close(std::exchange(stream_, -1)) != 0) fail();
        return;
    }
    attempt([&] {
        file_->sync();
        file_->take_name();
    });
}

void OutputFile::fail() const { cannot_write(path_, std::strerror(errno)); }

}  // namespace zmfb::tool
