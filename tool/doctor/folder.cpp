#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tool/doctor/checks.h"

namespace zmfb::tool {

Finding folder_finding(const std::filesystem::path& folder, bool on_server) {
    const std::string name = "data-file folder";
    struct stat state {};
    if (stat(folder.c_str(), &state) != 0) {
        return {name, State::bad, fmt::format("{} is not there", folder.string()),
                fmt::format("mkdir {}", folder.string())};
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        return {name, State::bad, fmt::format("{} cannot be written by this user", folder.string()),
                "bringdbf and exiletable need it"};
    }
    const bool by_all = (state.st_mode & S_IWOTH) != 0;
    const bool own_files_only = (state.st_mode & S_ISVTX) != 0;
    const std::string who = !by_all          ? "its owner or group may write"
                            : own_files_only ? "everybody may write, and remove files of their own"
                                             : "everybody may write, and remove any file";
    std::string text = fmt::format("{}: {} (permissions {:o})", folder.string(), who,
                                   static_cast<unsigned>(state.st_mode & 07777));
    if (!by_all && on_server) {
        return {name, State::note, text,
                "the account of the server must be able to enter it and write there"};
    }
    if (by_all && !own_files_only) {
        return {name, State::note, text, fmt::format("chmod +t {}", folder.string())};
    }
    return {name, State::ok, text};
}

}  // namespace zmfb::tool
