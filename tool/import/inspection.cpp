#include "tool/import/inspection.h"

#include <fmt/format.h>

#include "tool/catalog.h"
#include "tool/counted.h"
#include "tool/dependents.h"
#include "tool/encoding.h"
#include "tool/import/append_plan.h"
#include "tool/import/leftover.h"
#include "tool/import/rehearsal.h"
#include "tool/import/set_aside.h"
#include "tool/import/turn.h"
#include "tool/import/values.h"

namespace zmfb::tool {
namespace {

std::uint64_t refused_values(const FileImport& file) {
    return file.options.on_bad_value == OnBadValue::refuse ? file.rejects.count() : 0;
}

void plan_manifest(FileImport& file) {
    file.exported = file.options.manifest->entry_of(file.report.file);
    const std::string problem = file.exported == nullptr ? "is not in the manifest"
                                                         : manifest_problem(*file.exported, file.report.file);
    if (!problem.empty()) file.plan.refusals.push_back(fmt::format("{} {}", file.report.file, problem));
}

void plan_records(FileImport& file) {
    const dbf::Header& header = file.source.header;
    if (header.records == header.counted || file.options.incomplete) return;
    file.plan.refusals.push_back(
        fmt::format("the header counts {}, the file holds {}; --incomplete imports those",
                    counted(header.counted, "record", "records"), header.records));
}

// What the driver has not made, or needs itself, is nothing to replace.
void plan_existing(FileImport& file) {
    ImportPlan& plan = file.plan;
    const Name table(plan.table);
    const TableKind kind = kind_of(file.connection, table);
    if (kind == TableKind::unfinished) {
        plan.table_exists = false;
    } else if (kind != TableKind::driver) {
        const std::string_view what = kind == TableKind::view     ? "is a view"
                                      : kind == TableKind::system ? "is the driver's own"
                                                                  : "was not made by the driver";
        plan.refusals.push_back(fmt::format("{} is there already and {}", plan.table, what));
    } else if (file.options.append) {
        plan_append(file.connection, file.source.header, plan);
    } else if (!file.options.replace) {
        plan.refusals.push_back(already_there(plan.table));
    } else {
        const Dependents dependents = dependents_of_table(file.connection, table);
        file.views = names_in(dependents.taken);
        std::vector<std::string> names;
        for (const PlannedColumn& column : plan.columns) names.push_back(column.column.name);
        file.belongings = belongings_of(file.connection, table, names, file.views);
        file.report.replaces = fmt::format("the table {}{}", plan.table, what_goes(file));
        if (dependents.in_the_way.empty()) return;
        plan.refusals.push_back(fmt::format("the table {} cannot be replaced: it is in use by {}", plan.table,
                                            in_words(dependents.in_the_way)));
    }
}

void make_plan(FileImport& file) {
    const ImportOptions& options = file.options;
    ImportPlan& plan = file.plan;
    ImportReport& report = file.report;
    plan = plan_import(file.connection, file.so_far.engine, report.file, file.source.header, options.names,
                       file.so_far.tables);
    std::erase_if(file.so_far.unused_renames,
                  [&](const auto& rename) { return !plan.unused_renames.contains(rename.first); });
    file.told.table = report.table = plan.table;
    file.told.changes = plan.changes.size();
    report.changes = plan.changes;
    report.notes = file.source.header.notes;
    if (plan.refusals.empty()) {
        plan_leftovers(file.connection, plan,
                       {.dry_run = options.dry_run, .goes_on = options.replace || options.append});
    }
    if (plan.table_exists) plan_existing(file);
    if (options.append && !plan.table_exists && plan.refusals.empty()) {
        plan.refusals.push_back(
            fmt::format("there is no table {} to add to; without --append it is made", plan.table));
    }
    for (const std::string& note : plan.notes) report.notes.push_back(note);
    plan_records(file);
    if (options.manifest) plan_manifest(file);
}

void plan_set_aside(FileImport& file) {
    ImportReport& report = file.report;
    report.set_aside = file.aside.size();
    if (file.aside.empty()) return;
    report.set_aside_file =
        file.options.set_aside.empty() ? file.plan.table + ".bad.dbf" : file.options.set_aside;
    for (const std::string& one : set_aside_files(file.source, report.set_aside_file)) {
        file.plan.refusals.push_back(fmt::format(
            "{} is there already; --set-aside names another file for records that are set aside", one));
    }
}

// Once the digits of all numbers are known.
void settle_columns(FileImport& file, const std::vector<Digits>& digits) {
    ImportReport& report = file.report;
    for (std::size_t i = 0; i < file.plan.columns.size(); ++i) {
        PlannedColumn& column = file.plan.columns[i];
        if (column.is_wide && !file.is_added()) {
            narrow(column, digits[i]);
            report.notes.push_back(fmt::format("the field {} has more digits than a NUMERIC: it becomes {}",
                                               column.column.name, sql_type_of(column)));
        }
        if (digits[i].beyond_numeric) {
            const std::string planned = sql_type_of(column);
            make_real(column);
            report.notes.push_back(
                fmt::format("the field {} has numbers that {} does not hold: it becomes {}",
                            column.column.name, planned, sql_type_of(column)));
        }
        const bool is_real = column.load.kind == LoadColumn::Kind::real;
        report.values.rounded += is_real ? digits[i].rounded_real : digits[i].rounded;
        report.columns.push_back({column.column.name, sql_type_of(column)});
    }
}

// Where nobody wrote, a file has zero bytes: holes, and what a crash has left. Finds stretches of such
// records.
class Unwritten {
  public:
    explicit Unwritten(const FileImport& file) : file_(file) {}
    // Throws Failure when it is a long one.
    void look_at(const dbf::Records& records) {
        constexpr std::uint64_t most = 1U << 20;
        if (records.bytes().find_first_not_of('\0') != std::string_view::npos) {
            size_ = 0;
        } else if ((size_ += records.bytes().size()) > most && !file_.options.incomplete) {
            const std::uint64_t first = records.number() - (size_ - 1) / records.bytes().size();
            throw Failure{Exit::failed, file_.not_imported(),
                          fmt::format("from record {} on there are zero bytes only: nobody wrote them there; "
                                      "--incomplete imports them as blank records",
                                      first)};
        }
    }

