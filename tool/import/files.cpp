#include "tool/import/files.h"

#include <dirent.h>
#include <fmt/format.h>
#include <glob.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <system_error>

#include "host/text.h"
#include "tool/interrupt.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

bool is_dbf(const fs::path& path) { return host::lower(path.extension().string()).string() == ".dbf"; }

// Hundreds of thousands take seconds.
void sort(std::vector<std::string>& paths) {
    std::ranges::sort(paths, [](const std::string& a, const std::string& b) {
        require_uninterrupted();
        return a < b;
    });
}

std::vector<std::string> in_folder(const std::string& folder) {
    std::vector<std::string> paths;
    // Where memory ends, a directory_iterator ends the process.
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), ::closedir);
    if (!open) throw Failure{Exit::failed, fmt::format("cannot read {}", folder), std::strerror(errno)};
    while (const dirent* const entry = ::readdir(open.get())) {
        require_uninterrupted();
        const fs::path path = fs::path(folder) / entry->d_name;
        std::error_code gone;
        if (is_dbf(path) && fs::is_regular_file(path, gone)) paths.push_back(path.string());
    }
    if (paths.empty()) throw Failure{Exit::failed, fmt::format("no DBF file is in {}", folder)};
    sort(paths);
    return paths;
}

// What is to end finds no more names.
glob_t interruptible() {
    glob_t found{};
    found.gl_opendir = [](const char* path) -> void* { return interrupted() ? nullptr : ::opendir(path); };
    found.gl_readdir = [](void* folder) -> dirent* {
        return interrupted() ? nullptr : ::readdir(static_cast<DIR*>(folder));
    };
    found.gl_closedir = [](void* folder) { static_cast<void>(::closedir(static_cast<DIR*>(folder))); };
    found.gl_stat = ::stat;
    found.gl_lstat = ::lstat;
    return found;
}

std::vector<std::string> fitting(const std::string& pattern) {
    glob_t found = interruptible();
    const int answer = glob(pattern.c_str(), GLOB_ALTDIRFUNC | GLOB_NOSORT, nullptr, &found);
    std::vector<std::string> paths(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    require_uninterrupted();
    if (answer != 0) throw Failure{Exit::failed, fmt::format("no file fits {}", pattern)};
    sort(paths);
    return paths;
}

std::vector<std::string> meant_by(const std::string& given) {
    std::error_code too_long;  // for the name of a file, as a pattern may be
    if (fs::is_directory(given, too_long)) return in_folder(given);
    const bool is_pattern = given.find_first_of("*?[") != std::string::npos && !fs::exists(given, too_long);
    return is_pattern ? fitting(given) : std::vector{given};
}

}  // namespace

std::vector<std::string> import_paths(const std::vector<std::string>& given) {
    std::vector<std::string> all;
    for (const std::string& one : given) {
        std::vector<std::string> paths = meant_by(one);
        all.insert(all.end(), std::move_iterator(paths.begin()), std::move_iterator(paths.end()));
    }
    return all;
}

}  // namespace zmfb::tool
