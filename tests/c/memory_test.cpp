// The interface without memory: whichever allocation fails, the answer is a status and nothing is lost. And
// what a body throws stays inside. Compiled as C++, so the header is tested as C++ too.
#include <cstdlib>
#include <new>
#include <stdexcept>

#include "check.h"

namespace {

long countdown = -1;  // how many allocations still succeed; -1: all

bool refused() {
    if (countdown < 0) return false;
    if (countdown == 0) return true;
    --countdown;
    return false;
}

// Everything that allocates, in an order that a program might have; the first status that is no success.
zmfb_status scenario(zmfb_value* place, zmfb_value* other, zmfb_value* connection) {
    const auto body = [](void*, const zmfb_value* const*, std::size_t, zmfb_value* result) {
        return zmfb_set_text(result, "the body's own text, long enough", 32);
    };
    const zmfb_value* const arguments[] = {place, other};
    zmfb_status status = zmfb_set_text(place, "a text too long to lie in the value itself", 42);
    if (status == ZMFB_OK) status = zmfb_set_array(other, 3);
    if (status == ZMFB_OK) status = zmfb_append(other, place);
    if (status == ZMFB_OK) status = zmfb_set_block(place, body, nullptr, nullptr);
    if (status == ZMFB_OK) status = zmfb_eval(place, arguments, 2, other);
    if (status == ZMFB_OK) status = zmfb_connect(connection, nullptr, nullptr, nullptr, nullptr);
    if (status == ZMFB_OK) status = zmfb_call(connection, "getloglevel", arguments, 2, other);
    if (status == ZMFB_OK && zmfb_call(connection, "nosuch", nullptr, 0, nullptr) == ZMFB_OK) std::abort();
    if (status == ZMFB_OK) status = zmfb_get_member(connection, "sdbname", other);
    return status;
}

void what_a_body_throws_becomes_a_status() {
    const auto body = [](void* context, const zmfb_value* const*, std::size_t, zmfb_value*) -> zmfb_status {
        if (context == nullptr) throw std::runtime_error("thrown by the body");
        throw 42;
    };
    zmfb_value* const block = zmfb_new();
    CHECK(zmfb_set_block(block, body, nullptr, nullptr) == ZMFB_OK);
    CHECK(zmfb_eval(block, nullptr, 0, nullptr) == ZMFB_FAILED && said("thrown by the body"));
    CHECK(zmfb_set_block(block, body, block, nullptr) == ZMFB_OK);
    CHECK(zmfb_eval(block, nullptr, 0, nullptr) == ZMFB_FAILED && said("an exception of an unknown type"));
    zmfb_free(block);
}

// The first failure of all: nothing holds room for its message yet.
void failing_needs_no_memory() {
    zmfb_value* const nothing = zmfb_new();
    countdown = 0;
    CHECK(zmfb_append(nullptr, nothing) == ZMFB_WRONG_ARGUMENT && said("out of memory"));
    CHECK(zmfb_append(nothing, nothing) == ZMFB_NO_MEMORY && said("out of memory"));
    countdown = -1;
    CHECK(zmfb_append(nothing, nothing) == ZMFB_WRONG_KIND && said("wanted array, got nil"));
    zmfb_free(nothing);
}

}  // namespace

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) { return refused() ? nullptr : __real_malloc(size); }

void* operator new(std::size_t size) {
    void* const memory = refused() ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return refused() ? nullptr : std::malloc(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

int main() {
    failing_needs_no_memory();
    what_a_body_throws_becomes_a_status();
    int failures = 0;
    for (long allowed = 0;; ++allowed) {
        zmfb_value* const place = zmfb_new();
        zmfb_value* const other = zmfb_new();
        zmfb_value* const connection = zmfb_new();
        countdown = allowed;
        const zmfb_status status = scenario(place, other, connection);
        const bool reached_the_end = countdown > 0;
        countdown = -1;
        CHECK(status == ZMFB_OK || status == ZMFB_NO_MEMORY);
        CHECK(status == ZMFB_OK || said("out of memory"));
        if (status != ZMFB_OK) ++failures;
        zmfb_free(connection);
        zmfb_free(other);
        zmfb_free(place);
        if (reached_the_end) break;
    }
    countdown = 0;
    CHECK(zmfb_new() == nullptr && zmfb_new_transaction() == nullptr && zmfb_new_statement() == nullptr);
    countdown = -1;
    CHECK(failures > 10);
    return failed_checks == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
