/// What every function of the C interface goes through: nothing but a status leaves it.
#pragma once

#include <zmfbconn.h>
#include <zmfbconn/host/error.h>
#include <zmfbconn/host/value.h>

#include <cstddef>
#include <string_view>
#include <vector>

/// The place for one value that C programs hold.
struct zmfb_value {
    zmfb::host::Value value;
};

namespace zmfb::c {

using host::Args;
using host::Kind;
using host::Value;

/// Notes `text` as what zmfb_message() tells, and returns `status`.
zmfb_status fail(zmfb_status status, std::string_view text) noexcept;
/// The texts that many functions fail with.
zmfb_status fail_null() noexcept;
zmfb_status fail_kind(Kind wanted, const Value& value) noexcept;

/// Thrown through the library where a body, or a raised error, ends the call; its message is noted already.
struct CallEnded {
    zmfb_status status;
};

/// Notes what is being caught, and returns its status.
zmfb_status fail_with_current_exception() noexcept;

/// The runtime's error block while a function of the interface runs: raised errors go to the error block of C
/// programs, or end the call.
const Value& error_block_of_the_interface();

/// Runs `work`, which returns a status; what it throws becomes one.
template <class Work>
zmfb_status guard(Work work) noexcept {
    try {
        const host::ScopedErrorBlock scope(error_block_of_the_interface());
        return work();
    } catch (...) {
        return fail_with_current_exception();
    }
}

/// Fills a place; what was in it goes, with all that hangs on it.
template <class Make>
zmfb_status fill(zmfb_value* place, Make make) noexcept {
    if (place == nullptr) return fail_null();
    return guard([&] {
        place->value = make();
        return ZMFB_OK;
    });
}

/// The error block of C programs, NIL for none, and the error that ended a call last.
Value& error_block_of_c() noexcept;
Value& last_error() noexcept;

/// What zmfb_message() tells.
const char* message() noexcept;
/// How many failures were noted.
unsigned long failures() noexcept;

/// Copies of the values that a C program passes; NULL is NIL.
std::vector<Value> copies(const zmfb_value* const* arguments, std::size_t count);

}  // namespace zmfb::c
