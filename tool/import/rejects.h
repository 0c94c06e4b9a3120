/// Values that an import refuses: the first of each file for a person, all of a run for a file.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/import/values.h"
#include "tool/output_file.h"

namespace zmfb::tool {

/// The CSV file of all of them.
class RejectsFile {
  public:
    /// "" for none. It is made with the first value, and a file that was there is replaced.
    explicit RejectsFile(std::string path) : path_(std::move(path)) {}

    void add(const std::string& source, const BadValue& value);
    /// For a run in several processes, before they are started: makes it now, to see whether that can be.
    void begin();
    /// In one of them: what is added goes there, for the process that began it to take in.
    void divert_to(std::FILE* rows) { rows_ = rows; }
    void take_in(std::string_view rows);

    /// Why what was added cannot be written: "cannot write /dev/full: ..."; "" when it can.
    [[nodiscard]] std::string problem();
    /// Ends it. Throws Failure when it cannot be written.
    void close();
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    template <class Write>
    void attempt(Write write);

    std::string path_;
    std::optional<OutputFile> file_;
    bool has_rows_ = false;
    std::FILE* rows_ = nullptr;
    std::string problem_;
};

/// Those of one DBF file.
class Rejects {
  public:
    Rejects(std::string source, RejectsFile& all) : source_(std::move(source)), all_(all) {}

    void add(const BadValue& value);
    /// The first twenty, a line each, how many more there are, and where all are.
    [[nodiscard]] std::string text() const;
    /// Why the file of all of them cannot be written; "" when it can.
    [[nodiscard]] std::string problem() const { return all_.problem(); }
    [[nodiscard]] std::uint64_t count() const { return count_; }

  private:
    std::string source_;
    RejectsFile& all_;
    std::vector<std::string> first_;
    std::uint64_t count_ = 0;
};

}  // namespace zmfb::tool
