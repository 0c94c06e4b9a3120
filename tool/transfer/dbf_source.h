/// A DBF file with what lies beside it, open for an import.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zmfbconn/dbf/header.h"
#include "zmfbconn/dbf/memo.h"
#include "zmfbconn/dbf/source.h"

namespace zmfb::tool {

struct DbfSource {
    std::unique_ptr<dbf::Source> file;
    dbf::Header header;
    std::unique_ptr<dbf::MemoFile> memo;  ///< null when there is none
    std::string code_page;                ///< of its texts, as iconv names it; "" when nothing says it
};

/// Opens the file. `encoding` goes before what the file says of its texts; "" for nothing. Throws Failure,
/// with all that is wrong: `failed` is what it says then.
DbfSource open_dbf(const std::string& path, const std::string& encoding, const std::string& failed);

}  // namespace zmfb::tool
