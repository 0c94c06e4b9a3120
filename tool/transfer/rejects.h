/// Values that an import refuses: the first of them for a person, all of them for a file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/output_file.h"
#include "tool/transfer/dbf_check.h"

namespace zmfb::tool {

class Rejects {
  public:
    /// With a path, all go to that file as CSV; it is made with the first of them, and a file that was there
    /// is replaced.
    Rejects(std::string source, std::string path) : source_(std::move(source)), path_(std::move(path)) {}

    void add(const BadValue& value);
    /// Ends the file. Throws Failure when it could not be written.
    void close();
    /// The first twenty, a line each, and how many more there are.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::uint64_t count() const { return count_; }

  private:
    std::string source_;
    std::string path_;
    std::optional<OutputFile> file_;
    std::vector<std::string> first_;
    std::uint64_t count_ = 0;
};

}  // namespace zmfb::tool
