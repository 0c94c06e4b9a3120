/// What others do to the rows on the screen.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tool/browse/lock_sightings.h"
#include "tool/browse/window.h"

namespace zmfb::tool::browse {

/// Reads the rows of a table again every few seconds, and which of them are locked.
class Watch {
  public:
    /// Rows that are only read have no locks. Never when `every` is 0.
    Watch(zmFBConn& connection, Source& source, Window& window, std::chrono::seconds every)
        : connection_(connection), source_(source), window_(window), every_(every) {}

    /// Reads when it is time to. Throws what reading throws.
    void tick();
    /// Whether a cell has become another just now.
    [[nodiscard]] bool is_lit(std::int64_t number, std::size_t column) const;
    /// Who has a row locked, as far as it is known; nullptr for nobody.
    [[nodiscard]] const Lock* lock_of(std::int64_t number) const;
    /// The same of the whole table.
    [[nodiscard]] const Lock* table_lock() const;
    /// Since when it is seen that somebody has a row.
    Moment since(std::int64_t number, const Holder& holder);

  private:
    using Clock = std::chrono::steady_clock;

    void light(const ShownRows& before, std::size_t room);
    void look_at_locks();

    zmFBConn& connection_;
    Source& source_;
    Window& window_;
    std::chrono::seconds every_;
    Clock::time_point due_ = Clock::now();
    std::map<std::pair<std::int64_t, std::size_t>, Clock::time_point> lit_;  // until when
    std::vector<Lock> locks_;
    LockSightings sightings_;
};

}  // namespace zmfb::tool::browse
