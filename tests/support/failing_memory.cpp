#include "tests/support/failing_memory.h"

#include <mutex>
#include <new>
#include <unordered_set>

// The linker puts __wrap_malloc in the place of malloc, and so on (tests/support/CMakeLists.txt).
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
void* __wrap_malloc(std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void __wrap_free(void* block);
}

namespace zmfb::test {
namespace {

// What the books themselves need is not in them.
template <class T>
struct Unbooked {
    using value_type = T;
    Unbooked() = default;
    template <class Other>
    Unbooked(const Unbooked<Other>&) {}  // NOLINT(google-explicit-constructor)
    static T* allocate(std::size_t count) { return static_cast<T*>(__real_malloc(count * sizeof(T))); }
    static void deallocate(T* block, std::size_t) { __real_free(block); }
    bool operator==(const Unbooked&) const = default;
};
using Blocks = std::unordered_set<void*, std::hash<void*>, std::equal_to<>, Unbooked<void*>>;

std::mutex one_at_a_time;

Blocks& living() {
    alignas(Blocks) static std::byte room[sizeof(Blocks)];
    static Blocks& all = *new (room) Blocks;
    return all;
}

std::atomic<long> own_counter;
std::atomic<std::atomic<long>*> counter = nullptr;  // while something counts
bool books = false;                                 // while living blocks are noted
MemoryFault fault;

bool is_refused() {
    std::atomic<long>* const counting = counter;
    if (counting == nullptr) return false;
    const long now = ++*counting;
    return fault.nth > 0 && (now == fault.nth || (fault.stays && now > fault.nth));
}

void* noted(void* block) {
    if (!books || block == nullptr) return block;
    const std::lock_guard lock(one_at_a_time);
    living().insert(block);
    return block;
}

void forget(void* block) {
    const std::lock_guard lock(one_at_a_time);
    if (!living().empty()) living().erase(block);
}

void* made(std::size_t size) noexcept {
    return is_refused() ? nullptr : noted(__real_malloc(size == 0 ? 1 : size));
}

void* made_or_thrown(std::size_t size) {
    void* const block = made(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void freed(void* block) noexcept {
    if (block != nullptr) forget(block);
    __real_free(block);
}

}  // namespace

CountedMemory::CountedMemory(MemoryFault which) {
    fault = which;
    own_counter = 0;
    books = true;
    counter = &own_counter;
}

CountedMemory::~CountedMemory() {
    counter = nullptr;
    books = false;
}

long CountedMemory::count() { return own_counter; }

std::size_t living_blocks() { return living().size(); }

void forget_living_blocks() { living().clear(); }

void count_memory_for_good(MemoryFault which, std::atomic<long>& where) {
    fault = which;
    counter = &where;
}

}  // namespace zmfb::test

using zmfb::test::freed;
using zmfb::test::made;
using zmfb::test::made_or_thrown;

void* __wrap_malloc(std::size_t size) { return made(size); }
void* __wrap_realloc(void* block, std::size_t size) {
    if (zmfb::test::is_refused()) return nullptr;
    if (block != nullptr) zmfb::test::forget(block);
    return zmfb::test::noted(__real_realloc(block, size));
}
void __wrap_free(void* block) { freed(block); }

void* operator new(std::size_t size) { return made_or_thrown(size); }
void* operator new[](std::size_t size) { return made_or_thrown(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return made(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return made(size); }
void operator delete(void* block) noexcept { freed(block); }
void operator delete[](void* block) noexcept { freed(block); }
void operator delete(void* block, std::size_t) noexcept { freed(block); }
void operator delete[](void* block, std::size_t) noexcept { freed(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { freed(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { freed(block); }
