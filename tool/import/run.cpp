#include "tool/import/run.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tool/catalog.h"
#include "tool/confirm.h"
#include "tool/counted.h"
#include "tool/dependents.h"
#include "tool/encoding.h"
#include "tool/import/append_plan.h"
#include "tool/import/belongings.h"
#include "tool/import/dbf_source.h"
#include "tool/import/hold.h"
#include "tool/import/leftover.h"
#include "tool/import/new_table.h"
#include "tool/import/rehearsal.h"
#include "tool/import/replacing.h"
#include "tool/import/report.h"
#include "tool/import/set_aside.h"
#include "tool/import/turn.h"
#include "tool/import/values.h"
#include "tool/import/verify.h"
#include "tool/interrupt.h"
#include "tool/transfer/progress.h"
#include "zmfbconn/cancel.h"
#include "zmfbconn/dbf/records.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool {
namespace {

class Import {
  public:
    Import(Session& session, const ImportOptions& options, const std::string& file, ImportedSoFar& so_far,
           ImportedFile& told)
        : session_(session),
          connection_(session.connection()),
          options_(options),
          so_far_(so_far),
          told_(told),
          rejects_(file, so_far.rejects),
          source_(open_dbf(file, options.encoding, not_imported(file))) {
        report_.file = file;
    }

    void run() {
        plan();
        look();
        if (options_.dry_run) {
            rehearse_it();
            print_plan(report_, session_.options().json, can_work());
            return refuse();
        }
        refuse();
        ask();
        load();
        verify();
        report_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
        print_summary(report_, session_.options().json);
    }

  private:
    [[nodiscard]] std::string not_imported(const std::string& file) const {
        return fmt::format("{} {} imported", file, options_.dry_run ? "would not be" : "was not");
    }
    [[nodiscard]] bool can_work() const { return plan_.refusals.empty() && refused_values() == 0; }
    [[nodiscard]] std::uint64_t refused_values() const {
        return options_.on_bad_value == OnBadValue::refuse ? rejects_.count() : 0;
    }

    [[nodiscard]] bool sets_aside() const { return options_.on_bad_value == OnBadValue::set_aside; }
    [[nodiscard]] bool is_added() const { return plan_.table_exists && options_.append; }
    [[nodiscard]] bool is_left_out(const dbf::Records& records) const {
        return options_.skip_deleted && records.deleted();
    }

    void plan();
    void plan_records();
    void plan_manifest();
    void plan_existing();
    void look();
    void plan_set_aside();
    void rehearse_it();
    void refuse() const;
    void ask();
    [[nodiscard]] std::string what_goes() const;
    void load();
    void replace();
    void verify();
    void send(Transaction& work, const std::string& table);
    [[nodiscard]] std::vector<DriverColumn> columns() const;
    void set_aside();
    [[nodiscard]] bool dropped(zmFBConn& connection);
    [[nodiscard]] bool dropped_anew();
    [[noreturn]] void take_back(std::string why);
    template <class Visit>
    void for_each_record(const char* doing, Visit visit);

