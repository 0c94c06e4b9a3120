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

[[noreturn]] void cannot_write(const std::string& path, int error) {
    throw fs::filesystem_error("cannot write", path, std::error_code(error, std::generic_category()));
}

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::string name_beside(const std::string& place) {
    std::random_device random;
    return fmt::format("{}.zmfb-{:08x}{:08x}", folder_of(place), random(), random());
}

// The names of files that are on the disk are so only when their folder is.
void sync_folder(const std::string& place) {
    const int folder = ::open(folder_of(place).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    ::fsync(folder);
    ::close(folder);
}

// Files that stand aside under other names while new ones take theirs.
class Aside {
  public:
    Aside() = default;
    Aside(const Aside&) = delete;
    Aside& operator=(const Aside&) = delete;
    // The first one came first and returns last: it is nowhere while the others are not in their places.
    ~Aside() {
        while (!files_.empty()) {
            const auto& [place, aside] = files_.back();
            std::rename(aside.c_str(), place.c_str());
            files_.pop_back();
        }
    }
    void put(const std::string& place) {
        std::string aside = name_beside(place);
        if (std::rename(place.c_str(), aside.c_str()) == 0) {
            files_.emplace_back(place, std::move(aside));
        } else if (errno != ENOENT) {
            cannot_write(place, errno);
        }
    }
    void remove() {
        for (const auto& file : std::exchange(files_, {})) ::unlink(file.second.c_str());
    }

  private:
    std::vector<std::pair<std::string, std::string>> files_;
};

// New files that have taken their names, and lose them again.
class Placed {
  public:
    Placed() = default;
    Placed(const Placed&) = delete;
    Placed& operator=(const Placed&) = delete;
    ~Placed() {
        for (const std::string& place : places_) ::unlink(place.c_str());
    }
    void put(NewFile& file) {
        file.take_name();
        places_.push_back(file.place());
    }
    void keep() { places_.clear(); }

  private:
    std::vector<std::string> places_;
};

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

void NewFile::fail() const { cannot_write(place_, errno); }

void take_names(const std::vector<NewFile*>& files, const std::vector<std::string>& gone) {
    NewFile& first = *files.front();
    if (files.size() == 1 && gone.empty()) {
        first.take_name();
    } else {
        Aside aside;
        Placed placed;
        aside.put(first.place());
        for (const std::string& path : gone) aside.put(path);
        for (std::size_t i = files.size(); i-- > 1;) {
            aside.put(files[i]->place());
            placed.put(*files[i]);
        }
        first.take_name();
        placed.keep();
        aside.remove();
    }
    sync_folder(first.place());
}

}  // namespace zmfb::dbf
