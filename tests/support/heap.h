/// The memory that this process has allocated and not given back.
#pragma once

#include <malloc.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
// Declared here: g++ comes without the header that has it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace zmfb::test {

/// In bytes. What the C library keeps aside for the next allocation of a size counts, unless the environment
/// has GLIBC_TUNABLES=glibc.malloc.tcache_count=0.
inline std::size_t heap_in_use() {
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

}  // namespace zmfb::test
