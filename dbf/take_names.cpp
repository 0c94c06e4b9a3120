#include "dbf/take_names.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace zmfb::dbf {
namespace {

namespace fs = std::filesystem;

std::string old_name(const std::string& place) {
    const fs::path path(place);
    return path.parent_path() / (".zmfb-old-" + path.filename().string());
}

// The names of files that are on the disk are so only when their folder is.
void sync_folder(const std::string& place) {
    const fs::path path = fs::path(place).parent_path();
    const int folder = ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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
        std::string aside = old_name(place);
        if (std::rename(place.c_str(), aside.c_str()) == 0) {
            files_.emplace_back(place, std::move(aside));
        } else if (errno != ENOENT) {
            throw fs::filesystem_error("cannot write", place,
                                       std::error_code(errno, std::generic_category()));
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

void remove_old(const std::string& place) { ::unlink(old_name(place).c_str()); }

}  // namespace zmfb::dbf