    Session& session_;
    zmFBConn& connection_;
    const ImportOptions& options_;
    ImportedSoFar& so_far_;
    ImportedFile& told_;
    Rejects rejects_;
    DbfSource source_;
    ImportPlan plan_;
    ImportReport report_;
    const ManifestFile* exported_ = nullptr;  // what is known of the file when it was exported
    std::vector<Name> views_;                 // those that go with the table that is there
    std::vector<std::uint64_t> aside_;        // the numbers of the records that are set aside
    Belongings belongings_;                   // of the table that is there
    std::optional<ImportHold> hold_;          // on what is loaded
    std::string beside_;                      // what is loaded beside it; "" for nothing
    bool is_whole_beside_ = false;            // and is to come into the table, which was dropped
    bool is_begun_ = false;                   // and it may have to be dropped
    bool has_set_aside_ = false;              // and there may be files of them
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

void Import::plan() {
    plan_ = plan_import(connection_, report_.file, source_.header, options_.names, so_far_.tables);
    std::erase_if(so_far_.unused_renames,
                  [&](const auto& rename) { return !plan_.unused_renames.contains(rename.first); });
    told_.table = report_.table = plan_.table;
    told_.changes = plan_.changes.size();
    report_.changes = plan_.changes;
    report_.notes = source_.header.notes;
    if (plan_.refusals.empty()) {
        plan_leftovers(connection_, plan_,
                       {.dry_run = options_.dry_run, .goes_on = options_.replace || options_.append});
    }
    if (plan_.table_exists) plan_existing();
    if (options_.append && !plan_.table_exists && plan_.refusals.empty()) {
        plan_.refusals.push_back(
            fmt::format("there is no table {} to add to; without --append it is made", plan_.table));
    }
    for (const std::string& note : plan_.notes) report_.notes.push_back(note);
    plan_records();
    if (options_.manifest) plan_manifest();
}

void Import::plan_manifest() {
    exported_ = entry_of(*options_.manifest, report_.file);
    const std::string problem =
        exported_ == nullptr ? "is not in the manifest" : manifest_problem(*exported_, report_.file);
    if (!problem.empty()) plan_.refusals.push_back(fmt::format("{} {}", report_.file, problem));
}

// The table stays as it is: what differs can be looked for in it.
void Import::verify() {
    if (exported_ == nullptr) return;
    const std::string differs =
        difference(connection_, plan_.table, plan_.columns, source_.header, *exported_);
    if (!differs.empty()) {
        throw Failure{Exit::failed,
                      fmt::format("{} was imported, but does not hold what was exported", report_.file),
                      differs};
    }
    report_.notes.push_back(
        exported_->values.empty()
            ? "as many records as were exported; values were converted then, and not compared"
            : "the records and values that were exported");
}

void Import::plan_records() {
    const dbf::Header& header = source_.header;
    if (header.records == header.counted || options_.incomplete) return;
    plan_.refusals.push_back(
        fmt::format("the header counts {}, the file holds {}; --incomplete imports those",
                    counted(header.counted, "record", "records"), header.records));
}

// What the driver has not made, or needs itself, is nothing to replace.
void Import::plan_existing() {
    const Name table(plan_.table);
    const TableKind kind = kind_of(connection_, table);
    if (kind == TableKind::unfinished) {
        plan_.table_exists = false;
    } else if (kind != TableKind::driver) {
        const std::string_view what = kind == TableKind::view     ? "is a view"
                                      : kind == TableKind::system ? "is the driver's own"
                                                                  : "was not made by the driver";
        plan_.refusals.push_back(fmt::format("{} is there already and {}", plan_.table, what));
    } else if (options_.append) {
        plan_append(connection_, source_.header, plan_);
    } else if (!options_.replace) {
        plan_.refusals.push_back(already_there(plan_.table));
    } else {
        const Dependents dependents = dependents_of_table(connection_, table);
        views_ = names_in(dependents.taken);
        std::vector<std::string> names;
        for (const PlannedColumn& column : plan_.columns) names.push_back(column.column.name);
        belongings_ = belongings_of(connection_, table, names, views_);
        report_.replaces = fmt::format("the table {}{}", plan_.table, what_goes());
        if (dependents.in_the_way.empty()) return;
        plan_.refusals.push_back(fmt::format("the table {} cannot be replaced: it is in use by {}",
                                             plan_.table, in_words(dependents.in_the_way)));
    }
}

// Calls `visit(records)` for each record.
template <class Visit>
void Import::for_each_record(const char* doing, Visit visit) {
    Progress progress(doing, source_.header.records);
    dbf::Records records(*source_.file, source_.header, options_.all_records);
    while (records.next()) {
        visit(records);
        if (records.number() % 256 == 0) progress.at(records.number());
    }
}

// All that is wrong is found before anything is made.
void Import::look() {
    ValueReader reader(source_, plan_.columns, {.decimal_comma = options_.decimal_comma});
    for_each_record("checking", [&](const dbf::Records& records) {
        if (records.has_odd_mark()) ++report_.odd_marks;
        if (is_left_out(records)) {
            ++report_.deleted;
            return;
        }
        const std::uint64_t bad_before = rejects_.count();
        reader.read(records.number(), records.bytes(), [&](const BadValue& value) { rejects_.add(value); });
        if (sets_aside() && rejects_.count() > bad_before) {
            aside_.push_back(records.number());
        } else {
            ++report_.records;
            if (records.deleted()) ++report_.deleted;
        }
    });
    if (const std::string problem = rejects_.problem(); !problem.empty()) plan_.refusals.push_back(problem);
    plan_set_aside();
    report_.values = reader.counts();
    for (std::size_t i = 0; i < plan_.columns.size(); ++i) {
        PlannedColumn& column = plan_.columns[i];
        if (column.is_wide && !is_added()) {
            narrow(column, reader.digits()[i]);
            report_.notes.push_back(fmt::format("the field {} has more digits than a NUMERIC: it becomes {}",
                                                column.column.name, sql_type_of(column)));
        }
        if (column.load.kind == LoadColumn::Kind::real) report_.values.rounded += reader.digits()[i].rounded;
        report_.columns.push_back({column.column.name, sql_type_of(column)});
    }
    report_.skips_deleted = options_.skip_deleted;
    if (options_.on_bad_value == OnBadValue::use_default) report_.defaulted = rejects_.count();
    report_.bad_values = rejects_.text();
    report_.lacked_characters = reader.lacked_characters();
    told_.bad_values = rejects_.count();
}

void Import::plan_set_aside() {
    report_.set_aside = aside_.size();
    if (aside_.empty()) return;
    report_.set_aside_file = options_.set_aside.empty() ? plan_.table + ".bad.dbf" : options_.set_aside;
    for (const std::string& file : set_aside_files(source_, report_.set_aside_file)) {
        plan_.refusals.push_back(fmt::format(
            "{} is there already; --set-aside names another file for records that are set aside", file));
    }
}

void Import::rehearse_it() {
    if (!can_work()) return;
    const Turn turn;
    const std::string why = rehearse(connection_, plan_,
                                     {.made = plan_.table_exists ? table_beside(plan_.table) : plan_.table,
                                      .replaced = plan_.table_exists && options_.replace ? plan_.table : "",
                                      .added_to = is_added() ? plan_.table : ""});
    if (!why.empty()) plan_.refusals.push_back(why);
}

void Import::refuse() const {
    std::string reasons;
    for (const std::string& refusal : plan_.refusals) reasons += refusal + "\n";
    if (refused_values() > 0) {
        reasons += fmt::format("{} would be refused by the database:\n{}",
                               counted(rejects_.count(), "value", "values"), rejects_.text());
    }
    if (reasons.empty()) return;
    const bool other_set = report_.lacked_characters && is_single_byte(source_.code_page);
    throw Failure{
        Exit::failed, not_imported(report_.file), reasons,
        other_set ? fmt::format("--encoding {0} is for a database whose texts are in {0}", source_.code_page)
                  : ""};
}

void Import::ask() {
    if (!plan_.table_exists || options_.append || options_.yes) return;
    const std::string records = counted(
        static_cast<std::uint64_t>(connection_(m::counttablerecords, plan_.table)), "record", "records");
    if (confirm(fmt::format("Drop the table {} with its {}{}?", plan_.table, records, what_goes()))) return;
    throw Failure{Exit::failed, not_imported(report_.file), "Nothing was changed."};
}

// What goes with a table that is replaced, and does not come back.
std::string Import::what_goes() const {
    std::string all;
    for (const std::string& one : belongings_.lost) all += ", " + one;
    return all;
}

void Import::load() try {
    if (plan_.table_exists) beside_ = table_beside(plan_.table);
    const std::string& table = plan_.table_exists ? beside_ : plan_.table;
    hold_.emplace(begin_table(connection_, table, columns()));
    is_begun_ = true;
    std::optional<Turn> turn;  // for all that changes tables when the rows are there
    {
        Transaction work(connection_);
        send(work, table);
        turn.emplace();
        if (beside_.empty()) {
            finish_table(work, table, told_.records);
        } else {
            describe_loaded(work, beside_, {.added = is_added(), .again = belongings_.again});
            for (const TriedIndex& index : belongings_.tried) work.execute(index.statement);
        }
        set_aside();
        work.commit();
    }
    if (is_added()) return add_rows(connection_, *hold_, plan_.table);
    if (!beside_.empty()) replace();
} catch (const SqlError& error) {
    take_back(in_words_of_table(belongings_, error.message()));
} catch (const Cancelled&) {
    take_back("");
} catch (const Failure& failure) {
    const bool is_own = failure.message == not_imported(report_.file) || interrupted();
    take_back(is_own ? failure.detail : failure.message + "\n" + failure.detail);
}

void Import::replace() {
    make_room(connection_, plan_.table, columns(), views_);
    for (std::string& said : move_in(connection_, *hold_, plan_.table, belongings_.again))
        report_.notes.push_back(std::move(said));
}

std::vector<DriverColumn> Import::columns() const {
    std::vector<DriverColumn> all;
    for (const PlannedColumn& column : plan_.columns) all.push_back(column.column);
    return all;
}

void Import::send(Transaction& work, const std::string& table) {
    std::vector<LoadColumn> columns;
    for (const PlannedColumn& column : plan_.columns) columns.push_back(column.load);
    ValueReader reader(source_, plan_.columns, {.decimal_comma = options_.decimal_comma});
    const auto refused = [&](std::uint64_t record, const std::string& why) {
        throw Failure{Exit::failed, not_imported(report_.file), fmt::format("record {}: {}", record, why)};
    };
    RowLoader loader(work, table, columns, refused);
    for_each_record("copying", [&](const dbf::Records& records) {
        if (is_left_out(records) || std::ranges::binary_search(aside_, records.number())) return;
        loader.add(records.number(), reader.read(records.number(), records.bytes(), [](const BadValue&) {}));
    });
    loader.flush();
    told_.records = loader.rows();
}

// What does not come in is in its file before what comes in is committed.
void Import::set_aside() {
    if (aside_.empty()) return;
    has_set_aside_ = true;
    RejectsFile reasons(reasons_beside(report_.set_aside_file));
    ValueReader reader(source_, plan_.columns, {.decimal_comma = options_.decimal_comma});
    dbf::Records records(*source_.file, source_.header, options_.all_records);
    while (records.next()) {
        if (!std::ranges::binary_search(aside_, records.number())) continue;
        reader.read(records.number(), records.bytes(),
                    [&](const BadValue& value) { reasons.add(report_.file, value); });
    }
    write_set_aside(source_, aside_, report_.set_aside_file);
    reasons.close();
}

bool Import::dropped(zmFBConn& connection) try {
    if (!is_begun_) return true;
    hold_.reset();
    if (beside_.empty()) {
        drop_unfinished_table(connection, plan_.table);
        return true;
    }
    is_whole_beside_ = leftover_beside(connection, plan_.table) == Leftover::brought_in;
    if (!is_whole_beside_) settle_leftover(connection, plan_.table);
    return true;
} catch (const std::exception&) {
    return false;
} catch (const Failure&) {
    return false;
}

// An attachment is of no more use when the database could not be written to, or the server went.
bool Import::dropped_anew() try {
    Session session(session_.options());
    session.show_raised(Raised::silent);
    return dropped(session.connection());
} catch (const Failure&) {
    return false;
}

// Undoes what was made, and tells what was wrong. A table that cannot be dropped says of itself that it is
// unfinished.
void Import::take_back(std::string why) {
    if (interrupted()) begin_undoing();
    const Turn turn;
    const bool is_dropped = dropped(connection_) || dropped_anew();
    if (has_set_aside_ && !is_whole_beside_) {
        for (const std::string& file : set_aside_files(source_, report_.set_aside_file)) {
            std::error_code ignored;
            std::filesystem::remove(file, ignored);
        }
    }
    if (!why.empty() && !why.ends_with('\n')) why += '\n';
    if (!is_dropped) {
        why += fmt::format(
            "the unfinished table {} could not be dropped; the next import of that name takes its place\n",
            beside_.empty() ? plan_.table : beside_);
    }
    if (is_whole_beside_) {
        why += fmt::format(
            "the old records are gone; the new ones are whole in {}, and the next import of {} brings them "
            "in\n",
            beside_, plan_.table);
    }
    if (!interrupted()) throw Failure{Exit::failed, not_imported(report_.file), why};
    throw Failure{ending_status(),
                  fmt::format("the import of {} was interrupted{}", report_.file,
                              is_whole_beside_ ? "" : ", and undone"),
                  why};
}

}  // namespace

void import_file(Session& session, const ImportOptions& options, const std::string& file,
                 ImportedSoFar& so_far, ImportedFile& told) {
    Import(session, options, file, so_far, told).run();
}

}  // namespace zmfb::tool
