#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>

#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/export/run.h"
#include "tool/interrupt.h"
#include "tool/output_file.h"
#include "tool/reading.h"
#include "tool/rows/shown_text.h"
#include "tool/say.h"
#include "tool/terminal.h"
#include "tool/transfer/manifest.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/dbf/code_page.h"
#include "zmfbconn/dbf/new_file.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

struct Given : ExportOptions {
    std::vector<std::string> tables;
    bool all = false;
    std::string format_name = "dbase3";
    std::string query, table;
    std::string columns;
    std::vector<std::string> renamed;
    WantedRows wanted;
};

[[noreturn]] void usage(const std::string& message, const std::string& detail = {}) {
    throw Failure{Exit::usage, message, detail};
}

// Parted at the commas that do not stand between double quotes.
std::vector<std::string> list_of(const std::string& text) {
    std::vector<std::string> parts;
    bool quoted = false;
    for (const char c : text) {
        if (parts.empty()) parts.emplace_back();
        if (c == '"') quoted = !quoted;
        if (c == ',' && !quoted) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

void check_query(const Given& given) {
    if (given.table.empty()) usage("--table names the file of what --query gives");
    if (!given.tables.empty() || given.all) usage("--query goes without tables");
    if (!given.wanted.columns.empty() || !given.wanted.where.empty() || !given.wanted.order.empty())
        usage("--columns, --where and --order are for tables; the query has its own");
}

void check(Given& given) {
    if (given.format_name == "foxpro") given.format = dbf::Format::foxpro;
    if (given.format_name == "vfp") given.format = dbf::Format::visual_foxpro;
    given.wanted.columns = list_of(given.columns);
    for (const std::string& column : given.wanted.columns) {
        if (typed_name(column).bytes().empty())
            usage(fmt::format("--columns {}: a name is missing", given.columns));
    }
    if (given.table.ends_with(".dbf") || given.table.ends_with(".DBF"))
        given.table.resize(given.table.size() - std::string_view(".dbf").size());
    for (const std::string& rename : given.renamed) {
        const std::size_t at = rename.find('=');
        if (at == std::string::npos || at == 0 || at + 1 == rename.size())
            usage(fmt::format("--rename {}: not OLD=NEW", rename));
        const std::string name = typed_name(rename.substr(at + 1)).text();
        if (!given.renames.emplace(typed_name(rename.substr(0, at)).bytes(), name).second)
            usage(fmt::format("--rename {}: another one names that column", rename));
    }
    if (!given.encoding.empty() && !dbf::ToUtf8(given.encoding).known()) {
        usage(fmt::format("there is no encoding {}", given.encoding),
              "\"iconv -l\" lists them; old DOS files are mostly CP437 or CP850.");
    }
    if (!given.query.empty()) return check_query(given);
    if (!given.table.empty()) usage("--table goes with --query");
    if (given.tables.empty() == !given.all) usage("name tables, or give --all, or a --query");
}

// As far as it is known without reading the rows; only a person who looks on wants to know.
std::uint64_t expected_records(zmFBConn& connection, const ExportTable& table, const WantedRows& wanted) {
    if (!output_is_terminal() || !wanted.where.empty()) return 0;
    return records_of(connection, table).value_or(0);
}

// Writes one file after another, all of one moment.
class Run {
  public:
    Run(Session& session, const Given& given)
        : session_(session), given_(given), connection_(session.connection_to_any()) {}

    Exit run() try {
        const std::vector<Planned> planned = plan();
        set_database_encoding(connection_, encoding_name());
        Transaction work(connection_, Access::read_only);
        check_renames(work, planned);
        // Begun at once: what cannot be written is found before hours of work.
        std::optional<OutputFile> manifest;
        if (!given_.manifest.empty()) manifest.emplace(given_.manifest);
        for (const Planned& one : planned) {
            if (interrupted()) break;
            attempt(one.source.file_name, [&] { write(work, one); });
        }
        if (status_ == Exit::ok && manifest) write_manifest(*manifest, entries_);
        return status_;
    } catch (const SqlError& error) {
        throw_failure(connection_, error, "the export cannot begin");
    }

  private:
    struct Planned {
        ExportSource source;
        std::uint64_t expected;
    };

    std::vector<ExportTable> tables_meant() {
        std::vector<ExportTable> tables;
        if (given_.all) tables = all_tables(connection_);
        for (const std::string& given : given_.tables) {
            attempt(given, [&] {
                std::ranges::move(tables_meant_by(connection_, given), std::back_inserter(tables));
            });
        }
        return tables;
    }
    std::vector<Planned> plan() {
        std::vector<Planned> planned;
        if (!given_.query.empty()) planned.push_back({{given_.table, given_.table, given_.query, {}}, 0});
        std::set<std::string> files;
        for (const ExportTable& table : tables_meant()) {
            if (interrupted()) break;
            if (!files.insert(table.file_name).second) continue;
            attempt(table.file_name, [&] {
                planned.push_back({export_source(connection_, table, given_.wanted),
                                   expected_records(connection_, table, given_.wanted)});
            });
        }
        for (const Planned& one : planned) check_manifest(one.source.file_name);
        return planned;
    }
    void check_manifest(const std::string& file_name) const {
        if (given_.manifest.empty()) return;
        const fs::path manifest = fs::weakly_canonical(fs::absolute(given_.manifest));
        for (const char* const ending : {".dbf", ".dbt", ".fpt", ".cpg"}) {
            const fs::path file = fs::absolute(fs::path(given_.folder) / (file_name + ending));
            if (fs::weakly_canonical(file) == manifest)
                usage(fmt::format("--manifest {}: a file of the export is to be there", given_.manifest));
        }
    }
    // What cannot be prepared says so when it is written.
    void check_renames(Transaction& work, const std::vector<Planned>& planned) {
        Renames unused = given_.renames;
        for (const Planned& one : planned) {
            if (unused.empty()) return;
            try {
                const Statement statement = work.prepare(one.source.query);
                for (const Column& column : statement.columns()) unused.erase(Name(column.name).bytes());
            } catch (const SqlError&) {
                return;
            }
        }
        if (unused.empty() || planned.empty()) return;
        const auto& [from, to] = *unused.begin();
        throw Failure{Exit::failed,
                      fmt::format("there is no column {0}, which --rename {0}={1} names", from, to)};
    }
    void write(Transaction& work, const Planned& one) try {
        log_query(connection_, one.source.query);
        export_file(session_, work, one.source, given_, one.expected, entries_);
    } catch (const SqlError& error) {
        throw_failure(connection_, error, fmt::format("{} was not exported", one.source.shown));
    }
    // Goes on after one that was refused.
    template <class Work>
    void attempt(const std::string& shown, const Work& work) try {
        work();
    } catch (const Failure& failure) {
        if (interrupted()) return end_interrupted(shown);
        print_failure(failure);
        status_ = failure.status;
    } catch (const Cancelled&) {
        end_interrupted(shown);
    }
    void end_interrupted(const std::string& shown) {
        print_error(fmt::format("the export of {} was interrupted, and undone", shown));
        status_ = ending_status();
    }

    Session& session_;
    const Given& given_;
    zmFBConn& connection_;
    std::vector<ManifestFile> entries_;  // of the manifest, when there is to be one
    Exit status_ = Exit::ok;
};

// By an export that was killed.
void remove_what_was_left(const std::string& folder) {
    const std::size_t files = dbf::remove_unfinished(folder);
    if (files == 0) return;
    say("{} removed from {}, which a process that was killed has left\n",
        counted(files, "unfinished file", "unfinished files"), without_controls(folder));
}

Exit export_command(Session& session, Given& given) {
    check(given);
    session.require_database();
    if (!fs::is_directory(given.folder))
        throw Failure{Exit::failed, fmt::format("there is no folder {}", given.folder)};
    remove_what_was_left(given.folder);
    const Exit status = Run(session, given).run();
    if (status != Exit::ok && !given.manifest.empty() && !interrupted())
        say("no manifest was written, since not all is in the files\n");
    return status;
}

}  // namespace

void add_export(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand command = line.add(
        line.app(), "export", "Write tables into DBF files", "zmfb --db shop.fdb export customers -o /tmp",
        [given](Session& session) { return export_command(session, *given); });
    command.option("TABLE", given->tables,
                   "Tables, views, patterns; the file is named as the table is given here");
    command.flag("--all", given->all, "All tables, in a state of one moment");
    command.option("--query", given->query, "Write the rows of a SELECT instead")
        .type_name("SQL")
        .not_empty();
    command.option("--table", given->table, "Name of the file of a query").type_name("NAME").not_empty();
    command.option("-o,--output", given->folder, "Folder for the files").with_default();
    command.option("--format", given->format_name, "dBASE III, FoxPro 2 or Visual FoxPro")
        .one_of({"dbase3", "foxpro", "vfp"})
        .with_default();
    command.option("--encoding", given->encoding, "Encoding of the texts in the files, else the database's")
        .type_name("NAME")
        .not_empty();
    command.option("--columns", given->columns, "Only these columns, in this order").type_name("A,B");
    command.option("--where", given->wanted.where, "Only the rows that fit").type_name("SQL");
    command.option("--order", given->wanted.order, "Order of the records, else by RECNO").type_name("SQL");
    command.option("--rename", given->renamed, "Name of a field instead of the column's: OLD=NEW")
        .type_name("OLD=NEW");
    command.flag("--lossy", given->lossy, "Convert what the format does not keep, and count it");
    command.option("--manifest", given->manifest, "List of the files with checksums, for import --manifest")
        .type_name("FILE")
        .not_empty();
    command.yes(given->yes);
}

}  // namespace zmfb::tool
