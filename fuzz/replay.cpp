// Runs a target on every file of the folders given, in the order of their names. Fails when a folder is not
// there and when there is no file at all.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "fuzz/fuzz.h"

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(argv[i], error)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
        if (error) {
            std::fprintf(stderr, "%s: %s\n", argv[i], error.message().c_str());
            return 1;
        }
    }
    std::ranges::sort(files);
    for (const fs::path& file : files) {
        std::fprintf(stderr, "%s\n", file.c_str());  // the last one shown is the one that fails
        // No byte behind the input is there to be read.
        const std::string content = zmfb::fuzz::content_of(file.string());
        const std::vector<std::uint8_t> exact(content.begin(), content.end());
        LLVMFuzzerTestOneInput(exact.data(), exact.size());
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
