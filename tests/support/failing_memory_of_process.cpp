// Linked into a program with --wrap=main: the environment says which of its allocations fails.
//
// ZMFB_MEMORY_NTH    the allocation that fails, counted from 1 in main(); with ZMFB_MEMORY_STAYS all after it
// too ZMFB_MEMORY_COUNT  a file that holds the number of allocations, those of child processes among them
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "tests/support/failing_memory.h"

extern "C" {
int __real_main(int argc, char** argv);
int __wrap_main(int argc, char** argv);
}

namespace {

std::atomic<long>& counter_in_file(const char* name) {
    const int file = ::open(name, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ::ftruncate(file, sizeof(std::atomic<long>)) != 0) std::abort();
    void* const place =
        ::mmap(nullptr, sizeof(std::atomic<long>), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (place == MAP_FAILED) std::abort();
    ::close(file);
    return *new (place) std::atomic<long>(0);
}

}  // namespace

int __wrap_main(int argc, char** argv) {
    const char* const nth = std::getenv("ZMFB_MEMORY_NTH");
    if (const char* const file = std::getenv("ZMFB_MEMORY_COUNT"); file != nullptr && nth != nullptr) {
        zmfb::test::count_memory_for_good(
            {.nth = std::atol(nth), .stays = std::getenv("ZMFB_MEMORY_STAYS") != nullptr},
            counter_in_file(file));
    }
    return __real_main(argc, argv);
}
