// A process that works on and on: its memory and its open files stay as they were once it was warm.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "tests/soak/mixed_work.h"
#include "tests/support/heap.h"
#include "tests/support/server_setup.h"

namespace zmfb::test {
namespace {

// What the process has in memory now, in kB.
long resident() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
    }
    throw std::runtime_error("no VmRSS");
}

long rounds_wanted() {
    constexpr long by_default = 12;
    const char* const wanted = std::getenv("ZMFB_SOAK_ROUNDS");
    return wanted == nullptr ? by_default : std::stol(wanted);
}

class Soak : public MixedWork {
  protected:
    void work(long rounds) {
        for (long i = 0; i < rounds && !HasFailure(); ++i) {
            round();
            EXPECT_EQ(raised().size(), raised_by_a_round) << testing::PrintToString(raised());
            EXPECT_EQ(close_files_left_open(), left_open_by_a_round);
            forget_raised();
        }
    }
};

TEST_F(Soak, MemoryAndOpenFilesStayAsTheyWere) {
    if (const std::string reason = why_no_external_files(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_NE(std::getenv("GLIBC_TUNABLES"), nullptr)
        << "freed memory that the C library keeps aside would count as used: run it by ctest";
    constexpr long warm_up = 5;
    work(warm_up);
    const std::size_t heap = heap_in_use();
    const std::size_t files = open_files();
    const long memory = resident();
    const long calls_before = calls();
    work(rounds_wanted());
    const std::size_t heap_at_the_end = heap_in_use();
    std::printf(
        "%ld calls; heap %zu bytes after the warm-up, %zu at the end; resident %ld kB, %ld kB; files %zu, "
        "%zu\n",
        calls() - calls_before, heap, heap_at_the_end, memory, resident(), files, open_files());
    EXPECT_LE(heap_at_the_end, heap + heap / 100);
    EXPECT_EQ(open_files(), files);
}

}  // namespace
}  // namespace zmfb::test
