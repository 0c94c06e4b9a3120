#include "host/dbf_locks.h"

#include <algorithm>
#include <cerrno>
#include <thread>

namespace zmfb::host {
namespace {

constexpr ByteRange all_records{std::int64_t{1} << 61, std::int64_t{1} << 33};

ByteRange byte_of(std::int64_t record) { return {all_records.start + record, 1}; }

bool lock_within(Descriptor& file, ByteRange range, std::chrono::milliseconds wait) {
    constexpr std::chrono::milliseconds longest_pause{20};
    const auto end = std::chrono::steady_clock::now() + wait;
    for (std::chrono::milliseconds pause{1};; pause = std::min(2 * pause, longest_pause)) {
        if (file.lock(Lock::exclusive, range)) return true;
        const int refusal = errno;
        if (refusal != EAGAIN || std::chrono::steady_clock::now() >= end) {
            errno = refusal;
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace

bool DbfLocks::lock_record(Descriptor& file, std::int64_t record, std::chrono::milliseconds wait) {
    if (hold(record)) return true;
    if (!lock_within(file, byte_of(record), wait)) return false;
    records_.insert(record);
    return true;
}

bool DbfLocks::lock_table(Descriptor& file, std::chrono::milliseconds wait) {
    if (table_) return true;
    if (!lock_within(file, all_records, wait)) return false;
    table_ = true;
    records_.clear();
    return true;
}

void DbfLocks::unlock_record(Descriptor& file, std::int64_t record) {
    if (records_.erase(record) != 0) file.lock(Lock::none, byte_of(record));
}

void DbfLocks::unlock(Descriptor& file) {
    if (!table_ && records_.empty()) return;
    file.lock(Lock::none, all_records);
    table_ = false;
    records_.clear();
}

}  // namespace zmfb::host
