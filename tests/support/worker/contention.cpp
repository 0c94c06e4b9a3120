#include "tests/support/worker/contention.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <tuple>

namespace zmfb::test {

std::int64_t monotonic_now() {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(since).count();
}

bool record_hold(const std::string& file, const Hold& hold) {
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) return false;
    const std::string line = fmt::format("{} {} {} {}\n", hold.resource, hold.area, hold.from, hold.until);
    const bool written = ::write(descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    ::close(descriptor);
    return written;
}

std::vector<Hold> recorded_holds(const std::string& file) {
    std::vector<Hold> holds;
    std::ifstream lines(file);
    for (Hold hold; lines >> hold.resource >> hold.area >> hold.from >> hold.until;) holds.push_back(hold);
    return holds;
}

std::optional<std::pair<Hold, Hold>> overlap_in(std::vector<Hold> holds) {
    std::sort(holds.begin(), holds.end(), [](const Hold& a, const Hold& b) {
        return std::tie(a.resource, a.from) < std::tie(b.resource, b.from);
    });
    // In order of their beginnings, some pair overlaps exactly when some pair of neighbours does.
    const auto found = std::adjacent_find(holds.begin(), holds.end(), [](const Hold& a, const Hold& b) {
        return a.resource == b.resource && b.from < a.until;
    });
    if (found == holds.end()) return std::nullopt;
    return std::pair{*found, *(found + 1)};
}

long record_and_table_overlaps(const std::vector<Hold>& holds) {
    std::vector<Hold> tables, records;
    for (const Hold& hold : holds) (hold.resource == "table" ? tables : records).push_back(hold);
    // One after the other, so that their ends are in order too.
    std::sort(tables.begin(), tables.end(), [](const Hold& a, const Hold& b) { return a.from < b.from; });
    long overlaps = 0;
    for (const Hold& record : records) {
        auto table = std::partition_point(tables.begin(), tables.end(),
                                          [&](const Hold& one) { return one.until <= record.from; });
        for (; table != tables.end() && table->from < record.until; ++table) {
            if (table->area != record.area) ++overlaps;
        }
    }
    return overlaps;
}

}  // namespace zmfb::test
