#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <set>

#include "tool/commands.h"
#include "tool/encoding.h"
#include "tool/import/dbf_source.h"
#include "tool/import/files.h"
#include "tool/import/jobs.h"
#include "tool/import/run.h"
#include "tool/interrupt.h"
#include "tool/line_input.h"
#include "tool/name.h"
#include "tool/rows/shown_text.h"
#include "tool/text_table.h"
#include "zmfbconn/dbf/code_page.h"

namespace zmfb::tool {
namespace {

struct Given : ImportOptions {
    std::vector<std::string> files;
    std::vector<std::string> renames;
    std::string bad_values = "refuse";
    std::string rejects;
    std::size_t jobs = 1;
    std::string manifest_file;
};

[[noreturn]] void usage(const std::string& message, const std::string& detail = {}) {
    throw Failure{Exit::usage, message, detail};
}

void read_renames(Given& given) {
    for (const std::string& rename : given.renames) {
        const std::size_t at = rename.find('=');
        if (at == std::string::npos || at == 0) usage(fmt::format("--rename {}: not OLD=NEW", rename));
        const std::string name = typed_name(rename.substr(at + 1)).bytes();
        if (!Name(name).is_plain()) usage(fmt::format("--rename {}: {}", rename, plain_names_only));
        if (!given.names.fields.emplace(upper_bytes(rename.substr(0, at)), name).second)
            usage(fmt::format("--rename {}: another one names that field", rename));
    }
}

void check(Given& given) {
    read_renames(given);
    if (given.bad_values == "default") given.on_bad_value = OnBadValue::use_default;
    if (given.bad_values == "set-aside") given.on_bad_value = OnBadValue::set_aside;
    if (!given.set_aside.empty() && given.on_bad_value != OnBadValue::set_aside)
        usage("--set-aside goes with --on-bad-value set-aside");
    if (given.append && given.replace) usage("--append and --replace go not together");
    if (given.jobs > 1 && given.replace && !given.yes && !given.dry_run)
        usage("--jobs asks nothing: with --replace it needs --yes");
    if (!given.encoding.empty() && !dbf::ToUtf8(given.encoding).known()) {
        usage(fmt::format("there is no encoding {}", given.encoding),
              "\"iconv -l\" lists them; old DOS files are mostly CP437 or CP850.");
    }
}

// All that was exported is to come in.
std::vector<std::string> files_of_manifest(Given& given) {
    if (given.append) usage("--manifest and --append go not together");
    given.manifest = read_manifest(given.manifest_file);
    std::vector<std::string> files = import_paths(given.files);
    std::set<const ManifestFile*> meant;
    for (const std::string& file : files) meant.insert(given.manifest->entry_of(file));
    for (const ManifestFile& entry : given.manifest->files()) {
        if (given.files.empty()) {
            files.push_back(path_by_manifest(given.manifest_file, entry.file));
        } else if (!meant.contains(&entry)) {
            throw Failure{Exit::failed,
                          fmt::format("{} was exported, and is not among the files", entry.file)};
        }
    }
    return files;
}

// The table at the end of a run of several files.
void print_files(const std::vector<ImportedFile>& files) {
    TextTable shown({{"file"}, {"table"}, {"records", true}, {"changes", true}, {"bad values", true}, {""}});
    for (const ImportedFile& one : files) {
        shown.add({one.file, one.table, std::to_string(one.records), std::to_string(one.changes),
                   std::to_string(one.bad_values), one.refused ? "refused" : ""});
    }
    fmt::print("\n{}", lines_without_controls(shown.text()));
}

// Goes on after a file that was refused, not after one that was interrupted.
Exit import_in_order(Session& session, const Given& given, const std::vector<std::string>& files,
                     ImportedSoFar& so_far, std::vector<ImportedFile>& told) {
    Exit status = Exit::ok;
    for (const std::string& file : files) {
        told.emplace_back().file = file;
        try {
            import_file(session, given, file, so_far, told.back());
        } catch (const Failure& failure) {
            print_failure(failure);
            if (interrupted()) return ending_status();
            told.back().refused = true;
            status = failure.status;
        }
    }
    return status;
}

Exit import_each(Session& session, const Given& given, const std::vector<std::string>& files) {
    ImportedSoFar so_far(given.rejects, given.names.fields);
    std::vector<ImportedFile> told;
    Exit status = given.jobs > 1 && files.size() > 1
                      ? import_at_once(session, given, files, given.jobs, so_far, told)
                      : import_in_order(session, given, files, so_far, told);
    if (interrupted()) return status;
    if (files.size() > 1 && !so_far.unused_renames.empty()) {
        const auto& [from, to] = *so_far.unused_renames.begin();
        print_error(fmt::format("no file has a field {0}, which --rename {0}={1} names", to_utf8(from), to));
        status = Exit::failed;
    }
    if (files.size() > 1 && !session.options().json) print_files(told);
    so_far.rejects.close();
    return status;
}

Exit import_command(Session& session, Given& given) {
    check(given);
    session.require_database();
    session.ask_for_missing_password();
    LineInput::standard().read_only_lines();
    if (given.files.empty() && given.manifest_file.empty()) usage("name a file, or a --manifest");
    const std::vector<std::string> files =
        given.manifest_file.empty() ? import_paths(given.files) : files_of_manifest(given);
    if (given.names.table.empty() && std::ranges::count(files, standard_input) > 0)
        usage("--table names the table of what is read from standard input");
    if ((!given.names.table.empty() || !given.set_aside.empty()) && files.size() != 1)
        usage(fmt::format("--table and --set-aside are for one file, not for {}", files.size()));
    given.names.all_fields = files.size() == 1;
    return import_each(session, given, files);
}

}  // namespace

void add_import(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand command = line.add(
        line.app(), "import", "Bring DBF files in as tables", "zmfb --db shop.fdb import customers.dbf",
        [given](Session& session) { return import_command(session, *given); });
    command.option("FILE", given->files, "DBF files, folders of them, patterns; - for standard input");
    command.option("--manifest", given->manifest_file, "Bring in what that export wrote, and compare it")
        .type_name("FILE")
        .not_empty();
    command.flag("--dry-run", given->dry_run, "Only say what would be made, and what would be refused");
    command.flag("--skip-deleted", given->skip_deleted, "Leave deleted records out");
    command.flag("--mark-deleted", given->names.marks_deleted,
                 "Add a column DELETED_ that says which records were");
    command.flag("--all-records", given->all_records, "Take in records that the header does not count");
    command.flag("--incomplete", given->incomplete, "Import a file that is cut off as far as it goes");
    command
        .option("--encoding-from", given->encoding,
                "Encoding of the texts, such as CP850 (\"iconv -l\" lists them)")
        .not_empty();
    command.flag("--decimal-comma", given->decimal_comma, "Read commas in numbers as points");
    command
        .option("--on-bad-value", given->bad_values,
                "refuse the file, bring in the column's default instead, or set the record aside")
        .one_of({"refuse", "default", "set-aside"})
        .with_default();
    command.option("--set-aside", given->set_aside, "DBF file for such records, else TABLE.bad.dbf")
        .not_empty();
    command.option("--rejects", given->rejects, "CSV file for all values that would be refused").not_empty();
    command
        .option("--jobs", given->jobs, {.least = 1, .most = 1000, .of = "processes"},
                "How many files are loaded at once, by a process each")
        .with_default();
    command.option("--table", given->names.table, "Name of the table instead of the file's").not_empty();
    command.option("--rename", given->renames, "Name of a column instead of the field's: OLD=NEW")
        .type_name("OLD=NEW");
    command.flag("--strict-names", given->names.strict, "Refuse names that would have to be changed");
    command.flag("--replace,--drop-existing", given->replace, "Replace a table that is there; asks first");
    command.flag("--append", given->append, "Add to a table that is there and has the fields");
    command.yes(given->yes);
}

}  // namespace zmfb::tool
