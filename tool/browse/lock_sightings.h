/// Since when locks are seen.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "tool/locks.h"

namespace zmfb::tool::browse {

using Moment = std::chrono::system_clock::time_point;

/// "14:03:12", of this place.
std::string time_words(Moment moment);

/// When each of the locks was seen first by this program, as long as it was seen each time.
class LockSightings {
  public:
    /// Takes in what is locked now.
    void see(std::span<const Lock> locks);
    /// Takes in one more. Returns since when it is seen.
    Moment see(const Lock& lock);

  private:
    using Key = std::tuple<std::string, std::int64_t, std::string>;  // table, record, who
    static Key key_of(const Lock& lock);
    std::map<Key, Moment> since_;
};

}  // namespace zmfb::tool::browse
