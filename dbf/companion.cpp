#include "dbf/companion.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>
#include <optional>
#include <tuple>

#include "dbf/folder.h"
#include "dbf/layout.h"

namespace zmfb::dbf {

namespace fs = std::filesystem;

namespace {

// The names in a folder that are a companion's, by the name in lower case.
using Names = std::multimap<std::string, std::string>;

bool is_of_a_companion(const std::string& name) {
    const std::string ending = lower(fs::path(name).extension().string());
    return ending == ".cpg" || ending == ".dbt" || ending == ".fpt" || ending == ".smt";
}

Names companions_among_names_in(const fs::path& folder) {
    Names names;
    std::error_code unreadable;
    for (std::string& name : names_in(folder.string(), unreadable)) {
        if (is_of_a_companion(name)) names.emplace(lower(name), std::move(name));
    }
    return names;
}

// Kept until the folder changes: who opens all files of a big one would read it once for each. A change that
// comes right behind another shows in no time of the folder.
const Names& companions_in(const fs::path& folder) {
    struct Read {
        struct stat folder {};
        Names names;
    };
    constexpr std::time_t coarsest = 2;
    thread_local Read last;
    struct stat now {};
    const std::time_t began = std::time(nullptr);
    const bool is_there = ::stat(folder.c_str(), &now) == 0;
    const auto same = [](const timespec& one, const timespec& other) {
        return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
    };
    const bool is_known = is_there && now.st_dev == last.folder.st_dev && now.st_ino == last.folder.st_ino &&
                          same(now.st_mtim, last.folder.st_mtim) && same(now.st_ctim, last.folder.st_ctim);
    if (is_known) return last.names;
    last = {{}, companions_among_names_in(folder)};
    if (is_there && now.st_mtim.tv_sec + coarsest < began && now.st_ctim.tv_sec + coarsest < began)
        last.folder = now;
    return last.names;
}

}  // namespace

std::string lower(std::string_view text) {
    std::string made(text);
    std::transform(made.begin(), made.end(), made.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return made;
}

std::string_view memo_ending(Dialect dialect) {
    if (dialect == Dialect::six) return ".smt";
    return dialect == Dialect::visual_foxpro || dialect == Dialect::foxpro2 ? ".fpt" : ".dbt";
}

std::string companion_path(const std::string& path, std::string_view ending) {
    const fs::path table(path);
    std::string named(ending);
    if (table.extension() == ".DBF") std::transform(named.begin(), named.end(), named.begin(), upper);
    return (table.parent_path() / (table.stem().string() + named)).string();
}

std::string find_companion(const std::string& path, std::string_view ending) {
    const fs::path table(path);
    std::string same = companion_path(path, ending);
    struct stat status {};
    if (::lstat(same.c_str(), &status) == 0) return same;
    const std::string same_letters = fs::path(same).filename().string();
    const Names& names = companions_in(table.has_parent_path() ? table.parent_path() : fs::path("."));
    // Of several the same one each time, whatever the order of the folder.
    std::optional<std::pair<bool, std::string>> found;
    const auto [first, last] = names.equal_range(lower(same_letters));
    for (auto name = first; name != last; ++name) {
        std::pair one(fs::path(name->second).stem() != table.stem(), name->second);
        if (!found || one < *found) found = std::move(one);
    }
    return found ? (table.parent_path() / found->second).string() : "";
}

}  // namespace zmfb::dbf
