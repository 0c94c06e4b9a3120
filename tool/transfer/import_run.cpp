#include "tool/transfer/import_run.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "tool/catalog.h"
#include "tool/confirm.h"
#include "tool/counted.h"
#include "tool/dependents.h"
#include "tool/drop.h"
#include "tool/encoding.h"
#include "tool/interrupt.h"
#include "tool/json.h"
#include "tool/output.h"
#include "tool/text_table.h"
#include "tool/transfer/converted_copy.h"
#include "tool/transfer/dbf_check.h"
#include "tool/transfer/import_plan.h"
#include "tool/transfer/progress.h"
#include "tool/transfer/rejects.h"
#include "tool/transfer/undo.h"
#include "zmfbconn/database.h"

namespace zmfb::tool {
namespace {

namespace fs = std::filesystem;

// A date takes two characters more in the file that the engine reads.
std::size_t data_record_size(const DbfFile& file) {
    std::size_t size = 0;
    for (const DbfField& field : file.fields) size += field.type == 'D' ? 10 : field.length;
    return size;
}

// A private folder for a converted copy, removed at the end.
class PrivateFolder {
  public:
    explicit PrivateFolder(const Reports& reports) {
        std::string name = (fs::temp_directory_path() / "zmfb-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw Failure{Exit::failed, "cannot make a folder for the copy"};
        path_ = name;
        reports.send("folder " + name);
    }
    ~PrivateFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    [[nodiscard]] const fs::path& path() const { return path_; }

  private:
    fs::path path_;
};

class Import {
  public:
    Import(Session& session, const Reports& reports, const ImportOptions& options, const std::string& file)
        : session_(session),
          connection_(session.connection()),
          reports_(reports),
          options_(options),
          file_(file),
          rejects_(file, options.rejects) {}

    Exit run() {
        check();
        if (options_.dry_run) return tell();
        refuse();
        // Made first: what cannot be converted must not cost the table that is there.
        std::optional<PrivateFolder> folder;
        const std::string path = source(folder);
        make_room();
        bring(path);
        summarize();
        return Exit::ok;
    }

  private:
    void check();
    void check_existing();
    Exit tell() const;
    void print_plan(bool possible) const;
    void refuse() const;
    [[nodiscard]] std::string source(std::optional<PrivateFolder>& folder);
    void make_room();
    void bring(const std::string& path);
    void summarize() const;

    [[nodiscard]] std::string notes(bool made) const;
    [[nodiscard]] Json as_json() const;

