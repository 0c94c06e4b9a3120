#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "dbf/header.h"
#include "host/text.h"
#include "tool/catalog.h"
#include "tool/commands.h"
#include "tool/confirm.h"
#include "tool/counted.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/output_file.h"
#include "tool/say.h"
#include "tool/transfer/export_check.h"
#include "tool/transfer/supervised.h"
#include "tool/transfer/undo.h"
#include "zmfbconn/database.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

struct Given {
    std::vector<std::string> tables;
    std::string folder = ".";
    bool yes = false;
    bool keep_data_file = false;
};

// Makes a folder the current one while it lives.
class InFolder {
  public:
    explicit InFolder(const fs::path& folder) : before_(fs::current_path()) { fs::current_path(folder); }
    ~InFolder() {
        std::error_code ignored;
        fs::current_path(before_, ignored);
    }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

  private:
    fs::path before_;
};

// A folder beside the file to be, so that a finished file takes its name in one go.
fs::path make_private_folder(const fs::path& beside) {
    std::string name = (fs::absolute(beside) / ".zmfb-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw Failure{Exit::failed, fmt::format("cannot write into {}", beside.string())};
    }
    return name;
}

// A file that is not there, or is no DBF file, has none.
std::int64_t record_count(const fs::path& dbf) {
    try {
        return static_cast<std::int64_t>(dbf::read_header(*dbf::open_file(dbf.string())).records);
    } catch (const std::runtime_error&) {
        return 0;
    }
}

// The table, when the method can name it and its columns without quotes.
std::string nameable_table(zmFBConn& connection, const std::string& table) {
    const Name name = existing_name(connection, table);
    const auto refuse = [&](const std::string& reason) {
        throw Failure{Exit::failed, fmt::format("{} cannot be exported", name.shown()), reason};
    };
    std::vector<Name> all = column_names_of(connection, name);
    all.push_back(name);
    const auto odd = std::ranges::find(all, false, &Name::is_plain);
    if (odd != all.end()) refuse(fmt::format("{}: {}", odd->shown(), plain_names_only));
    const std::vector<Name> reserved = reserved_among(connection, all);
    if (!reserved.empty()) refuse(joined(reserved) + ": reserved words");
    return name.bytes();
}

void report_check(const std::string& table, const ExportCheck& check) {
    if (check.refusals.empty()) {
        for (const std::string& warning : check.warnings) say("warning: {}: {}\n", table, warning);
        return;
    }
    std::string reasons;
    for (const std::string& refusal : check.refusals) reasons += refusal + "\n";
    throw Failure{Exit::failed, fmt::format("{} cannot be exported", table), reasons};
}

// Writes the file into the private folder; returns the seconds it took.
double write_file(Session& session, const std::string& name, const fs::path& folder) {
    const auto start = std::chrono::steady_clock::now();
    const std::size_t raised_before = session.raised().size();
    const InFolder here(folder);
    if (!session.connection()(m::exiletable, name)) {
        const std::string said = last_engine_message();
        const bool silent = session.raised().size() == raised_before && said.empty();
        throw Failure{Exit::failed, fmt::format("{} was not exported", name),
                      silent ? "The file could not be written." : said};
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Exit export_in_child(Session& session, const Reports& reports, const Given& given, const std::string& table) {
    zmFBConn& connection = session.connection();
    const std::string upper = nameable_table(connection, table);
    const std::string name = host::upper(table).string() == upper ? table : upper;
    const Structure structure = connection(m::filterrddfields, connection(m::gettablestruct, upper));
    if (structure.empty()) throw Failure{Exit::failed, fmt::format("{} has no columns of its own", table)};
    report_check(upper, check_export(connection, upper, structure));

    const fs::path target = fs::path(given.folder) / (name + ".dbf");
    const fs::path place = place_of_file(target);
    if (place.empty())
        throw Failure{Exit::failed, fmt::format("cannot write {}: it is no file", target.string())};
    if (fs::exists(target) && !given.yes && !confirm(fmt::format("Replace {}?", target.string()))) {
        throw Failure{Exit::failed, fmt::format("{} is there already", target.string()),
                      "Nothing was changed. --yes replaces it without asking."};
    }
    drop_leftover(connection, "EXT_" + upper);
    const fs::path folder = make_private_folder(place.parent_path());
    reports.send("folder " + folder.string());
    const std::string data_file = connection(m::getfullpathdatfile);
    reports.send("data " + data_file);
    reports.send("external EXT_" + upper);
    const double seconds = write_file(session, name, folder);
    const auto rows = connection(m::counttablerecords, name);
    const std::int64_t records = record_count(folder / (name + ".dbf"));
    if (rows != records) {
        throw Failure{Exit::failed, fmt::format("{} was not exported: the file has {} records, the table {}",
                                                table, records, rows)};
    }
    const std::string written = target.lexically_normal().string();
    std::error_code problem;
    fs::rename(folder / (name + ".dbf"), place, problem);
    if (problem) throw Failure{Exit::failed, fmt::format("cannot write {}: {}", written, problem.message())};
    if (session.options().json) {
        Json json{{"table", upper},
                  {"file", written},
                  {"records", records},
                  {"fields", structure.size()},
                  {"seconds", seconds}};
        if (given.keep_data_file) json["data_file"] = data_file;
        fmt::print("{}\n", json_line(json));
    } else {
        fmt::print("{} -> {}: {}, {}, {:.2f} s\n", upper, written, counted(records, "record", "records"),
                   counted(structure.size(), "field", "fields"), seconds);
    }
    return Exit::ok;
}

void note_begun(std::string_view line, Begun& begun) {
    const std::string value(line.substr(std::min(line.size(), line.find(' ') + 1)));
    if (line.starts_with("folder ")) begun.folder = value;
    if (line.starts_with("data ")) begun.data_file = value;
    if (line.starts_with("external ")) begun.external = value;
}

// The process of one table: watches the work and clears up behind it.
Exit export_one(const Options& options, const Given& given, const std::string& table) {
    Begun begun;
    const Ended ended = supervise(
        options,
        [&](Session& session, const Reports& reports) {
            return export_in_child(session, reports, given, table);
        },
        [&](std::string_view line) { note_begun(line, begun); });
    if (!ended.returned) {
        begin_undoing();
        return undo_and_tell(
            options, {fmt::format("the export of {}", table), fmt::format("{} was not exported", table)},
            ended, begun);
    }
    if (given.keep_data_file) {
        if (!options.json) fmt::print("data file: {}\n", begun.data_file);
        begun.data_file.clear();
    }
    remove_files(begun);
    return ended.status;
}

Exit export_command(Session& session, const Given& given) {
    session.require_database();
    session.ask_for_missing_password();
    if (!fs::is_directory(given.folder)) {
        throw Failure{Exit::failed, fmt::format("there is no folder {}", given.folder)};
    }
    return for_each_apart(
        given.tables, [&](const std::string& table) { return export_one(session.options(), given, table); });
}

}  // namespace

void add_export(CommandLine& line) {
    const auto given = std::make_shared<Given>();
    const Subcommand command = line.add(
        line.app(), "export", "Write tables into DBF files", "zmfb --db shop.fdb export customers -o /tmp",
        [given](Session& session) { return export_command(session, *given); });
    command.option("TABLE", given->tables, "Tables; the file is named as the table is given here").required();
    command.option("-o,--output", given->folder, "Folder for the files").with_default();
    command.flag("--keep-data-file", given->keep_data_file,
                 "Leave the flat file that the engine wrote under /tmp");
    command.yes(given->yes);
}

}  // namespace zmfb::tool
