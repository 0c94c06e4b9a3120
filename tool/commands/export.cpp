#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/counted.h"
#include "tool/encoding.h"
#include "tool/export/run.h"
#include "tool/interrupt.h"
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
        const std::vector<ExportTable> tables = tables_meant();
        set_database_encoding(connection_, encoding_name());
        Transaction work(connection_, Access::read_only);
        if (!given_.query.empty())
            attempt(given_.table, [&] { write(work, {given_.table, given_.table, given_.query, {}}, 0); });
        for (const ExportTable& table : tables) {
            if (interrupted()) break;
            attempt(table.file_name, [&] {
                write(work, export_source(connection_, table, given_.wanted),
                      expected_records(connection_, table, given_.wanted));
            });
        }
        check_renames();
        if (status_ == Exit::ok && !given_.manifest.empty()) write_manifest(given_.manifest, so_far_.entries);
        return status_;
    } catch (const SqlError& error) {
        throw_failure(connection_, error, "the export cannot begin");
    }

  private:
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
    void write(Transaction& work, const ExportSource& source, std::uint64_t expected) try {
        log_query(connection_, source.query);
        export_file(session_, work, source, given_, expected, so_far_);
    } catch (const SqlError& error) {
        throw_failure(connection_, error, fmt::format("{} was not exported", source.shown));
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
    void check_renames() {
        if (status_ != Exit::ok || so_far_.unused_renames.empty()) return;
        const auto& [from, to] = *so_far_.unused_renames.begin();
        print_error(fmt::format("there is no column {0}, which --rename {0}={1} names", from, to));
        status_ = Exit::failed;
    }
    void end_interrupted(const std::string& shown) {
        print_error(fmt::format("the export of {} was interrupted, and undone", shown));
        status_ = ending_status();
    }

    Session& session_;
    const Given& given_;
    zmFBConn& connection_;
    ExportedSoFar so_far_{given_.renames, {}};
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
    command.option("--query", given->query, "Write the rows of a SELECT instead").type_name("SQL");
    command.option("--table", given->table, "Name of the file of a query").type_name("NAME");
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
