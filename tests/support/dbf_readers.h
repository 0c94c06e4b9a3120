/// DBF files as programs that have nothing to do with ours read them.
#pragma once

#include <string>
#include <vector>

namespace zmfb::test {

using DbfRecords = std::vector<std::vector<std::string>>;

/// The records that are not deleted, in order, as the Python package dbfread gives them: texts without their
/// trailing blanks, byte for byte; numbers, True and False as Python writes them; dates as yyyy-mm-dd; None
/// for what is empty. Throws when the package is missing or refuses the file.
DbfRecords read_with_dbfread(const std::string& path);

/// All records as shapelib's dbfdump shows their bytes, without outer blanks. Not for fields longer than
/// 255 bytes, nor for texts with line ends. Throws when the program is missing or refuses the file.
DbfRecords read_with_dbfdump(const std::string& path);

}  // namespace zmfb::test
