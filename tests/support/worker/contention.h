/// The record that contending workers keep of their holds, and the check that no two holds of one thing
/// overlap.
///
/// Every hold is one line, appended by one write: resource, area id, and the times on the monotonic clock, in
/// nanoseconds, between which the lock was surely held: the first is taken after the grant, the second before
/// the release. Two holds of one resource that overlap prove that two areas held it at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zmfb::test {

struct Hold {
    std::string resource;  ///< a record number, or "table"
    std::string area;
    std::int64_t from = 0;
    std::int64_t until = 0;
};

/// Now, on the clock that all processes of this machine share.
std::int64_t monotonic_now();

/// Appends a hold to the file; false when it could not be written whole.
bool record_hold(const std::string& file, const Hold& hold);

/// The holds in the file.
std::vector<Hold> recorded_holds(const std::string& file);

/// How many pairs of holds, one of the table and one of a record by another area, overlap; those of the table
/// overlap nowhere among themselves.
long record_and_table_overlaps(const std::vector<Hold>& holds);

/// Two holds of one resource that overlap, if there are any.
std::optional<std::pair<Hold, Hold>> overlap_in(std::vector<Hold> holds);

}  // namespace zmfb::test
