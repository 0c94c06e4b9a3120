#include "host/moves.h"

#include "host/text.h"
#include "host/workarea_list.h"

namespace zmfb::host {
namespace {

// The area a move is made in, null (raised) when there is none.
std::shared_ptr<WorkArea> begin_move(std::string_view operation) {
    auto area = needed_workarea(operation);
    if (area != nullptr) area->found = area->before_first = false;
    return area;
}

// From the current record back to one that passes; false when there is none.
bool back_to_passing(WorkArea& area) {
    while (area.table != nullptr && !area.table->bof()) {
        if (passes(area)) return true;
        if (area.table == nullptr || !area.table->skip(-1)) return false;
    }
    return false;
}

bool skip_one_back(WorkArea& area) {
    const std::int64_t from = area.table->record_number();
    if (!area.table->skip(-1) || back_to_passing(area)) return area.table != nullptr;
    if (area.table == nullptr || !area.table->go_to(from)) return false;
    on_to_passing(area);
    area.before_first = true;
    return false;
}

void skip_filtered(WorkArea& area, std::int64_t count) {
    for (; count > 0 && area.table != nullptr && !area.table->eof(); --count) {
        if (!area.table->skip(1)) return;
        on_to_passing(area);
    }
    while (count < 0 && skip_one_back(area)) ++count;
}

}  // namespace

bool allows(const Value& condition) {
    if (!condition.is(Kind::block)) return true;
    const Value answer = condition.eval({});
    return answer.is(Kind::logical) && answer.logical();
}

bool passes(WorkArea& area) {
    const Value block = area.filter;  // which may change the filter
    return allows(block);
}

void on_to_passing(WorkArea& area) {
    while (area.table != nullptr && !area.table->eof() && !passes(area)) {
        if (area.table == nullptr || !area.table->skip(1)) return;
    }
}

void dbgotop() {
    const auto area = begin_move("DBGOTOP");
    if (area == nullptr || !area->table->go_top() || area->filter.is_nil()) return;
    on_to_passing(*area);
    area->before_first = area->table != nullptr && area->table->eof();
}

void dbgobottom() {
    const auto area = begin_move("DBGOBOTTOM");
    if (area == nullptr || !area->table->go_bottom() || area->filter.is_nil()) return;
    if (back_to_passing(*area) || area->table == nullptr) return;
    constexpr std::int64_t no_record = 0;
    area->table->go_to(no_record);
    area->before_first = true;
}

void dbskip(std::int64_t count) {
    const auto area = begin_move("DBSKIP");
    if (area == nullptr) return;
    if (area->filter.is_nil() || count == 0) {
        area->table->skip(count);
    } else {
        skip_filtered(*area, count);
    }
}

void dbgoto(std::int64_t record) {
    if (const auto area = begin_move("DBGOTO")) area->table->go_to(record);
}

bool bof() {
    const auto area = current_workarea();
    return area != nullptr && (area->before_first || area->table->bof());
}

bool eof() {
    const auto area = current_workarea();
    return area != nullptr && area->table->eof();
}

std::int64_t recno() {
    const auto area = current_workarea();
    return area == nullptr ? 0 : area->table->record_number();
}

std::int64_t lastrec() {
    const auto area = current_workarea();
    return area == nullptr ? 0 : area->table->last_record();
}

std::int64_t reccount() {
    const auto area = current_workarea();
    return area == nullptr ? 0 : area->table->record_count();
}

bool found() {
    const auto area = current_workarea();
    return area != nullptr && area->found;
}

bool dbsetfilter(const Value& block, const Value& condition) {
    const auto area = needed_workarea("DBSETFILTER");
    if (area == nullptr) return false;
    dbclearfilter();
    const std::string text = condition.is(Kind::character) ? alltrim(condition).string() : std::string();
    const bool by_block = block.is(Kind::block);
    if (area->table->takes_conditions() || !by_block) {
        if (!area->table->set_filter(text)) return false;
    }
    if (by_block) area->filter = block;
    area->condition = text;
    return true;
}

void dbclearfilter() {
    const auto area = current_workarea();
    if (area == nullptr) return;
    area->filter = Value();
    area->condition.clear();
    area->table->set_filter("");
}

Value dbfilter() {
    const auto area = current_workarea();
    return area == nullptr ? "" : Value(area->condition);
}

}  // namespace zmfb::host
