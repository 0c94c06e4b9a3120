#include "tests/support/samples.h"

#include <algorithm>
#include <cctype>
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

std::vector<std::string> folders() {
    std::vector<std::string> found;
    std::istringstream named(named_folders());
    for (std::string folder; std::getline(named, folder, ':');) {
        if (!fs::is_directory(folder)) throw std::runtime_error("ZMFB_SAMPLES names no folder: " + folder);
        found.push_back(folder);
    }
    return found;
}

}  // namespace

std::string sample(const std::string& name) {
    std::string found;
    for (const std::string& folder : folders()) {
        if (found.empty() && fs::exists(fs::path(folder) / name)) found = fs::path(folder) / name;
    }
    return found;
}

std::vector<std::string> samples(const std::string& ending) {
    std::vector<std::string> found;
    for (const std::string& folder : folders()) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            std::string extension = entry.path().extension().string();
            for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            if (extension == ending) found.push_back(entry.path().string());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string without_sample(const std::string& name) {
    return named_folders().empty() ? "ZMFB_SAMPLES names no folder of sample files"
                                   : "no " + name + " in the folders of ZMFB_SAMPLES";
}

}  // namespace zmfb::test
