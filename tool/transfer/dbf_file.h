/// The header of a DBF file, read for a person: what cannot be is named.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zmfb::tool {

struct DbfField {
    std::string name;
    char type = 'C';
    std::size_t length = 0;
    int decimals = 0;
    std::size_t offset = 0;  ///< in the record, behind its deletion flag

    bool operator==(const DbfField&) const = default;
};

struct DbfFile {
    std::string path;
    std::vector<DbfField> fields;
    std::uint64_t counted = 0;  ///< records, as the header counts them
    std::uint64_t records = 0;  ///< of these, as many as the file holds; a last one in part counts
    std::uint64_t start = 0;
    std::size_t record_length = 0;
    std::string header;  ///< its bytes, up to the first record
};

/// Reads the header of the file at `path` as the import does. Returns what makes it no file that can be
/// imported, in words that follow the file's name, else "".
std::string read_dbf_file(const std::string& path, DbfFile& file);

}  // namespace zmfb::tool
