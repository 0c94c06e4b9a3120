#include <fmt/format.h>

#include <memory>
#include <optional>

#include "tool/commands.h"
#include "tool/interrupt.h"
#include "tool/line_input.h"
#include "tool/transfer/converted_copy.h"
#include "tool/transfer/import_run.h"
#include "tool/transfer/progress.h"
#include "tool/transfer/supervised.h"
#include "tool/transfer/undo.h"

namespace zmfb::tool {
namespace {

struct Given : ImportOptions {
    std::vector<std::string> files;
};

void note_begun(std::string_view line, Begun& begun) {
    const std::string value(line.substr(std::min(line.size(), line.find(' ') + 1)));
    if (line.starts_with("folder ")) begun.folder = value;
    if (line.starts_with("data ")) begun.data_file = value;
    if (line.starts_with("external ")) begun.external = value;
    if (line.starts_with("table ")) begun.table = value;
    if (line.starts_with("replaces ")) begun.replaced = value;
}

// The process of one file: watches the work and, when it does not come to its end, takes it back.
Exit import_one(const Options& options, const Given& given, const std::string& file) {
    Begun begun;
    std::optional<Progress> progress(std::in_place, options);
    const auto take = [&](std::string_view line) {
        note_begun(line, begun);
        progress->report(line);
    };
    const Ended ended = supervise(
        options,
        [&](Session& session, const Reports& reports) { return import_file(session, reports, given, file); },
        {take, [&] { progress->tick(); }});
    if (ended.returned) return ended.status;
    begin_undoing();
    progress.reset();
    return undo_and_tell(options,
                         {fmt::format("the import of {}", file), fmt::format("{} was not imported", file)},
                         ended, begun);
}

Exit import_command(Session& session, const Given& given) {
    session.require_database();
    session.ask_for_missing_password();
    check_encoding(given.encoding);
    // Each file is asked for in a process of its own: none may read ahead what is meant for the next.
    LineInput::standard().read_only_lines();
    return for_each_apart(
        given.files, [&](const std::string& file) { return import_one(session.options(), given, file); });
}

}  // namespace

void add_import(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand command = line.add(
        line.app(), "import", "Bring DBF files in as tables", "zmfb --db shop.fdb import customers.dbf",
        [given](Session& session) { return import_command(session, *given); });
    command.option("FILE", given->files, "DBF files").required();
    command.flag("--dry-run", given->dry_run, "Only say what would be made, and what would be refused");
    command.flag("--skip-deleted", given->skip_deleted, "Leave deleted records out");
    command.option("--encoding-from", given->encoding,
                   "Encoding of the texts, such as CP850 (\"iconv -l\" lists them)");
    command.option("--rejects", given->rejects, "CSV file for all values that would be refused");
    command.flag("--drop-existing", given->drop_existing, "Replace a table that is there; asks first");
    command.flag("--incomplete", given->incomplete, "Import a file that is cut off as far as it goes");
    command.flag("--keep-data-file", given->keep_data_file,
                 "Leave the flat file that the engine read under /tmp");
    command.yes(given->yes);
}

}  // namespace zmfb::tool
