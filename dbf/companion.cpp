#include "dbf/companion.h"

#include <algorithm>
#include <filesystem>

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

std::string find_companion(const std::string& path, std::string_view ending) {
    const fs::path table(path);
    const std::string same_letters = table.stem().string() + std::string(ending);
    const fs::path folder = table.has_parent_path() ? table.parent_path() : fs::path(".");
    std::string found;
    std::error_code unreadable;
    for (fs::directory_iterator entry(folder, unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        const std::string name = entry->path().filename().string();
        if (name == same_letters) return (table.parent_path() / name).string();
        if (lower(name) != lower(same_letters)) continue;
        // Of several the same one each time, whatever the order of the folder.
        if (const std::string one = (table.parent_path() / name).string(); found.empty() || one < found) {
            found = one;
        }
    }
    return found;
}

}  // namespace zmfb::dbf
