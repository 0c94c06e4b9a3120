/// A DBF file with what lies beside it, open for an import.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zmfbconn/dbf/header.h"
#include "zmfbconn/dbf/memo.h"
#include "zmfbconn/dbf/source.h"

namespace zmfb::tool {

struct DbfSource {
    std::unique_ptr<dbf::Source> file;
    dbf::Header header;
    std::unique_ptr<dbf::MemoFile> memo;  ///< null when there is none
    std::string memo_path;                ///< "" when there is none
    std::string code_page;                ///< of its texts, as iconv names it; "" when nothing says it
};

/// What stands for standard input instead of a path.
inline constexpr std::string_view standard_input = "-";

/// Opens the file, or reads standard input, beside which no other file lies. `encoding` goes before what the
/// file says of its texts; "" for nothing. Throws Failure, with all that is wrong: `failed` is what it says
/// then.
DbfSource open_dbf(const std::string& path, const std::string& encoding, const std::string& failed);

}  // namespace zmfb::tool
