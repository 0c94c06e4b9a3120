#include "dbf/companion.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <tuple>

#include "dbf/layout.h"

namespace zmfb::dbf {

namespace fs = std::filesystem;

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
    const std::string same_letters = fs::path(companion_path(path, ending)).filename().string();
    const fs::path folder = table.has_parent_path() ? table.parent_path() : fs::path(".");
    // Of several the same one each time, whatever the order of the folder.
    std::optional<std::tuple<bool, bool, std::string>> found;
    std::error_code unreadable;
    for (fs::directory_iterator entry(folder, unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        const std::string name = entry->path().filename().string();
        if (lower(name) != lower(same_letters)) continue;
        std::tuple one(name != same_letters, fs::path(name).stem() != table.stem(), name);
        if (!found || one < *found) found = std::move(one);
    }
    return found ? (table.parent_path() / std::get<2>(*found)).string() : "";
}

}  // namespace zmfb::dbf
