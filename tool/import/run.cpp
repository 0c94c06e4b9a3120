#include "tool/import/run.h"

#include <fmt/format.h>

#include <chrono>

#include "tool/confirm.h"
#include "tool/counted.h"
#include "tool/import/inspection.h"
#include "tool/import/loading.h"
#include "tool/import/verify.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

void ask(FileImport& file) {
    if (!file.plan.table_exists || file.options.append || file.options.yes) return;
    const std::string records =
        counted(static_cast<std::uint64_t>(file.connection(m::counttablerecords, file.plan.table)), "record",
                "records");
    if (confirm(fmt::format("Drop the table {} with its {}{}?", file.plan.table, records, what_goes(file))))
        return;
    throw Failure{Exit::failed, file.not_imported(), "Nothing was changed."};
}

// The table stays as it is: what differs can be looked for in it.
void verify(FileImport& file) {
    if (file.exported == nullptr) return;
    const std::string differs =
        difference(file.connection, file.plan.table, file.plan.columns, file.source.header, *file.exported);
    if (!differs.empty()) {
        throw Failure{Exit::failed,
                      fmt::format("{} was imported, but does not hold what was exported", file.report.file),
                      differs};
    }
    file.report.notes.emplace_back(
        file.exported->values.empty()
            ? "as many records as were exported; values were converted then, and not compared"
            : "the records and values that were exported");
}

}  // namespace

void import_file(Session& session, const ImportOptions& options, const std::string& path,
                 ImportedSoFar& so_far, ImportedFile& told) {
    const auto start = std::chrono::steady_clock::now();
    FileImport file(session, options, path, so_far, told);
    inspect(file);
    if (options.dry_run) {
        rehearse_import(file);
        print_plan(file.report, session.options().json, can_work(file));
        return refuse(file);
    }
    refuse(file);
    ask(file);
    load(file);
    verify(file);
    file.report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    print_summary(file.report, session.options().json);
}

}  // namespace zmfb::tool
