/// The locks that one shared use of a DBF file holds on its records.
#pragma once

#include <chrono>
#include <cstdint>
#include <set>
#include <vector>

#include "host/descriptor.h"

namespace zmfb::host {

/// A record is locked by a byte far behind what a file can reach, the table by the bytes of all records, so
/// that the system keeps one from standing beside the other. All end with the descriptor.
class DbfLocks {
  public:
    /// Locks a record besides those that are locked, unless the table is. False, with errno saying why, when
    /// that was refused for all of `wait`.
    bool lock_record(Descriptor& file, std::int64_t record, std::chrono::milliseconds wait);
    /// Locks the table in place of its records.
    bool lock_table(Descriptor& file, std::chrono::milliseconds wait);
    void unlock_record(Descriptor& file, std::int64_t record);
    void unlock(Descriptor& file);

    /// Whether the record may be changed.
    [[nodiscard]] bool hold(std::int64_t record) const { return table_ || records_.contains(record); }
    [[nodiscard]] std::vector<std::int64_t> records() const { return {records_.begin(), records_.end()}; }

  private:
    std::set<std::int64_t> records_;
    bool table_ = false;
};

}  // namespace zmfb::host
