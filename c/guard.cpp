#include "c/guard.h"

#include <zmfbconn/host/workarea.h>

#include <cstddef>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace zmfb::c {
namespace {

struct State {
    Value error_block;
    Value last_error;
    std::string text;
    const char* message = "";
    unsigned long failures = 0;
};

// Never destroyed: an error block of a script language must not be told of its end after the interpreter's.
State& state() noexcept {
    alignas(State) static std::byte room[sizeof(State)];
    static State& the_state = *new (room) State;
    return the_state;
}

Value on_error(Args args) {
    const Value error = args[0];
    const std::string text = host::error_description(error);
    const Value handler = error_block_of_c();
    if (handler.is_nil() && host::is_told_by_neterr(error)) return false;
    zmfb_status status = ZMFB_RAISED;
    if (handler.is(Kind::block)) {
        try {
            return handler.eval(args);
        } catch (const CallEnded& ended) {
            status = ended.status;
        }
    }
    if (status == ZMFB_RAISED) {
        last_error() = error;
        fail(ZMFB_RAISED, text);
    }
    throw CallEnded{status};
}

}  // namespace

const Value& error_block_of_the_interface() {
    static const Value block = Value::block(on_error);
    return block;
}

Value& error_block_of_c() noexcept { return state().error_block; }
Value& last_error() noexcept { return state().last_error; }
const char* message() noexcept { return state().message; }
unsigned long failures() noexcept { return state().failures; }

zmfb_status fail(zmfb_status status, std::string_view text) noexcept {
    State& noted = state();
    ++noted.failures;
    try {
        noted.text.assign(text);
        noted.message = noted.text.c_str();
    } catch (...) {
        noted.message = "out of memory";
    }
    return status;
}

zmfb_status fail_null() noexcept { return fail(ZMFB_WRONG_ARGUMENT, "NULL is not allowed here"); }

zmfb_status fail_kind(Kind wanted, const Value& value) noexcept {
    try {
        return fail(ZMFB_WRONG_KIND, "wanted " + std::string(host::kind_name(wanted)) + ", got " +
                                         std::string(host::kind_name(value.kind())));
    } catch (...) {
        return fail_with_current_exception();
    }
}

zmfb_status fail_with_current_exception() noexcept {
    try {
        throw;
    } catch (const CallEnded& ended) {
        return ended.status;
    } catch (const std::bad_alloc&) {
        return fail(ZMFB_NO_MEMORY, "out of memory");
    } catch (const std::length_error&) {
        return fail(ZMFB_OUT_OF_RANGE, "too long");
    } catch (const std::exception& problem) {
        return fail(ZMFB_FAILED, problem.what());
    } catch (...) {
        return fail(ZMFB_FAILED, "an exception of an unknown type");
    }
}

std::vector<Value> copies(const zmfb_value* const* arguments, std::size_t count) {
    std::vector<Value> values(count);
    for (std::size_t k = 0; k < count; ++k) {
        if (arguments[k] != nullptr) values[k] = arguments[k]->value;
    }
    return values;
}

}  // namespace zmfb::c