    Session& session_;
    zmFBConn& connection_;
    const Reports& reports_;
    const ImportOptions& options_;
    const std::string& file_;
    DbfFile dbf_;
    ImportPlan plan_;
    std::vector<Name> views_;  // those that go with the table that is there
    CheckResult found_;
    Rejects rejects_;
    std::string data_file_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void Import::check() {
    const std::string problem = read_dbf_file(file_, dbf_);
    if (!problem.empty()) {
        throw Failure{Exit::failed, fmt::format("{} was not imported", file_),
                      fmt::format("{} {}", fs::path(file_).filename().string(), problem)};
    }
    plan_ = plan_import(connection_, dbf_);
    if (plan_.table_exists) check_existing();
    if (dbf_.counted != dbf_.records && !options_.incomplete) {
        plan_.refusals.push_back(
            fmt::format("the header counts {}, the file holds {}; --incomplete imports those",
                        counted(dbf_.counted, "record", "records"), dbf_.records));
    }
    reports_.send(fmt::format("phase check {}", dbf_.records));
    found_ =
        check_records(dbf_, {options_.skip_deleted, [this](const BadValue& value) { rejects_.add(value); },
                             [this](std::uint64_t number) {
                                 require_uninterrupted();
                                 reports_.send(fmt::format("at {}", number));
                             }});
    reports_.send("phase none 0");
    rejects_.close();
}

// What the driver has not made, or needs itself, is nothing to replace.
void Import::check_existing() {
    const std::string table = to_utf8(plan_.table);
    const TableKind kind = kind_of(connection_, Name(plan_.table));
    if (kind != TableKind::driver) {
        const std::string_view what = kind == TableKind::view     ? "is a view"
                                      : kind == TableKind::system ? "is the driver's own"
                                                                  : "was not made by the driver";
        plan_.refusals.push_back(fmt::format("{} is there already and {}", table, what));
    } else if (!options_.drop_existing) {
        plan_.refusals.push_back(
            fmt::format("the table {} is there already; --drop-existing replaces it", table));
    } else {
        const Dependents dependents = dependents_of_table(connection_, Name(plan_.table));
        views_ = names_in(dependents.taken);
        if (dependents.in_the_way.empty()) return;
        plan_.refusals.push_back(fmt::format("the table {} cannot be replaced: it is in use by {}", table,
                                             in_words(dependents.in_the_way)));
    }
}

// What a person should know of the records, a line each.
std::string Import::notes(bool made) const {
    std::string lines;
    if (found_.deleted > 0) {
        const std::string records = counted(found_.deleted, "deleted record", "deleted records");
        const char* said = made ? "came along" : "would come along";
        lines += options_.skip_deleted
                     ? fmt::format("{} left out\n", records)
                     : fmt::format("{} {}; --skip-deleted leaves them out\n", records, said);
    }
    if (found_.lost_dates > 0) {
        lines +=
            fmt::format("{} {} NULL\n", counted(found_.lost_dates, "impossible date", "impossible dates"),
                        made ? "became" : "would become");
    }
    if (found_.zero_texts > 0) {
        lines += fmt::format("{} kept as they are\n",
                             counted(found_.zero_texts, "text with a zero byte", "texts with zero bytes"));
    }
    return lines;
}

Json Import::as_json() const {
    return {{"file", file_},
            {"table", shown_bytes(plan_.table)},
            {"records", found_.records},
            {"fields", plan_.columns.size()},
            {"deleted", found_.deleted},
            {"impossible_dates", found_.lost_dates},
            {"texts_with_zero_bytes", found_.zero_texts}};
}

void Import::print_plan(bool possible) const {
    if (session_.options().json) {
        Json json = as_json();
        json["columns"] = Json::array();
        for (const PlannedColumn& column : plan_.columns) {
            json["columns"].push_back({{"column", column.name}, {"type", column.sql_type}});
        }
        json["drops_existing"] = plan_.table_exists;
        json["possible"] = possible;
        fmt::print("{}\n", json_line(json));
        return;
    }
    TextTable columns({{"column"}, {"type"}});
    for (const PlannedColumn& column : plan_.columns) {
        columns.add({column.name, column.sql_type.empty() ? "?" : column.sql_type});
    }
    fmt::print("{} -> {}: {}, {}\n{}{}", file_, shown_bytes(plan_.table),
               counted(found_.records, "record", "records"), counted(plan_.columns.size(), "field", "fields"),
               columns.text(), notes(false));
    if (plan_.table_exists) {
        fmt::print("the table {}{} would be dropped first\n", shown_bytes(plan_.table),
                   views_in_words(views_));
    }
    if (possible) fmt::print("nothing was changed; the import would work\n");
}

Exit Import::tell() const {
    Progress::clear();
    const bool possible = plan_.refusals.empty() && rejects_.count() == 0;
    print_plan(possible);
    flush_output();
    refuse();
    return possible ? Exit::ok : Exit::failed;
}

void Import::refuse() const {
    std::string reasons;
    for (const std::string& refusal : plan_.refusals) reasons += refusal + "\n";
    if (rejects_.count() > 0) {
        reasons += fmt::format("{} would be refused by the database:\n{}",
                               counted(rejects_.count(), "value", "values"), rejects_.text());
        if (!options_.rejects.empty()) reasons += fmt::format("all are in {}\n", options_.rejects);
    }
    if (reasons.empty()) return;
    throw Failure{Exit::failed,
                  fmt::format("{} {} imported", file_, options_.dry_run ? "would not be" : "was not"),
                  reasons};
}

void Import::make_room() {
    const std::string table = to_utf8(plan_.table);
    drop_leftover(connection_, "EXT_" + plan_.table);
    if (!plan_.table_exists) return;
    Progress::clear();
    if (!options_.yes &&
        !confirm(fmt::format(
            "Drop the table {} with its {}{}?", table,
            counted(static_cast<std::uint64_t>(connection_.call("counttablerecords", plan_.table).integer()),
                    "record", "records"),
            views_in_words(views_)))) {
        throw Failure{Exit::failed, fmt::format("{} was not imported", file_), "Nothing was changed."};
    }
    reports_.send("replaces " + plan_.table);
    drop_with_views(connection_, Name(plan_.table), views_);
}

// The file to import: the given one, or a converted copy of it.
std::string Import::source(std::optional<PrivateFolder>& folder) {
    const Conversion conversion{options_.skip_deleted, options_.encoding};
    if (!conversion.needed()) return file_;
    folder.emplace(reports_);
    std::string path = (folder->path() / fs::path(file_).filename()).string();
    write_converted(dbf_, conversion, path);
    return path;
}

void Import::bring(const std::string& path) {
    data_file_ = connection_.call("getfullpathdatfile").string();
    reports_.send("data " + data_file_);
    reports_.send("external EXT_" + plan_.table);
    reports_.send("table " + plan_.table);
    reports_.send(fmt::format("size {}", data_record_size(dbf_)));
    reports_.send(fmt::format("phase copy {}", found_.records));
    if (!connection_.call("bringdbf", path).logical()) {
        throw Failure{Exit::failed, fmt::format("{} was not imported", file_), last_engine_message()};
    }
    reports_.send("phase none 0");
    Progress::clear();
    if (!options_.keep_data_file) {
        std::error_code ignored;
        fs::remove(data_file_, ignored);
    } else if (!session_.options().json) {
        fmt::print("data file: {}\n", data_file_);
    }
}

void Import::summarize() const {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start_;
    if (session_.options().json) {
        Json json = as_json();
        json["seconds"] = took.count();
        if (options_.keep_data_file) json["data_file"] = data_file_;
        fmt::print("{}\n", json_line(json));
    } else {
        fmt::print("{} -> {}: {}, {}, {:.2f} s\n{}", file_, to_utf8(plan_.table),
                   counted(found_.records, "record", "records"),
                   counted(plan_.columns.size(), "field", "fields"), took.count(), notes(true));
    }
}

}  // namespace

Exit import_file(Session& session, const Reports& reports, const ImportOptions& options,
                 const std::string& file) {
    try {
        return Import(session, reports, options, file).run();
    } catch (const Failure&) {
        Progress::clear();
        throw;
    }
}

}  // namespace zmfb::tool
