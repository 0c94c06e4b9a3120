#include "tool/browse/lock_sightings.h"

#include <fmt/chrono.h>

namespace zmfb::tool::browse {

std::string time_words(Moment moment) {
    return fmt::format("{:%H:%M:%S}", fmt::localtime(std::chrono::system_clock::to_time_t(moment)));
}

LockSightings::Key LockSightings::key_of(const Lock& lock) {
    return {lock.table, lock.record.value_or(0), lock.owner.holder.id};
}

void LockSightings::see(std::span<const Lock> locks) {
    std::map<Key, Moment> now;
    for (const Lock& lock : locks) now.emplace(key_of(lock), see(lock));
    since_ = std::move(now);
}

Moment LockSightings::see(const Lock& lock) {
    return since_.try_emplace(key_of(lock), std::chrono::system_clock::now()).first->second;
}

}  // namespace zmfb::tool::browse
