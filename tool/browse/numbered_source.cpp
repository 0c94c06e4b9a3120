#include "tool/browse/numbered_source.h"

#include <algorithm>

namespace zmfb::tool::browse {

ShownRows NumberedSource::from(std::int64_t number, std::size_t count) {
    ShownRows rows;
    for (; rows.size() < count && has(number); ++number)
        rows.push_back({.number = number, .cells = cells(number)});
    return rows;
}

ShownRows NumberedSource::first(std::size_t count) { return from(1, count); }

ShownRows NumberedSource::last(std::size_t count) {
    return from(std::max<std::int64_t>(1, last_number() - static_cast<std::int64_t>(count) + 1), count);
}

ShownRows NumberedSource::behind(std::span<const ShownRow> known, std::size_t count) {
    return from(known.back().number + 1, count);
}

ShownRows NumberedSource::before(std::span<const ShownRow> known, std::size_t count) {
    const std::int64_t end = known.front().number;
    const std::int64_t begin = std::max<std::int64_t>(1, end - static_cast<std::int64_t>(count));
    return from(begin, static_cast<std::size_t>(end - begin));
}

std::optional<ShownRow> NumberedSource::row(std::int64_t number) {
    if (number < 1 || !has(number)) return std::nullopt;
    return ShownRow{.number = number, .cells = cells(number)};
}

}  // namespace zmfb::tool::browse
