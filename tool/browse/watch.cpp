#include "tool/browse/watch.h"

#include <algorithm>

namespace zmfb::tool::browse {
namespace {

constexpr std::chrono::seconds a_moment(3);
constexpr std::size_t most_rows = 1000;  // that are asked for at once

const ShownRow* find(const ShownRows& rows, std::int64_t number) {
    const auto found = std::ranges::find(rows, number, &ShownRow::number);
    return found == rows.end() ? nullptr : &*found;
}

}  // namespace

void Watch::tick() {
    std::erase_if(lit_, [](const auto& cell) { return cell.second <= Clock::now(); });
    if (every_.count() == 0 || source_.area() == nullptr || Clock::now() < due_) return;
    due_ = Clock::now() + every_;
    const ShownRows before = window_.rows();
    window_.refresh();
    light(before, window_.height());
    look_at_locks();
}

// A row that was not there is new where one that was there stands behind it, or where there was room for
// more.
void Watch::light(const ShownRows& before, std::size_t room) {
    const ShownRows& now = window_.rows();
    const auto last_known = std::ranges::find_if(
        now.rbegin(), now.rend(), [&](const ShownRow& row) { return find(before, row.number) != nullptr; });
    const auto known = static_cast<std::size_t>(now.rend() - last_known);
    for (std::size_t i = 0; i < now.size(); ++i) {
        const ShownRow* const was = find(before, now[i].number);
        if (was == nullptr && (known == 0 || (i >= known && before.size() >= room))) continue;
        for (std::size_t column = 0; column < now[i].cells.size(); ++column) {
            if (was == nullptr || was->cells[column] != now[i].cells[column])
                lit_[{now[i].number, column}] = Clock::now() + a_moment;
        }
    }
}

void Watch::look_at_locks() {
    std::vector<std::int64_t> numbers;
    for (const ShownRow& row : window_.rows()) numbers.push_back(row.number);
    numbers.resize(std::min(numbers.size(), most_rows));
    locks_ = locks_of(connection_, source_.area()->table(), numbers);
    sightings_.see(locks_);
}

bool Watch::is_lit(std::int64_t number, std::size_t column) const { return lit_.contains({number, column}); }

const Lock* Watch::lock_of(std::int64_t number) const {
    const auto found = std::ranges::find(locks_, number, &Lock::record);
    return found == locks_.end() ? nullptr : &*found;
}

const Lock* Watch::table_lock() const {
    const auto found = std::ranges::find(locks_, std::optional<std::int64_t>(), &Lock::record);
    return found == locks_.end() ? nullptr : &*found;
}

Moment Watch::since(std::int64_t number, const Holder& holder) {
    for (const Lock& lock : locks_) {
        if (lock.owner.holder.id == holder.id && lock.record.value_or(number) == number)
            return sightings_.see(lock);
    }
    return sightings_.see({source_.area()->table(), number, {holder, Alive::unknown}});
}

}  // namespace zmfb::tool::browse
