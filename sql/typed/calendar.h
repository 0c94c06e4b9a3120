/// The engine's days and times, and those of <chrono>.
#pragma once

#include <ibase.h>

#include <chrono>

#include "zmfbconn/sql_value.h"

namespace zmfb::typed {

/// The engine counts days from 17 November 1858.
inline constexpr std::chrono::sys_days first_day =
    std::chrono::year(1858) / std::chrono::November / std::chrono::day(17);

constexpr std::chrono::year_month_day day_of(ISC_DATE date) { return first_day + std::chrono::days(date); }

constexpr TimeOfDay time_of(ISC_TIME time) { return TimeOfDay(static_cast<std::int32_t>(time)); }

constexpr Timestamp timestamp_of(const ISC_TIMESTAMP& stamp) {
    const auto days = std::chrono::days(stamp.timestamp_date) + first_day.time_since_epoch();
    return Timestamp(days + time_of(stamp.timestamp_time));
}

constexpr ISC_DATE date_of(std::chrono::sys_days day) {
    return static_cast<ISC_DATE>((day - first_day).count());
}

constexpr ISC_TIMESTAMP stamp_of(Timestamp moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    return {date_of(std::chrono::sys_days(day.time_since_epoch())),
            static_cast<ISC_TIME>((moment - day).count())};
}

}  // namespace zmfb::typed
