#include "tool/import/loading.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tool/catalog.h"
#include "tool/drop.h"
#include "tool/import/hold.h"
#include "tool/import/leftover.h"
#include "tool/import/new_table.h"
#include "tool/import/replacing.h"
#include "tool/import/set_aside.h"
#include "tool/import/turn.h"
#include "tool/import/values.h"
#include "tool/interrupt.h"
#include "zmfbconn/cancel.h"

namespace zmfb::tool {
namespace {

class Loading {
  public:
    explicit Loading(FileImport& file) : file_(file) {}
    void run();

  private:
    void replace();
    void send(Transaction& work, const std::string& table);
    [[nodiscard]] const std::string& loaded() const { return beside_.empty() ? file_.plan.table : beside_; }
    [[nodiscard]] std::vector<DriverColumn> columns() const;
    void set_aside();
    [[nodiscard]] bool dropped(zmFBConn& connection);
    [[nodiscard]] bool dropped_anew();
    [[noreturn]] void take_back(std::string why);

    FileImport& file_;
    std::optional<ImportHold> hold_;  // on what is loaded
    std::string beside_;              // what is loaded beside it; "" for nothing
    bool is_whole_beside_ = false;    // and is to come into the table, which was dropped
    std::string mark_;                // of the table that is loaded; "" as long as there cannot be one
    bool is_begun_ = false;           // and that is held
    bool has_set_aside_ = false;      // and there may be files of them
};

void Loading::run() try {
    if (file_.plan.table_exists) beside_ = table_beside(file_.plan.table);
    const std::string& table = loaded();
    std::optional<Turn> turn;  // for all that changes tables when the rows are there
    {
        NewTable begun = begin_table(file_.connection, table, columns(), mark_);
        hold_.emplace(std::move(begun.hold));
        is_begun_ = true;
        Transaction& work = begun.work;
        send(work, table);
        turn.emplace();
        if (beside_.empty()) {
            finish_table(work, table, file_.told.records);
        } else {
            describe_loaded(work, beside_, {.added = file_.is_added(), .again = file_.belongings.again});
            for (const TriedIndex& index : file_.belongings.tried) work.execute(index.statement);
        }
        set_aside();
        work.commit();
    }
    if (file_.is_added()) return add_rows(file_.connection, *hold_, file_.plan.table);
    if (!beside_.empty()) replace();
} catch (const SqlError& error) {
    take_back(in_words_of_table(file_.belongings, error.message()));
} catch (const Cancelled&) {
    take_back("");
} catch (const Failure& failure) {
    const bool is_own = failure.message == file_.not_imported() || interrupted();
    take_back(is_own ? failure.detail : failure.message + "\n" + failure.detail);
}

void Loading::replace() {
    make_room(file_.connection, file_.plan.table, columns(), file_.views, file_.belongings.again);
    for (std::string& said : move_in(file_.connection, *hold_, file_.plan.table, file_.belongings.again))
        file_.report.notes.push_back(std::move(said));
}

std::vector<DriverColumn> Loading::columns() const {
    std::vector<DriverColumn> all;
    for (const PlannedColumn& column : file_.plan.columns) all.push_back(column.column);
    return all;
}

void Loading::send(Transaction& work, const std::string& table) {
    std::vector<LoadColumn> columns;
    for (const PlannedColumn& column : file_.plan.columns) columns.push_back(column.load);
    ValueReader reader(file_.source, file_.plan.columns, {.decimal_comma = file_.options.decimal_comma});
    const auto refused = [&](std::uint64_t record, const std::string& why) {
        throw Failure{Exit::failed, file_.not_imported(), fmt::format("record {}: {}", record, why)};
    };
    RowLoader loader(work, table, columns, refused);
    file_.for_each_record("copying", [&](const dbf::Records& records) {
        if (file_.is_left_out(records) || std::ranges::binary_search(file_.aside, records.number())) return;
        loader.add(records.number(), reader.read(records.number(), records.bytes(), [](const BadValue&) {}));
    });
    loader.flush();
    file_.told.records = loader.rows();
}

// What does not come in is in its file before what comes in is committed.
void Loading::set_aside() {
    if (file_.aside.empty()) return;
    has_set_aside_ = true;
    RejectsFile reasons(reasons_beside(file_.report.set_aside_file));
    ValueReader reader(file_.source, file_.plan.columns, {.decimal_comma = file_.options.decimal_comma});
    dbf::Records records(*file_.source.file, file_.source.header, file_.options.all_records);
    while (records.next()) {
        if (!std::ranges::binary_search(file_.aside, records.number())) continue;
        reader.read(records.number(), records.bytes(),
                    [&](const BadValue& value) { reasons.add(file_.report.file, value); });
    }
    write_set_aside(file_.source, file_.aside, file_.report.set_aside_file);
    reasons.close();
}

bool Loading::dropped(zmFBConn& connection) try {
    if (!is_begun_ && (mark_.empty() || !is_marked(connection, loaded(), mark_))) return true;
    hold_.reset();
    if (beside_.empty()) {
        drop_unfinished_table(connection, file_.plan.table);
        return true;
    }
    is_whole_beside_ = leftover_beside(connection, file_.plan.table) == Leftover::brought_in;
    if (!is_whole_beside_) settle_leftover(connection, file_.plan.table);
    return true;
} catch (const std::exception&) {
    return false;
} catch (const Failure&) {
    return false;
}

// An attachment is of no more use when the database could not be written to, or the server went.
bool Loading::dropped_anew() try {
    Session session(file_.session.options());
    session.show_raised(Raised::silent);
    zmFBConn& connection = session.connection();
    // As long as the server has not noticed, a drop would wait for the attachment that was lost.
    for (int attempt = 1; !who_fills(connection, loaded()).empty(); ++attempt) {
        if (!wait_for_others("is in use", attempt)) return false;
    }
    return dropped(connection);
} catch (const std::exception&) {
    return false;
} catch (const Failure&) {
    return false;
}

// Undoes what was made, and tells what was wrong. A table that cannot be dropped says of itself that it is
// unfinished.
void Loading::take_back(std::string why) {
    if (interrupted()) {
        begin_undoing();
        why.clear();
    }
    const Turn turn;
    const bool is_dropped = dropped(file_.connection) || dropped_anew();
    if (has_set_aside_ && !is_whole_beside_) {
        for (const std::string& file : set_aside_files(file_.source, file_.report.set_aside_file)) {
            std::error_code ignored;
            std::filesystem::remove(file, ignored);
        }
    }
    if (!why.empty() && !why.ends_with('\n')) why += '\n';
    if (!is_dropped) {
        why += fmt::format(
            "the unfinished table {} could not be dropped; the next import of that name takes its place\n",
            loaded());
    }
    if (is_whole_beside_) {
        why += fmt::format(
            "the old records are gone; the new ones are whole in {}, and the next import of {} brings them "
            "in\n",
            beside_, file_.plan.table);
    }
    if (!interrupted()) throw Failure{Exit::failed, file_.not_imported(), why};
    throw Failure{ending_status(),
                  fmt::format("the import of {} was interrupted{}", file_.report.file,
                              is_whole_beside_ ? "" : ", and undone"),
                  why};
}

}  // namespace

void load(FileImport& file) { Loading(file).run(); }

}  // namespace zmfb::tool
