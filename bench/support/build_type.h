/// Benchmarks of a build without optimisation would measure something that nobody uses.
#pragma once

#include <cstdio>

namespace zmfb::bench {

/// Whether this build may be timed: optimised, and without assertions. Otherwise says so on standard error.
inline bool fit_to_be_timed() {
#if defined(__OPTIMIZE__) && defined(NDEBUG)
    return true;
#else
    std::fputs("this is a debug build: its times mean nothing. Build the preset \"bench\".\n", stderr);
    return false;
#endif
}

}  // namespace zmfb::bench
