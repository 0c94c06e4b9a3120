/// A work area of a worker process that its test drives.
#pragma once

#include <optional>
#include <string_view>

#include "zmfbconn/area.h"

namespace zmfb::test {

/// One work area. Whoever is in the way makes the answer .F.; a record that is gone "gone", one that is not
/// locked "not locked", an area that is not open "not open".
class AreaSteps {
  public:
    /// The answer of one of these; nothing for any other name.
    ///
    /// area_open(tbl, shared), area_close(), area_unlock(recno): .T.;
    /// area_lock(recno): goes there and locks it, .T.; area_add(field, n): adds to a field of the current
    /// record, which is locked, and answers its new value; area_delete(): deletes it, .T.; area_append(field,
    /// n): the number of the new record; area_sums(field): the sum over all records, twice while the table is
    /// locked: {first, second}.
    std::optional<host::Value> carry_out(std::string_view step, zmFBConn& connection, host::Args args);

  private:
    std::int64_t add(std::string_view field, std::int64_t more);
    std::int64_t append(std::string_view field, std::int64_t value);
    std::int64_t sum(std::string_view field);

    std::optional<Area> area_;
};

}  // namespace zmfb::test
