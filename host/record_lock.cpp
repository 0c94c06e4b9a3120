// The locks of the current area.
#include <algorithm>

#include "host/record.h"
#include "host/workarea.h"
#include "host/workarea_list.h"

namespace zmfb::host {

bool rlock(std::chrono::milliseconds wait) {
    const auto area = current_workarea();
    if (area == nullptr || area->table->eof()) return false;
    const std::int64_t record = area->table->record_number();
    for (const std::int64_t other : area->table->locked_records()) {
        if (other != record) area->table->unlock_record(other);
    }
    neterrholder("");
    return area->table->lock_record(record, wait);
}

bool dbrlock(const Value& record, std::chrono::milliseconds wait) {
    if (!record.is(Kind::numeric)) return rlock(wait);
    const auto area = current_workarea();
    neterrholder("");
    return area != nullptr && area->table->lock_record(record.integer(), wait);
}

Value dbrlocklist() {
    Value list = array_of();
    if (const auto area = current_workarea()) {
        for (const std::int64_t record : area->table->locked_records()) list.push(record);
    }
    return list;
}

void dbrunlock(const Value& record) {
    const auto area = current_workarea();
    if (area == nullptr) return;
    if (record.is(Kind::numeric)) {
        area->table->unlock_record(record.integer());
    } else {
        for (const std::int64_t locked : area->table->locked_records()) area->table->unlock_record(locked);
    }
}

bool flock(std::chrono::milliseconds wait) {
    const auto area = current_workarea();
    neterrholder("");
    return area != nullptr && area->table->lock_table(wait);
}

void dbunlock() {
    if (const auto area = current_workarea()) area->table->unlock();
}

void dbunlockall() {
    for_each_workarea([](WorkArea& area) { area.table->unlock(); });
}

}  // namespace zmfb::host
