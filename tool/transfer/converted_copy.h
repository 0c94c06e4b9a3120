/// A copy of a DBF file with other characters, or without its deleted records.
#pragma once

#include <string>

#include "tool/transfer/dbf_file.h"

namespace zmfb::tool {

struct Conversion {
    bool skip_deleted = false;
    std::string encoding;  ///< of the texts of the file, as iconv names it; "" for leaving them as they are

    [[nodiscard]] bool needed() const { return skip_deleted || !encoding.empty(); }
};

/// Throws Failure (usage) for an encoding that is not known.
void check_encoding(const std::string& encoding);

/// Writes the converted file to `path`, texts in the character set of the database. A text that becomes
/// longer is cut to its field when only blanks are lost. Throws Failure, which names record, field and bytes,
/// for a text that is none in its encoding, that has a character which the database does not have, or that
/// does not fit; and when the file cannot be written.
void write_converted(const DbfFile& file, const Conversion& conversion, const std::string& path);

}  // namespace zmfb::tool
