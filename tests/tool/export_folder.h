/// A database, and a folder that it is exported into.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/tool/tool.h"

namespace zmfb::test {

class ExportFolder : public Tool {
  protected:
    ExportFolder() : path(database()), folder_out(file("out")) {
        std::filesystem::create_directory(folder_out);
    }
    Finished call(const std::string& line) const { return on(path, {"call", line}); }
    void exec(const std::string& statement) const { Tool::exec(path, statement); }
    /// zmfb export with these words, into the folder.
    Finished export_to_folder(std::vector<std::string> words, const std::string& input = "") const {
        words.insert(words.begin(), {"export", "-o", folder_out});
        return on(path, words, input);
    }
    /// What lies in the folder, sorted.
    [[nodiscard]] std::vector<std::string> written() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_out))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    /// Those of them that are tables.
    [[nodiscard]] std::vector<std::string> dbf_files() const {
        std::vector<std::string> names = written();
        std::erase_if(names, [](const std::string& name) { return !name.ends_with(".dbf"); });
        return names;
    }

    std::string path;
    std::string folder_out;
};

}  // namespace zmfb::test
