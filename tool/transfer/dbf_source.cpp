#include "tool/transfer/dbf_source.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "tool/session.h"
#include "zmfbconn/dbf/code_page.h"

namespace zmfb::tool {
namespace {

std::unique_ptr<dbf::MemoFile> memo_of(const std::string& path, const dbf::Header& header) {
    if (!header.has_memo()) return nullptr;
    const std::string memo = dbf::find_memo_file(path, header);
    return memo.empty() ? nullptr : std::make_unique<dbf::MemoFile>(memo, header);
}

}  // namespace

DbfSource open_dbf(const std::string& path, const std::string& encoding, const std::string& failed) {
    const std::string name = std::filesystem::path(path).filename().string();
    try {
        DbfSource source;
        source.file = dbf::open_file(path);
        source.header = dbf::read_header(*source.file);
        source.memo = memo_of(path, source.header);
        source.code_page = encoding.empty() ? dbf::code_page(path, source.header) : encoding;
        return source;
    } catch (const dbf::Refused& refused) {
        std::string reasons;
        for (const std::string& reason : refused.reasons()) reasons += fmt::format("{} {}\n", name, reason);
        throw Failure{Exit::failed, failed, reasons};
    } catch (const std::system_error& problem) {
        const bool is_gone = problem.code() == std::errc::no_such_file_or_directory;
        throw Failure{Exit::failed, failed,
                      is_gone ? name + " does not exist"
                              : fmt::format("{} cannot be read: {}", name, problem.code().message())};
    }
}

}  // namespace zmfb::tool
