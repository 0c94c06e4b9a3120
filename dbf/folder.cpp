#include "dbf/folder.h"

#include <dirent.h>

#include <cerrno>
#include <memory>

namespace zmfb::dbf {

std::vector<std::string> names_in(const std::string& folder, std::error_code& error) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), ::closedir);
    if (open != nullptr) errno = 0;
    while (const dirent* const entry = open ? ::readdir(open.get()) : nullptr) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != "..") names.emplace_back(name);
        errno = 0;
    }
    error.assign(errno, std::generic_category());
    return names;
}

}  // namespace zmfb::dbf
