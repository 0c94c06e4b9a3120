#include "rdd/edit.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>

#include "rdd/open_area.h"

namespace zmfb::rdd {

using Reason = AreaError::Reason;

namespace {

// The fields that were assigned: their names, and their values for the statement.
struct Assigned {
    std::vector<std::string> names;
    std::vector<Parameter> values;
};

Assigned assigned_of(const Record& record) {
    Assigned all;
    for (std::size_t field = 0; field < record.assigned().size(); ++field) {
        if (!record.assigned()[field]) continue;
        all.names.push_back(record.column(field).name);
        all.values.push_back(parameter_of(record, field));
    }
    return all;
}

std::vector<std::string> all_quoted(std::vector<std::string> names) {
    for (std::string& name : names) name = quoted(name);
    return names;
}

// A value that is refused before it is sent is told by its place among those of the statement, "Parameter 2"
// or "In parameter 2": programs know the field.
template <class Run>
auto naming_fields(const std::vector<std::string>& fields, const Run& run) try {
    return run();
} catch (const SqlError& error) {
    constexpr std::string_view word = "arameter ";
    std::string message = error.message();
    const std::size_t at = message.find(word);
    if (at != 1 && at != std::string_view("In p").size()) throw;
    std::size_t place = 0;
    const char* const behind =
        std::from_chars(message.data() + at + word.size(), message.data() + message.size(), place).ptr;
    if (place == 0 || place > fields.size()) throw;
    const auto replaced = static_cast<std::size_t>(behind - message.data()) - (at - 1);
    message.replace(at - 1, replaced, (at == 1 ? "Field " : "field ") + fields[place - 1]);
    throw SqlError({error.sqlcode(), error.sqlstate(), message, error.statement()});
}

}  // namespace

Edit::Edit(std::shared_ptr<OpenArea> area, std::int64_t recno) : area_(std::move(area)), recno_(recno) {
    area_->add(*this);
}

Edit::Edit(std::shared_ptr<OpenArea> area, Area::Wait wait) : area_(std::move(area)), wait_(wait) {
    const auto& columns = area_->walk().columns();
    std::vector<CellKind> kinds;
    for (std::size_t field = 0; field < columns->fields().size(); ++field)
        kinds.push_back(columns->kind(field));
    Block block(std::move(kinds));
    block.add_row();
    record_.emplace(columns, std::move(block));
    area_->add(*this);
}

Edit::~Edit() {
    area_->remove(*this);
    if (recno_ != 0) area_->give_back(recno_);
}

void Edit::throw_gone() const {
    throw AreaError(Reason::gone, fmt::format("Record {} of {} was deleted", recno_, area_->table()));
}

void Edit::check_locked() const {
    if (area_->claims().covers(recno_)) return;
    throw AreaError(Reason::not_locked,
                    fmt::format("Record {} of {} is no longer locked", recno_, area_->table()));
}

Record& Edit::record() {
    if (!record_) record_ = area_->walk().look(recno_);
    if (!record_) throw_gone();
    return *record_;
}

void Edit::write() {
    (void)area_->walk();
    if (recno_ == 0) return insert(record());
    if (is_assigned()) update(*record_);
}

void Edit::update(Record& record) {
    check_locked();
    Assigned assigned = assigned_of(record);
    assigned.values.emplace_back(recno_);
    area_->desk().change([&](Transaction& work) {
        const std::string sql = fmt::format("update {} set {} = ? where RECNO = ?", quoted(area_->table()),
                                            fmt::join(all_quoted(assigned.names), " = ?, "));
        Statement update = work.prepare(sql, area_->walk().form());
        if (naming_fields(assigned.names, [&] { return update.execute(assigned.values); }) == 0) throw_gone();
    });
    record.forget_assigned();
    area_->walk().doubt();
}

void Edit::insert(Record& record) {
    std::int64_t number = 0;
    try {
        area_->desk().change([&](Transaction& work) { number = insert_in(work, record); });
    } catch (...) {
        if (number != 0) area_->give_back(number);
        throw;
    }
    recno_ = number;
    record_.reset();
    area_->walk().stand_on(recno_);
}

// The lock is there before anybody can see the record. In a transaction of several writes the record has to
// go by itself when there is no lock for it.
std::int64_t Edit::insert_in(Transaction& work, const Record& record) {
    Assigned assigned = assigned_of(record);
    assigned.names.insert(assigned.names.begin(), "RDD_AREAID");
    assigned.values.insert(assigned.values.begin(), area_->id());
    const std::vector<std::string_view> places(assigned.names.size(), "?");
    const std::string table = quoted(area_->table());
    const std::string sql = fmt::format("insert into {} ({}) values ({}) returning RECNO", table,
                                        fmt::join(all_quoted(assigned.names), ", "), fmt::join(places, ", "));
    Statement insert = work.prepare(sql, area_->walk().form());
    const std::int64_t number =
        std::llround(naming_fields(assigned.names, [&] { return insert.one<double>(assigned.values); }));
    try {
        area_->claims().take(number, wait_);
    } catch (...) {
        work.execute("delete from " + table + " where RECNO = ?", number);
        throw;
    }
    return number;
}

void Edit::remove() {
    if (recno_ == 0) return;
    check_locked();
    area_->desk().change([&](Transaction& work) {
        if (work.execute("delete from " + quoted(area_->table()) + " where RECNO = ?", recno_) == 0)
            throw_gone();
    });
    area_->walk().drop();
}

}  // namespace zmfb::rdd
