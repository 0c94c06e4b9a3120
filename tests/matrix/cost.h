/// What a piece of work costs.
#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>

namespace zmfb::test {

/// Seconds. Comparisons go by the processor's, which other programs on the machine disturb least.
struct Cost {
    double wall = 1e9;
    double processor = 1e9;
};

/// The cheapest of `rounds` runs.
template <class Work>
Cost cost(int rounds, Work work) {
    Cost best;
    for (int round = 0; round < rounds; ++round) {
        const auto wall = std::chrono::steady_clock::now();
        const std::clock_t processor = std::clock();
        work();
        best.processor =
            std::min(best.processor, static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC);
        best.wall = std::min(best.wall,
                             std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count());
    }
    return best;
}

}  // namespace zmfb::test
