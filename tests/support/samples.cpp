#include "tests/support/samples.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace zmfb::test {

namespace fs = std::filesystem;

namespace {

std::string named_folders() {
    const char* named = std::getenv("ZMFB_SAMPLES");
    return named != nullptr ? named : "";
}

}  // namespace

std::string sample(const std::string& name) {
    std::istringstream folders(named_folders());
    std::string found;
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (!fs::is_directory(folder)) throw std::runtime_error("ZMFB_SAMPLES names no folder: " + folder);
        if (found.empty() && fs::exists(fs::path(folder) / name)) found = fs::path(folder) / name;
    }
    return found;
}

std::string without_sample(const std::string& name) {
    return named_folders().empty() ? "ZMFB_SAMPLES names no folder of sample files"
                                   : "no " + name + " in the folders of ZMFB_SAMPLES";
}

}  // namespace zmfb::test