  private:
    const FileImport& file_;
    std::uint64_t size_ = 0;
};

// All that is wrong is found before anything is made.
void look_through(FileImport& file) {
    ImportReport& report = file.report;
    ImportPlan& plan = file.plan;
    ValueReader reader(file.source, plan.columns, {.decimal_comma = file.options.decimal_comma});
    Unwritten unwritten(file);
    file.for_each_record("checking", [&](const dbf::Records& records) {
        unwritten.look_at(records);
        if (records.has_odd_mark()) ++report.odd_marks;
        if (file.is_left_out(records)) {
            ++report.deleted;
            return;
        }
        const std::uint64_t bad_before = file.rejects.count();
        reader.read(records.number(), records.bytes(),
                    [&](const BadValue& value) { file.rejects.add(value); });
        if (file.sets_aside() && file.rejects.count() > bad_before) {
            file.aside.push_back(records.number());
        } else {
            ++report.records;
            if (records.deleted()) ++report.deleted;
        }
    });
    if (const std::string problem = file.rejects.problem(); !problem.empty())
        plan.refusals.push_back(problem);
    plan_set_aside(file);
    report.values = reader.counts();
    settle_columns(file, reader.digits());
    report.skips_deleted = file.options.skip_deleted;
    if (file.options.on_bad_value == OnBadValue::use_default) report.defaulted = file.rejects.count();
    report.bad_values = file.rejects.text();
    report.lacked_characters = reader.lacked_characters();
    file.told.bad_values = file.rejects.count();
}

}  // namespace

void inspect(FileImport& file) {
    make_plan(file);
    look_through(file);
}

bool can_work(const FileImport& file) { return file.plan.refusals.empty() && refused_values(file) == 0; }

void rehearse_import(FileImport& file) {
    if (!can_work(file)) return;
    const Turn turn;
    const std::string why =
        rehearse(file.connection, file.plan,
                 {.made = file.plan.table_exists ? table_beside(file.plan.table) : file.plan.table,
                  .replaced = file.plan.table_exists && file.options.replace ? file.plan.table : "",
                  .added_to = file.is_added() ? file.plan.table : ""});
    if (!why.empty()) file.plan.refusals.push_back(why);
}

void refuse(const FileImport& file) {
    std::string reasons;
    for (const std::string& refusal : file.plan.refusals) reasons += refusal + "\n";
    if (refused_values(file) > 0) {
        reasons += fmt::format("{} would be refused by the database:\n{}",
                               counted(file.rejects.count(), "value", "values"), file.rejects.text());
    }
    if (reasons.empty()) return;
    const bool other_set = file.report.lacked_characters && is_single_byte(file.source.code_page);
    throw Failure{Exit::failed, file.not_imported(), reasons,
                  other_set ? fmt::format("--encoding {0} is for a database whose texts are in {0}",
                                          file.source.code_page)
                            : ""};
}

std::string what_goes(const FileImport& file) {
    std::string all;
    for (const std::string& one : file.belongings.lost) all += ", " + one;
    return all;
}

}  // namespace zmfb::tool
