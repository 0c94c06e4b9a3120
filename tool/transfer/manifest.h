/// The list of the files of an export, by which an import tells that all came back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tool/output_file.h"

namespace zmfb::tool {

/// One exported table.
struct ManifestFile {
    std::string table;   ///< as the database had it, UTF-8
    std::string file;    ///< the path, from the folder of the manifest on
    std::string sha256;  ///< of the file
    std::string memo;    ///< that of its memo file; "" for none
    std::string memo_sha256;
    std::uint64_t records = 0;
    std::string values;  ///< what a ValueSum says of them; "" when some were converted

    bool operator==(const ManifestFile&) const = default;
};

/// The entry of a file that was just written; its path is put in as it is seen from the manifest. Throws
/// Failure when the file cannot be read.
ManifestFile manifest_entry(const std::string& manifest, const std::string& dbf);

/// Writes the list as JSON and closes the file. Throws Failure.
void write_manifest(OutputFile& out, const std::vector<ManifestFile>& files);
/// Such a list, to look files up in.
class Manifest {
  public:
    explicit Manifest(std::vector<ManifestFile> files);
    [[nodiscard]] const std::vector<ManifestFile>& files() const { return files_; }
    /// The entry of a file that is named so, wherever it lies; null for none.
    [[nodiscard]] const ManifestFile* entry_of(const std::string& dbf) const;

  private:
    std::vector<ManifestFile> files_;
    std::map<std::string, std::size_t> by_name_;  // of several the first
};

/// Throws Failure, which says what is wrong, when the file is none.
Manifest read_manifest(const std::string& path);

/// The path of a file of the list.
std::string path_by_manifest(const std::string& manifest, const std::string& file);

/// What differs between the files of `dbf` and what the list says of them, in words that follow a file's
/// name; "" for nothing. Throws std::system_error.
std::string manifest_problem(const ManifestFile& entry, const std::string& dbf);

}  // namespace zmfb::tool
