// What goes through the records of the current area: DBEVAL, LOCATE, CONTINUE.
#include <algorithm>
#include <functional>
#include <limits>

#include "host/error.h"
#include "host/moves.h"
#include "host/workarea_list.h"

namespace zmfb::host {
namespace {

struct Scope {
    const Value& for_block;
    const Value& while_block;
    const Value& next;
    const Value& record;
    const Value& rest;

    [[nodiscard]] bool begins_at_the_top() const {
        const bool is_rest = rest.is(Kind::logical) && rest.logical();
        return !is_rest && !while_block.is(Kind::block) && !next.is(Kind::numeric);
    }
};

// Goes through the records of a scope until `visit` answers false or the area is closed.
void walk(const WorkArea& area, const Scope& scope, const std::function<bool()>& visit) {
    const auto is_on_record = [&] { return area.table != nullptr && !area.table->eof(); };
    if (scope.record.is(Kind::numeric)) {
        dbgoto(scope.record.integer());
        if (is_on_record() && allows(scope.for_block) && is_on_record()) visit();
        return;
    }
    if (scope.begins_at_the_top()) dbgotop();
    std::int64_t left =
        scope.next.is(Kind::numeric) ? scope.next.integer() : std::numeric_limits<std::int64_t>::max();
    for (; left > 0 && is_on_record() && allows(scope.while_block); --left) {
        if (is_on_record() && allows(scope.for_block) && is_on_record() && !visit()) return;
        if (left > 1 && area.table != nullptr) dbskip();
    }
}

// Whether a record was found, on which it stays then.
bool locate(WorkArea& area, const Scope& scope) {
    bool found = false;
    walk(area, scope, [&] {
        found = true;
        return false;
    });
    area.found = found;
    return found;
}

}  // namespace

void dbeval(const Value& block, const Value& for_block, const Value& while_block, const Value& next,
            const Value& record, const Value& rest) {
    const auto area = needed_workarea("DBEVAL");
    if (area == nullptr) return;
    if (!block.is(Kind::block)) {
        argument_error(Subcode::eval, "DBEVAL", {block});
        return;
    }
    walk(*area, {for_block, while_block, next, record, rest}, [&] {
        block.eval({});
        return true;
    });
}

bool dblocate(const Value& for_block, const Value& while_block, const Value& next, const Value& record,
              const Value& rest) {
    const auto area = needed_workarea("LOCATE");
    if (area == nullptr) return false;
    area->located = for_block;
    return locate(*area, {for_block, while_block, next, record, rest});
}

bool dbcontinue() {
    const auto area = needed_workarea("CONTINUE");
    if (area == nullptr) return false;
    if (!area->located.is(Kind::block)) return area->found = false;
    const Value sought = area->located;
    const Value none;
    dbskip();
    return locate(*area, {sought, none, none, none, true});
}

}  // namespace zmfb::host
