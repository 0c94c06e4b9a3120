#include "tool/browse/changes.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/browse/source.h"
#include "tool/catalog.h"
#include "tool/session.h"
#include "zmfbconn/methods.h"

namespace zmfb::tool::browse {
namespace {

constexpr std::size_t most_changes = 100;
constexpr std::size_t own_columns = 2;  // of the driver, which areas do not show

std::vector<Name> computed_columns(zmFBConn& connection, const std::string& table) {
    return names_of(
        connection,
        "select c.rdb$field_name from rdb$relation_fields c join rdb$fields f on f.rdb$field_name = "
        "c.rdb$field_source where f.rdb$computed_blr is not null and c.rdb$relation_name = ?",
        table);
}

}  // namespace

TableRules::TableRules(zmFBConn& connection, const Area& area, const Structure& structure) {
    const std::vector<Name> of_others = computed_columns(connection, area.table());
    for (const Column& column : area.fields()) {
        computed.push_back(std::ranges::find(of_others, column.name, &Name::text) != of_others.end());
        columns.push_back(rule_of(column, field_of(structure, column)));
        if (computed.back()) columns.back().kind = CellRule::Kind::none;
    }
    is_whole = structure.size() == area.fields().size() + own_columns;
}

Changes::Values Changes::current() const {
    Values values;
    for (std::size_t i = 0; i < area_.fields().size(); ++i)
        values.push_back(value_of(area_.at(i), area_.fields()[i].type));
    return values;
}

void Changes::note(Change change) {
    if (changes_.size() == most_changes) changes_.erase(changes_.begin());
    changes_.push_back(std::move(change));
}

// What is left afterwards is read again: it may be more than was written.
void Changes::update(Held& held, const NewValues& values) {
    if (!area_.go(held.recno())) {
        throw AreaError(AreaError::Reason::gone,
                        fmt::format("Record {} of {} was deleted", held.recno(), area_.table()));
    }
    Change change{Kind::update, held.recno(), current(), {}};
    try {
        for (const auto& [field, value] : values) assign(held.at(field), value);
        held.write();
    } catch (...) {
        held = area_.edit();
        throw;
    }
    if (!area_.refresh()) return;
    change.after = current();
    note(std::move(change));
}

std::int64_t Changes::append(const NewValues& values) {
    Held held = area_.append();
    for (const auto& [field, value] : values) assign(held.at(field), value);
    held.write();
    const std::int64_t number = held.recno();
    if (area_.go(number)) note({Kind::append, number, {}, current()});
    return number;
}

void Changes::remove(Held& held) {
    const std::int64_t number = held.recno();
    Change change{Kind::remove, number, area_.go(number) ? current() : Values(), {}};
    held.remove();
    note(std::move(change));
}

Changes::Undone Changes::undo() {
    if (changes_.empty()) throw Failure{Exit::failed, "there is nothing to undo"};
    const Change last = changes_.back();
    switch (last.kind) {
        case Kind::update:
            return undo_update(last);
        case Kind::append:
            return undo_append(last);
        case Kind::remove:
            break;
    }
    return undo_remove(last);
}

void Changes::forget_last() { changes_.pop_back(); }

// The record, locked, as the change left it.
Held Changes::untouched(const Change& change) {
    const auto leave_it = [&](std::string_view what) {
        forget_last();
        throw Failure{Exit::failed,
                      fmt::format("record {} was {} since: it is left as it is", change.number, what)};
    };
    if (!area_.go(change.number)) leave_it("deleted");
    Held held = area_.lock();
    if (current() != change.after) leave_it("changed by others");
    return held;
}

// Triggers may make more of it than what was before; nobody else does, while it is locked.
Changes::Undone Changes::undo_update(const Change& change) {
    Held held = untouched(change);
    for (std::size_t i = 0; i < change.before.size(); ++i) {
        if (!rules_.computed[i] && change.before[i] != change.after[i]) assign(held.at(i), change.before[i]);
    }
    held.write();
    forget_last();
    const auto earlier =
        std::ranges::find(changes_.rbegin(), changes_.rend(), change.number, &Change::number);
    if (earlier != changes_.rend() && area_.refresh()) earlier->after = current();
    return {fmt::format("record {} is as it was", change.number), change.number};
}

Changes::Undone Changes::undo_append(const Change& change) {
    untouched(change).remove();
    forget_last();
    return {fmt::format("record {}, which was added, is deleted", change.number), 0};
}

// The trigger of the table gives each record that comes in a number that there never was.
Changes::Undone Changes::undo_remove(const Change& change) {
    if (!rules_.is_whole) {
        forget_last();
        throw Failure{
            Exit::failed,
            fmt::format("record {} had columns of types that are not read here: it cannot be made again",
                        change.number)};
    }
    Held held = area_.append();
    for (std::size_t i = 0; i < change.before.size(); ++i) {
        if (!rules_.computed[i]) assign(held.at(i), change.before[i]);
    }
    held.write();
    const std::int64_t before = change.number, now = held.recno();
    forget_last();
    for (Change& earlier : changes_) {
        if (earlier.number == before) earlier.number = now;
    }
    return {fmt::format("record {} is back as record {}: no number is given twice", before, now), now};
}

}  // namespace zmfb::tool::browse
