// The fields of the current record, and its changes.
#include "host/record.h"

#include <algorithm>
#include <optional>
#include <string>

#include "host/table_error.h"
#include "host/text.h"
#include "host/workarea.h"
#include "host/workarea_list.h"

namespace zmfb::host {
namespace {

std::optional<std::size_t> index_by_name(const Table& table, const Value& name) {
    const std::string wanted = name_key(name);
    const auto fields = table.fields();
    const auto found = std::ranges::find(fields, wanted, &Field::name);
    if (found == fields.end()) return std::nullopt;
    return static_cast<std::size_t>(found - fields.begin());
}

// A field given by number or name; a name that is none is raised.
std::optional<std::size_t> field_index(const Table& table, const Value& field, std::string_view operation) {
    if (field.is(Kind::numeric)) {
        const std::int64_t number = field.integer();
        if (number < 1 || number > static_cast<std::int64_t>(table.fields().size())) return std::nullopt;
        return static_cast<std::size_t>(number - 1);
    }
    if (!field.is(Kind::character)) return std::nullopt;
    const auto index = index_by_name(table, field);
    if (!index) {
        const std::string description = "No field of the name " + field.string();
        raise_table_error({.gencode = GenCode::no_variable,
                           .subcode = Subcode::no_variable,
                           .description = description,
                           .operation = operation});
    }
    return index;
}

}  // namespace

std::int64_t fcount() {
    const auto area = current_workarea();
    return area == nullptr ? 0 : static_cast<std::int64_t>(area->table->fields().size());
}

Value fieldname(std::int64_t number) {
    if (number < 1 || number > fcount()) return "";
    return current_workarea()->table->fields()[static_cast<std::size_t>(number - 1)].name;
}

std::int64_t fieldpos(const Value& name) {
    const auto area = current_workarea();
    if (area == nullptr || !name.is(Kind::character)) return 0;
    const auto index = index_by_name(*area->table, name);
    return index ? static_cast<std::int64_t>(*index) + 1 : 0;
}

Value fieldget(const Value& field) {
    const auto area = current_workarea();
    if (area == nullptr) return {};
    const auto index = field_index(*area->table, field, "FIELDGET");
    return index ? area->table->get(*index) : Value();
}

Value fieldput(const Value& field, const Value& value) {
    const auto area = current_workarea();
    if (area == nullptr) return {};
    const auto index = field_index(*area->table, field, "FIELDPUT");
    return index && area->table->put(*index, value) ? value : Value();
}

bool dbappend(const Value& release) {
    const auto area = needed_workarea("DBAPPEND");
    if (area == nullptr) return false;
    area->found = area->before_first = false;
    neterr(false);
    if (!release.is(Kind::logical) || release.logical()) dbrunlock();
    return area->table->append();
}

bool dbdelete() {
    const auto area = needed_workarea("DBDELETE");
    return area != nullptr && area->table->set_deleted(true);
}

bool dbrecall() {
    const auto area = needed_workarea("DBRECALL");
    return area != nullptr && area->table->set_deleted(false);
}

bool deleted() {
    const auto area = current_workarea();
    return area != nullptr && area->table->deleted();
}

bool dbzap() {
    const auto area = needed_workarea("ZAP");
    return area != nullptr && area->table->zap();
}

bool dbpack() {
    const auto area = needed_workarea("PACK");
    return area != nullptr && area->table->pack();
}

bool dbcommit() {
    const auto area = needed_workarea("DBCOMMIT");
    return area != nullptr && area->table->commit();
}

bool dbcommitall() {
    bool done = true;
    for_each_workarea([&](WorkArea& area) { done = area.table->commit() && done; });
    return done;
}

}  // namespace zmfb::host
