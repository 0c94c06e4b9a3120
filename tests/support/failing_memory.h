/// Memory that is refused. A program that links failing_memory.cpp counts what it allocates, and one of the
/// allocations fails.
///
/// Counted is what the program and the C++ libraries ask operator new for, and what the objects linked into
/// it ask malloc() and realloc() for, as values do. The client library and the engine take theirs elsewhere.
#pragma once

#include <atomic>
#include <cstddef>

namespace zmfb::test {

/// One allocation that fails, or all from that one on.
struct MemoryFault {
    long nth = 0;  ///< counted from 1; 0: none
    bool stays = false;
};

/// Counts from its making to its end, and has allocations fail. One at a time.
class CountedMemory {
  public:
    explicit CountedMemory(MemoryFault fault = {});
    ~CountedMemory();
    CountedMemory(const CountedMemory&) = delete;
    CountedMemory& operator=(const CountedMemory&) = delete;

    /// How many allocations were asked for.
    [[nodiscard]] static long count();
};

/// Blocks that were allocated while something counted, and not freed since forget_living_blocks().
std::size_t living_blocks();
void forget_living_blocks();

/// For a process of its own: counts in `counter`, which may be shared between processes, to the end.
void count_memory_for_good(MemoryFault fault, std::atomic<long>& counter);

}  // namespace zmfb::test
