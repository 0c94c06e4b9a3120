/// Records that do not come in, in a DBF file of their own which can be imported again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/import/dbf_source.h"

namespace zmfb::tool {

/// Writes the records of these numbers, as they are, with the header of the file. The memo file is copied to
/// a name that goes with `path`, and a .cpg file names a code page that the header does not. Throws Failure
/// when one of them cannot be written.
void write_set_aside(const DbfSource& source, const std::vector<std::uint64_t>& records,
                     const std::string& path);

/// Those of the files that it writes, and of the list of reasons, which are there.
std::vector<std::string> set_aside_files(const DbfSource& source, const std::string& path);

/// The file that lists the reasons, beside a file of records set aside.
std::string reasons_beside(const std::string& path);

}  // namespace zmfb::tool
