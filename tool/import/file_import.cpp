#include "tool/import/file_import.h"

#include <fmt/format.h>

#include "tool/transfer/progress.h"

namespace zmfb::tool {
namespace {

std::string failed(const ImportOptions& options, const std::string& path) {
    return fmt::format("{} {} imported", path, options.dry_run ? "would not be" : "was not");
}

}  // namespace

FileImport::FileImport(Session& session, const ImportOptions& options, const std::string& path,
                       ImportedSoFar& so_far, ImportedFile& told)
    : session(session),
      connection(session.connection()),
      options(options),
      so_far(so_far),
      told(told),
      rejects(path, so_far.rejects),
      source(open_dbf(path, options.encoding, failed(options, path))) {
    report.file = path;
}

std::string FileImport::not_imported() const { return failed(options, report.file); }

void FileImport::for_each_record(const char* doing,
                                 const std::function<void(const dbf::Records&)>& visit) const {
    constexpr std::uint64_t often = 256;
    Progress progress(doing, source.header.records);
    dbf::Records records(*source.file, source.header, options.all_records);
    while (records.next()) {
        visit(records);
        if (records.number() % often == 0) progress.at(records.number());
    }
}

}  // namespace zmfb::tool
