// The locks of a DBF file in use by several.
#include "host/dbf_table.h"

namespace zmfb::host {

// What is in memory is from before the lock.
bool DbfTable::read_anew(std::string_view operation) {
    if (!report(write_block(), GenCode::write, operation)) return false;
    block_.clear();
    return true;
}

bool DbfTable::lock_record(std::int64_t record, std::chrono::milliseconds wait) {
    if (!shared()) return true;
    if (record < 1 || record > record_count()) return false;
    return locks_.lock_record(file_, record, wait) && read_anew("RLOCK");
}

bool DbfTable::lock_table(std::chrono::milliseconds wait) {
    return !shared() || (locks_.lock_table(file_, wait) && read_anew("FLOCK"));
}

bool DbfTable::unlock_record(std::int64_t record) {
    if (!shared()) return true;
    const bool written = read_anew("DBUNLOCK");
    locks_.unlock_record(file_, record);
    return written;
}

bool DbfTable::unlock() {
    if (!shared()) return true;
    const bool written = read_anew("DBUNLOCK");
    locks_.unlock(file_);
    return written;
}

}  // namespace zmfb::host
